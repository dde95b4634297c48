// SPDX-License-Identifier: MIT
// The room of the host operating system: here the process's facts, its time zone, standard error, the event log and
// resources; in Files.h file calls and mappings. Both headers are for every floor, and speak of the host in the
// library's own types, so that no floor above includes a header of the system. Read this first.
#pragma once

#include <Bedrock/platform/ZPTypes.h>

#include <cstdlib>

/// One of the kinds of time that a zone has in turn.
struct ZPHostZoneKind {
    int offset;  ///< seconds to add to GMT
    BOOL isDaylight;
    char abbreviation[16];
};

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
/// What the host's time zone is at a moment, seconds since 1970 in GMT, from the table of its changes; the answer
/// lives as long as the process, and is the same for the same kind of time. Null outside the table. The zone is that
/// of the environment when this, or the following, is first called.
const ZPHostZoneKind *ZPHostZoneAt(long long moment);
/// The same by the C library's rules; NO for a moment that it cannot place, or places more than a day from GMT, and for
/// every moment when the zone's file is damaged.
BOOL ZPHostZoneByRule(long long moment, ZPHostZoneKind *kind);
/// NO when the file of the host's time zone is damaged: the C library then must not be asked about local time.
BOOL ZPHostZoneIsUsable();
/// The name of the host's time zone ("Europe/Berlin") in `name`; NO when it has none.
BOOL ZPHostZoneName(char *name, std::size_t size);
/// Return addresses of the calling stack, innermost first.
int ZPHostCallStack(void **addresses, int capacity);
/// The number of the code page of the user's locale (LC_ALL, LC_CTYPE, LANG), of those that the library converts: 932,
/// 1250 to 1254, 28591 and 28592 (ISO 8859-1 and -2), 51932 (Japanese EUC). 65001 is UTF-8, and the answer for every
/// other.
unsigned ZPHostCodePage();
/// The installation root as a host path, without a separator at the end: CORVID_ROOT when that is set, else the
/// data directory that lies beside the library's. Never null; lives as long as the process.
const char *ZPRootDirectory();

// Facts about users, in the host's own bytes. NO when the host does not know, and when a text does not fit `size`
// bytes with its NUL.

enum ZPHostUserFact { ZPHostUserLoginName, ZPHostUserFullName, ZPHostUserHome };
/// Of the user with that login name, or of the one that the process acts for (null). That user's home is the
/// environment's HOME where it is an absolute path.
BOOL ZPHostUser(const char *name, ZPHostUserFact fact, char *buffer, std::size_t size);
/// The directory for temporary files: the environment's TMPDIR where it is an absolute path, else "/tmp".
BOOL ZPHostTemporaryDirectory(char *buffer, std::size_t size);

/// Keeps the shared library that holds an address in the process for good, whatever `dlclose` is told; does nothing for
/// the program itself. Also while that library is being loaded.
void ZPHostKeepLibrary(const void *address);
/// Ends the process as a crash does.
[[noreturn]] void ZPHostCrash();
/// Fills the bytes with what nobody can foresee.
void ZPHostRandomBytes(void *bytes, unsigned length);
}

/// A file of the library's resource directory, which is "/CorvidLibrary/Frameworks/Bedrock.framework/Resources" under
/// the installation root, in memory as long as this lives.
struct ZPHostResource {
    unsigned char *bytes = nullptr;  ///< never null after a successful read; a NUL that is not counted follows them
    std::size_t length = 0;

    ZPHostResource() = default;
    explicit ZPHostResource(const char *name) { read(name); }
    ZPHostResource(const ZPHostResource &) = delete;
    ~ZPHostResource() { std::free(bytes); }
    /// Reads the file of that name ("CharacterSets/EUCToUnicode-L.data"), once. NO when there is no such regular file,
    /// when it has more than 16 MiB, or when it cannot be read.
    BOOL read(const char *name);
    explicit operator bool() const { return bytes; }
    /// The 16-bit number, low byte first, at a place before the last byte.
    unsigned number(std::size_t at) const { return bytes[at] | unsigned(bytes[at + 1]) << 8; }
};
