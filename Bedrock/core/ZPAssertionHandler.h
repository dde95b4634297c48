// SPDX-License-Identifier: MIT
// Assertions.
#pragma once

#include <Bedrock/core/ZPException.h>

/// Reports failed assertions: logs where, then raises ZPInternalInconsistencyException. Each thread has
/// one of its own; a subclass put into the thread's dictionary under "ZPAssertionHandler" takes its place.
struct ZPAssertionHandler : ZPObject {
    ZP_CLASS(ZPAssertionHandler)
    void *_reserved;

    /// The calling thread's handler, made on first request.
    static ZPAssertionHandler *currentHandler() ZP_CLASS_ASKS();
    /// Logs the method's full name, the file and the line, and raises ZPInternalInconsistencyException with the
    /// formatted description as reason.
    template <class... A>
    void handleFailureInMethod_object_file_lineNumber_description(SEL method, id object, ZPString *file, int line,
                                                                  ZPString *format, A... arguments)
        ZP_TELLS_WITH(arguments, method, object, file, line, format);
    /// The same for a failure outside of methods, with the function's name.
    template <class... A>
    void handleFailureInFunction_file_lineNumber_description(ZPString *function, ZPString *file, int line,
                                                             ZPString *format, A... arguments)
        ZP_TELLS_WITH(arguments, function, file, line, format);
};

// Where ZP_BLOCK_ASSERTIONS is defined before this header is included, the macros do nothing, and their arguments are
// not evaluated.
#ifdef ZP_BLOCK_ASSERTIONS
#define ZPCAssert(condition, ...) ((void)0)
#define ZPAssert(condition, selector, ...) ((void)0)
#else
/// Raises ZPInternalInconsistencyException unless the condition holds, with the text that a format, a literal string,
/// and its arguments give as reason. Nothing where ZP_BLOCK_ASSERTIONS is defined.
#define ZPCAssert(condition, ...)                                                                               \
    ((condition) ? (void)0                                                                                      \
                 : ::ZPAssertionHandler::currentHandler()->handleFailureInFunction_file_lineNumber_description( \
                       ::_ZPAssertionText(__func__), ::_ZPAssertionText(__FILE__), __LINE__, __VA_ARGS__))
/// The same inside a method of a class, which names its selector.
#define ZPAssert(condition, selector, ...)                                                                           \
    ((condition) ? (void)0                                                                                           \
                 : ::ZPAssertionHandler::currentHandler()->handleFailureInMethod_object_file_lineNumber_description( \
                       selector, this, ::_ZPAssertionText(__FILE__), __LINE__, __VA_ARGS__))
#endif

/// What the macros give as a file's and a function's name: an autoreleased string.
extern "C" ZP_EXPORT ZPString *_ZPAssertionText(const char *text);
