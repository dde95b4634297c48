// The diagnostic log: one line to standard error, and to the host's event log while no debugger traces
// the process. A mutex of its own keeps the lines of different threads apart; text is formatted before it
// is taken.
#include <Bedrock/core/ZPCore+Internal.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <string>

namespace {

void writeLine(const char *bytes, unsigned length, BOOL withBanner) {
    if (!bytes || length >= 0x40000000) return;
    std::string line;
    line.reserve(length + 96);
    if (withBanner) {
        char stamp[32], process[64];
        ZPHostTimeStamp(stamp);
        std::snprintf(process, sizeof process, "[%d] ", ZPHostProcessNumber());
        line.append(stamp).append(" ").append(ZPHostProcessName()).append(process);
    }
    line.append(bytes, length);
    if (line.empty() || line.back() != '\n') line += '\n';

    static std::mutex &mutex = *new std::mutex;
    std::lock_guard lock(mutex);
    constexpr std::size_t piece = 30000;
    for (std::size_t at = 0; at < line.size(); at += piece)
        if (!ZPHostWriteStandardError(line.data() + at, std::min(piece, line.size() - at))) break;
    if (ZPHostIsTraced()) return;
    constexpr std::size_t eventLimit = 32300, cut = 32201;
    if (line.size() > eventLimit) line.replace(cut, std::string::npos, "[ZPLog log message too long; remainder deleted]");
    else line.pop_back();
    ZPHostReportEvent(line.data(), line.size());
}

ZPLogFunction *logFunction = writeLine;

}  // namespace

void ZPLog(ZPString *format, ...) {
    struct List { std::va_list list; ~List() { va_end(list); } } arguments;
    va_start(arguments.list, format);
    ZPLogv(format, arguments.list);
}

void ZPLogv(ZPString *format, std::va_list arguments) {
    if (!format) return;
    ZPAutoreleasePoolScope pool;
    id string = objc_msgSend<id>(objc_getClass("ZPMutableString"), "alloc"_sel);
    string = objc_msgSend<id>(objc_msgSend<id>(string, "initWithCapacity:"_sel, 1024u), "autorelease"_sel);
    objc_msgSend(string, "setStringWithFormat:locale:arguments:"_sel, format, id(), arguments);
    id shown = (objc_object *)objc_msgSend<ZPString *>(string, "displayableString"_sel);
    const char *bytes = objc_msgSend<const char *>(shown, "cString"_sel);
    if (bytes) _ZPLogCStringFunction()(bytes, unsigned(std::strlen(bytes)), YES);
}

ZPLogFunction *_ZPLogCStringFunction() { return __atomic_load_n(&logFunction, __ATOMIC_ACQUIRE); }

void _ZPSetLogCStringFunction(ZPLogFunction *function) {
    __atomic_store_n(&logFunction, function ? function : writeLine, __ATOMIC_RELEASE);
}

void _ZPBasicStdErrLog(const char *format, ...) {
    char line[1024];
    int n = std::snprintf(line, sizeof line, "%s[%d] ", ZPHostProcessName(), ZPHostProcessNumber());
    if (n < 0 || n >= int(sizeof line)) n = 0;
    std::va_list list;
    va_start(list, format);
    int more = std::vsnprintf(line + n, sizeof line - n, format, list);
    va_end(list);
    if (more < 0) return;
    std::size_t length = std::size_t(n) + more;
    ZPHostWriteStandardError(line, length < sizeof line ? length : sizeof line - 1);
}

BOOL _ZPIsDebuggerPresent() { return ZPHostIsTraced(); }
