// The host operating system: process facts, standard error, the event log.
#pragma once

#include <Bedrock/platform/ZPTypes.h>

extern "C" {
/// The name of the running program, without its directory; never null.
const char *ZPHostProcessName();
int ZPHostProcessNumber();
/// YES while a debugger traces the process.
BOOL ZPHostIsTraced();
/// The machine's physical memory in bytes, at most 0xFFFFFFFF.
unsigned ZPHostRealMemory();
/// Writes bytes to standard error whatever becomes of errors; answers NO when a write failed.
BOOL ZPHostWriteStandardError(const char *bytes, std::size_t length);
/// Reports one event of kind error to the host's log under the process's name.
void ZPHostReportEvent(const char *text, std::size_t length);
/// The local time as "Nov 22 20:15:00" in `text`, which holds 32 bytes.
void ZPHostTimeStamp(char *text);
/// Return addresses of the calling stack, innermost first.
int ZPHostCallStack(void **addresses, int capacity);
/// Ends the process as a crash does.
[[noreturn]] void ZPHostCrash();
}
