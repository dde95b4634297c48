// SPDX-License-Identifier: MIT
// Exceptions and handler records. A raise throws the exception object's pointer, so C++ unwinding does
// the transfer; when no frame catches it, the C++ runtime calls the terminate handler before anything is
// unwound, and from there the exception goes to the uncaught-exception handler.
#include <Bedrock/core/Core+Internal.h>

#include <cstdio>
#include <cxxabi.h>
#include <exception>
#include <string>

constexpr int exceptionCode = 100000;

ZP_STRING_CONSTANT(ZPGenericException, "ZPGenericException");
ZP_STRING_CONSTANT(ZPInvalidArgumentException, "ZPInvalidArgumentException");
ZP_STRING_CONSTANT(ZPInternalInconsistencyException, "ZPInternalInconsistencyException");
ZP_STRING_CONSTANT(ZPRangeException, "ZPRangeException");
ZP_STRING_CONSTANT(ZPMallocException, "ZPMallocException");
ZP_STRING_CONSTANT(ZPOldStyleException, "ZPOldStyleException");
ZP_STRING_CONSTANT(ZPParseErrorException, "ZPParseErrorException");
ZP_STRING_CONSTANT(ZPCharacterConversionException, "ZPCharacterConversionException");
ZP_STRING_CONSTANT(ZPInconsistentArchiveException, "ZPArchiverArchiveInconsistency");
ZP_STRING_CONSTANT(ZPFileHandleOperationException, "ZPFileHandleOperationException");
ZP_STRING_CONSTANT(ZPPosixFileOperationException, "ZPFileHandleOperationException");
ZP_STRING_CONSTANT(ZPDecimalNumberDivideByZeroException, "ZPDecimalNumberDivideByZeroException");
ZP_STRING_CONSTANT(ZPDecimalNumberExactnessException, "ZPDecimalNumberExactnessException");
ZP_STRING_CONSTANT(ZPDecimalNumberOverflowException, "ZPDecimalNumberOverflowException");
ZP_STRING_CONSTANT(ZPDecimalNumberUnderflowException, "ZPDecimalNumberUnderflowException");
ZP_STRING_CONSTANT(ZPDestinationInvalidException, "ZPDestinationInvalidException");
ZP_STRING_CONSTANT(ZPFailedAuthenticationException, "ZPFailedAuthenticationException");
ZP_STRING_CONSTANT(ZPInvalidReceivePortException, "ZPInvalidReceivePortException");
ZP_STRING_CONSTANT(ZPInvalidSendPortException, "ZPInvalidSendPortException");
ZP_STRING_CONSTANT(ZPObjectInaccessibleException, "ZPObjectInaccessibleException");
ZP_STRING_CONSTANT(ZPObjectNotAvailableException, "ZPObjectNotAvailableException");
ZP_STRING_CONSTANT(ZPPortReceiveException, "ZPPortReceiveException");
ZP_STRING_CONSTANT(ZPPortSendException, "ZPPortSendException");
ZP_STRING_CONSTANT(ZPPortTimeoutException, "ZPPortTimeoutException");

