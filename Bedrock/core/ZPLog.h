// SPDX-License-Identifier: MIT
// The diagnostic log.
#pragma once

#include <Bedrock/platform/ZPTypes.h>

#include <cstdarg>

ZP_FORWARD(ZPString);

/// Receives a log text: its bytes, which it must copy to keep, their number, and whether to put time and process
/// before it. Called on the logging thread, by several at once.
using ZPLogFunction = void(const char *bytes, unsigned length, BOOL withBanner);

extern "C" {
/// Writes one line with time, process name and process number: printf conventions, `%@` for objects; null does
/// nothing. Characters that do not show are written as escapes. Safe from any thread; lines of different threads do
/// not mix.
ZP_EXPORT void ZPLog(ZPString *format, ...);
/// The same with the arguments of a variadic function.
ZP_EXPORT void ZPLogv(ZPString *format, std::va_list arguments);
/// The log function in force, never null.
ZP_EXPORT ZPLogFunction *_ZPLogCStringFunction();
/// Installs a log function; null restores the library's own.
ZP_EXPORT void _ZPSetLogCStringFunction(ZPLogFunction *function);
/// Writes process name, process number and a printf text (without `%@`) to standard error without making objects;
/// nothing is added at the end. At most 1,023 bytes are written.
ZP_EXPORT void _ZPBasicStdErrLog(const char *format, ...) __attribute__((format(printf, 1, 2)));
/// Whether a debugger is attached to the process now.
ZP_EXPORT BOOL _ZPIsDebuggerPresent();
}
