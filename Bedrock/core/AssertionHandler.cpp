// SPDX-License-Identifier: MIT
// Assertions that fail: what is logged and raised.
#include <Bedrock/core/ZPAssertionHandler.h>

#include <Bedrock/core/Core+Internal.h>

ZPString *_ZPAssertionText(const char *text) { return _ZPStringWithCText("%s", text); }

namespace {

struct HandlerMethods : ZPAssertionHandler {
    void handleFailureInMethod_object_file_lineNumber_description(SEL method, id object, ZPString *file, int line,
                                                                  ZPString *format, std::va_list arguments) {
        ZPLog("*** Assertion failure in %@, %@:%d"_zp, _ZPFullMethodName(object, method), file, line);
        ZPException::raise_format_arguments(ZPInternalInconsistencyException, format, arguments);
    }
    void handleFailureInFunction_file_lineNumber_description(ZPString *function, ZPString *file, int line,
                                                             ZPString *format, std::va_list arguments) {
        ZPLog("*** Assertion failure in %@(), %@:%d"_zp, function, file, line);
        ZPException::raise_format_arguments(ZPInternalInconsistencyException, format, arguments);
    }
    static ZPAssertionHandler *currentHandler(Class self) {
        auto *dictionary = _ZPThreadAbove::currentThread()->threadDictionary();
        id handler = dictionary->objectForKey("ZPAssertionHandler"_zp);
        if (!handler) {
            handler = ZPAssertionHandler::allocFrom(self)->init();
            dictionary->setObject_forKey(handler, "ZPAssertionHandler"_zp);
            handler->release();
        }
        return handler;
    }
};

}  // namespace

ZP_IMPLEMENT_WITH(ZPAssertionHandler, HandlerMethods,
                  variadic(handleFailureInMethod_object_file_lineNumber_description),
                  variadic(handleFailureInFunction_file_lineNumber_description), classMethods(currentHandler));