namespace {

ZPUncaughtExceptionHandler *uncaughtHandler;
std::terminate_handler otherTerminate;

ZPHandlerRecord *&chain() { return reinterpret_cast<ZPHandlerRecord *&>(ZPCurrentThreadData()->handlers); }

void topLevelHandler(ZPException *exception) {
    void *addresses[64];
    int n = ZPHostCallStack(addresses, 64);
    std::string stack;
    char address[32];
    for (int i = 0; i < n; ++i) {
        std::snprintf(address, sizeof address, "%s0x%lx", i ? " " : "", reinterpret_cast<unsigned long>(addresses[i]));
        stack += address;
    }
    unsigned pool = ZPPushAutoreleasePool(0);
    ZPLog("*** Uncaught exception: <%@> %@\nstack: %@\nexiting!"_zp, exception->name(), exception->reason(),
          _ZPStringWithCText("%s", stack.c_str()));
    ZPPopAutoreleasePool(pool);
    ZPHostCrash();
}

void handOver(ZPException *exception) {
    auto *handler = __atomic_load_n(&uncaughtHandler, __ATOMIC_ACQUIRE);
    if (!handler) return;
    handler(exception);
    ZPHostCrash();
}

// The C++ runtime's terminate handler: takes what is the library's, passes the rest on.
void terminate() {
    if (std::current_exception()) {
        try {
            throw;
        } catch (ZPException *exception) {
            handOver(exception);
        } catch (QLError &e) {
            if (e.code >= exceptionCode) handOver(reinterpret_cast<ZPException *>(e.data1));
        } catch (...) {}
    }
    if (otherTerminate) otherTerminate();
    ZPHostCrash();
}

void installTerminate() {
    static BOOL isInstalled;
    if (!__atomic_exchange_n(&isInstalled, YES, __ATOMIC_ACQ_REL)) otherTerminate = std::set_terminate(terminate);
}

struct ExceptionMethods : ZPException {
    id init() {
        ZP_SUPER(ZPException, dealloc)();
        return nullptr;
    }
    ZPException *initWithName_reason_userInfo(ZPString *name, ZPString *reason, ZPDictionary *userInfo) {
        _name = id(name)->copyWithZone(nullptr);
        _reason = id(reason)->copyWithZone(nullptr);
        _userInfo = id(userInfo)->retain();
        return this;
    }
    void dealloc() {
        for (id field : {id(_name), id(_reason), id(_userInfo)}) field->release();
        ZP_SUPER(ZPException, dealloc)();
    }
    ZPString *name() { return _name; }
    ZPString *reason() { return _reason; }
    ZPDictionary *userInfo() { return _userInfo; }
    ZPString *description() { return _reason; }
    void raise() { throw static_cast<ZPException *>(this); }
    BOOL isEqual(id other) {
        if (!other || other.pointer()->isa != isa) return NO;
        return id(other.unchecked<ZPException>()->name())->isEqual(_name);
    }
    unsigned hash() { return id(_name)->hash(); }
    id copyWithZone(ZPZone *) { return self()->retain(); }
    id replacementObjectForPortCoder(id) { return this; }
};

/// The class that raises, which may be a subclass: what it overrides is sent.
struct ExceptionClass : ZPObject {
    ZPException *exceptionWithName_reason_userInfo(ZPString *name, ZPString *reason, ZPDictionary *userInfo)
        ZP_ASKS(name, reason, userInfo);
    void raise_format_arguments(ZPString *name, ZPString *format, std::va_list arguments)
        ZP_TELLS(name, format, arguments);
};

struct ExceptionClassMethods {
    static ExceptionClass *front(Class cls) { return reinterpret_cast<ExceptionClass *>(cls); }
    static void initialize(Class self) {
        if (self != ZPException::class_()) return;
        installTerminate();
        ZPUncaughtExceptionHandler *none = nullptr;
        __atomic_compare_exchange_n(&uncaughtHandler, &none, &topLevelHandler, false, __ATOMIC_ACQ_REL,
                                    __ATOMIC_ACQUIRE);
    }
    static ZPException *exceptionWithName_reason_userInfo(Class self, ZPString *name, ZPString *reason,
                                                          ZPDictionary *userInfo) {
        return ZPException::allocFrom(self)->initWithName_reason_userInfo(name, reason, userInfo)->autorelease();
    }
    static void raise_format(Class self, ZPString *name, ZPString *format, std::va_list arguments) {
        front(self)->raise_format_arguments(name, format, arguments);
    }
    static void raise_format_arguments(Class self, ZPString *name, ZPString *format, std::va_list arguments) {
        ZPString *reason = _ZPStringAbove::alloc()->initWithFormat_arguments(format, arguments);
        id(reason)->autorelease();
        front(self)->exceptionWithName_reason_userInfo(name, reason, nullptr)->raise();
    }
};

// The user information of a raise by code, when the process has number and dictionary objects.
ZPDictionary *oldStyleInfo(const QLError &e) {
    if (!_ZPNumberAbove::class_() || !_ZPValueAbove::class_() || !_ZPDictionaryAbove::class_()) return nullptr;
    auto pointer = [](std::uintptr_t data) {
        return _ZPValueAbove::valueWithPointer(reinterpret_cast<const void *>(data));
    };
    id objects[] = {_ZPNumberAbove::numberWithInt(e.code), pointer(e.data1), pointer(e.data2)};
    id keys[] = {id("OldCode"_zp), id("OldData1"_zp), id("OldData2"_zp)};
    return _ZPDictionaryAbove::dictionaryWithObjects_forKeys_count(objects, keys, 3);
}

}  // namespace

ZP_IMPLEMENT_WITH(ZPException, ExceptionMethods, init, initWithName_reason_userInfo, dealloc, name, reason, userInfo,
                  description, raise, isEqual, hash, copyWithZone, replacementObjectForPortCoder,
                  classMethodsOf(ExceptionClassMethods, initialize, exceptionWithName_reason_userInfo,
                                 variadic(raise_format), raise_format_arguments));

void _ZPAddHandler(ZPHandlerRecord *handler) {
    handler->enclosing = chain();
    handler->code = 0;
    handler->data1 = handler->data2 = 0;
    chain() = handler;
}

void _ZPRemoveHandler(ZPHandlerRecord *handler) {
    for (ZPHandlerRecord *h = chain(); h; h = h->enclosing)
        if (h == handler) {
            chain() = handler->enclosing;
            return;
        }
}

ZPException *_ZPExceptionObjectFromHandler(ZPHandlerRecord *handler) {
    _ZPRemoveHandler(handler);
    if (handler->code == 0) {
        try {
            throw;
        } catch (ZPException *exception) {
            handler->code = exceptionCode;
            handler->data1 = reinterpret_cast<std::uintptr_t>(exception);
        } catch (QLError &e) {
            handler->code = e.code;
            handler->data1 = e.data1;
            handler->data2 = e.data2;
        }
    }
    if (handler->code == exceptionCode) return reinterpret_cast<ZPException *>(handler->data1);
    ZPString *reason = _ZPStringWithCText("Old style exception with code %d was raised with data (%lx, %lx)",
                                          handler->code, handler->data1, handler->data2);
    return ZPException::exceptionWithName_reason_userInfo(
        ZPOldStyleException, reason, oldStyleInfo({handler->code, handler->data1, handler->data2}));
}

void _QLRaiseError(int code, std::uintptr_t data1, std::uintptr_t data2) {
    if (code == exceptionCode) throw reinterpret_cast<ZPException *>(data1);
    throw QLError{code, data1, data2};
}

ZPUncaughtExceptionHandler *ZPGetUncaughtExceptionHandler() {
    return __atomic_load_n(&uncaughtHandler, __ATOMIC_ACQUIRE);
}

void ZPSetUncaughtExceptionHandler(ZPUncaughtExceptionHandler *handler) {
    installTerminate();
    __atomic_store_n(&uncaughtHandler, handler, __ATOMIC_RELEASE);
}
