// SPDX-License-Identifier: MIT
// Errors: exception objects, raised as C++ exceptions of type `ZPException *`.
//
//     try {
//         list->objectAtIndex(99);
//     } catch (ZPException *e) {          // autoreleased: retain it to keep it
//         ... e->name(), e->reason()
//     }
#pragma once

#include <Bedrock/core/ZPObject.h>

ZP_FORWARD(ZPDictionary);
ZP_FORWARD(ZPString);

/// An error: a name to tell its kind, a reason for people, and optional user information. Two
/// exceptions of one class and name are equal. Immutable; may be shared between threads.
struct ZPException : ZPObject {
    ZP_CLASS(ZPException)
    ZPString *_name;
    ZPString *_reason;
    ZPDictionary *_userInfo;
    void *_reserved;

    /// An autoreleased exception; copies name and reason, retains the information; each may be null.
    static ZPException *exceptionWithName_reason_userInfo(ZPString *name, ZPString *reason, ZPDictionary *userInfo)
        ZP_CLASS_ASKS(name, reason, userInfo);
    /// Raises an exception whose reason is the formatted text: printf conventions, `%@` for objects. Does not
    /// return.
    template <class... A> [[noreturn]] static void raise_format(ZPString *name, ZPString *format, A... arguments) {
        objc_sendVariadic<void, ZPString *, ZPString *>::send(class_(), "raise:format:"_sel, name, format,
                                                              arguments...);
        __builtin_unreachable();
    }
    /// The same with the arguments of a variadic function.
    [[noreturn]] static void raise_format_arguments(ZPString *name, ZPString *format, std::va_list arguments) {
        objc_msgSend(class_(), "raise:format:arguments:"_sel, name, format, arguments);
        __builtin_unreachable();
    }
    /// Copies name and reason and retains the user information. The only initialiser: `init` answers null.
    ZPException *initWithName_reason_userInfo(ZPString *name, ZPString *reason, ZPDictionary *userInfo)
        ZP_ASKS(name, reason, userInfo);
    /// What kind of error it is: one of the names below, or the raiser's own. Borrowed, as the two others.
    ZPString *name() ZP_ASKS();
    /// What went wrong, for people.
    ZPString *reason() ZP_ASKS();
    /// What the raiser gave along; null when that is nothing.
    ZPDictionary *userInfo() ZP_ASKS();
    /// Throws the receiver, which is not retained: it should be autoreleased. Does not return.
    [[noreturn]] void raise() {
        objc_msgSend(this, "raise"_sel);
        __builtin_unreachable();
    }
};

extern "C" {
/// An error of no other kind.
ZP_EXPORT extern ZPString *const ZPGenericException;
/// An argument that the operation does not take, or a message that the receiver does not.
ZP_EXPORT extern ZPString *const ZPInvalidArgumentException;
/// Something that should be impossible, as a failed assertion.
ZP_EXPORT extern ZPString *const ZPInternalInconsistencyException;
/// An index or a range past the end.
ZP_EXPORT extern ZPString *const ZPRangeException;
/// No memory.
ZP_EXPORT extern ZPString *const ZPMallocException;
/// A raise by code, which is no exception object: see `_ZPExceptionObjectFromHandler`.
ZP_EXPORT extern ZPString *const ZPOldStyleException;
/// Text that does not have the form it should.
ZP_EXPORT extern ZPString *const ZPParseErrorException;
/// Text that the encoding asked for does not have.
ZP_EXPORT extern ZPString *const ZPCharacterConversionException;
///@{
/// For operations that the library does not have yet. The value of the first is "ZPArchiverArchiveInconsistency",
/// of ZPPosixFileOperationException that of ZPFileHandleOperationException, of the others the constant's name.
ZP_EXPORT extern ZPString *const ZPInconsistentArchiveException;
ZP_EXPORT extern ZPString *const ZPFileHandleOperationException;
ZP_EXPORT extern ZPString *const ZPPosixFileOperationException;
ZP_EXPORT extern ZPString *const ZPDecimalNumberDivideByZeroException;
ZP_EXPORT extern ZPString *const ZPDecimalNumberExactnessException;
ZP_EXPORT extern ZPString *const ZPDecimalNumberOverflowException;
ZP_EXPORT extern ZPString *const ZPDecimalNumberUnderflowException;
ZP_EXPORT extern ZPString *const ZPDestinationInvalidException;
ZP_EXPORT extern ZPString *const ZPFailedAuthenticationException;
ZP_EXPORT extern ZPString *const ZPInvalidReceivePortException;
ZP_EXPORT extern ZPString *const ZPInvalidSendPortException;
ZP_EXPORT extern ZPString *const ZPObjectInaccessibleException;
ZP_EXPORT extern ZPString *const ZPObjectNotAvailableException;
ZP_EXPORT extern ZPString *const ZPPortReceiveException;
ZP_EXPORT extern ZPString *const ZPPortSendException;
ZP_EXPORT extern ZPString *const ZPPortTimeoutException;
///@}
}

/// A guarded region for code that catches through a record instead of naming `ZPException *`:
///
///     ZPHandlerRecord handler;
///     _ZPAddHandler(&handler);
///     try {
///         ...
///         _ZPRemoveHandler(&handler);
///     } catch (...) {
///         ZPException *e = _ZPExceptionObjectFromHandler(&handler);
///     }
struct ZPHandlerRecord {
    ZPHandlerRecord *enclosing;  ///< the calling thread's next record outward
    int code;  ///< 100000 for a raise of an exception object
    std::uintptr_t data1;  ///< the exception object, or what the raiser gave along
    std::uintptr_t data2;  ///< more of it
};

/// What a raise through the runtime with a code other than 100000 throws.
struct QLError {
    int code;  ///< says what was raised
    std::uintptr_t data1;  ///< what the raiser gave along
    std::uintptr_t data2;  ///< and more of it
};

/// Receives an exception that nothing catches.
using ZPUncaughtExceptionHandler = void(ZPException *exception);

extern "C" {
/// Puts a record, which must last until it is removed, on the calling thread's chain.
ZP_EXPORT void _ZPAddHandler(ZPHandlerRecord *handler);
/// Takes it off, with any later one that was left on the chain; nothing when it is not there.
ZP_EXPORT void _ZPRemoveHandler(ZPHandlerRecord *handler);
/// Inside the `catch (...)` of a guarded region: fills the record from the exception being handled, takes it off
/// the chain and answers the exception object, for a raise by code an autoreleased one named ZPOldStyleException. A
/// C++ exception that is not the library's is thrown on.
ZP_EXPORT ZPException *_ZPExceptionObjectFromHandler(ZPHandlerRecord *handler);
/// Raises a code and two words: a `QLError` is thrown, or, for the code 100000, the exception object that `data1`
/// is. Does not return.
[[noreturn]] ZP_EXPORT void _QLRaiseError(int code, std::uintptr_t data1, std::uintptr_t data2);

/// What an exception that nothing catches goes to, on the raising thread with its stack in place; when it returns,
/// the process ends. The library's own logs the exception with the stack. Any thread.
ZP_EXPORT ZPUncaughtExceptionHandler *ZPGetUncaughtExceptionHandler();
/// Installs that handler for the process; with null, the C++ runtime ends the process without a word of the
/// library's.
ZP_EXPORT void ZPSetUncaughtExceptionHandler(ZPUncaughtExceptionHandler *handler);
}
