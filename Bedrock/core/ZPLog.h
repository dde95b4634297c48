// SPDX-License-Identifier: MIT
// The diagnostic log.
#pragma once

#include <Bedrock/platform/ZPTypes.h>

#include <cstdarg>

ZP_FORWARD(ZPString);

/// Receives a log text: its bytes, their number, and whether to put time and process before it.
using ZPLogFunction = void(const char *bytes, unsigned length, BOOL withBanner);

extern "C" {
/// Writes one line with time, process name and process number: "%@" formats an object. Safe from any
/// thread; lines of different threads do not mix.
ZP_EXPORT void ZPLog(ZPString *format, ...);
ZP_EXPORT void ZPLogv(ZPString *format, std::va_list arguments);
ZP_EXPORT ZPLogFunction *_ZPLogCStringFunction();
/// Installs a log function; null restores the library's own.
ZP_EXPORT void _ZPSetLogCStringFunction(ZPLogFunction *function);
/// Writes to standard error without making objects: a printf format without "%@"; nothing is added at the
/// end. At most 1,023 bytes are written.
ZP_EXPORT void _ZPBasicStdErrLog(const char *format, ...) __attribute__((format(printf, 1, 2)));
ZP_EXPORT BOOL _ZPIsDebuggerPresent();
}
