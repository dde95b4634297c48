// SPDX-License-Identifier: MIT
// The diagnostic log: one line to standard error, and to the host's event log while no debugger traces
// the process. A mutex of its own keeps the lines of different threads apart; text is formatted before it
// is taken.
#include <Bedrock/core/Core+Internal.h>
#include <Bedrock/platform/kernel/Fork.h>
#include <Bedrock/core/LogTimeStamp.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

/// One line being put together; one of ordinary length needs no memory.
class Line {
    char _inPlace[2048];
    char *_bytes = _inPlace;
    std::size_t _length = 0, _capacity = sizeof _inPlace;

  public:
    explicit Line(std::size_t capacity) {
        if (capacity <= _capacity) return;
        if (auto *larger = static_cast<char *>(std::malloc(capacity))) {
            _bytes = larger;
            _capacity = capacity;
        }
    }
    Line(const Line &) = delete;
    ~Line() {
        if (_bytes != _inPlace) std::free(_bytes);
    }
    // Cuts what no memory was found for.
    void add(const char *bytes, std::size_t length) {
        length = std::min(length, _capacity - 1 - _length);
        std::memcpy(_bytes + _length, bytes, length);
        _length += length;
    }
    void endLine() {
        if (!_length || _bytes[_length - 1] != '\n') _bytes[_length++] = '\n';
    }
    void replaceFrom(std::size_t at, const char *text) {
        _length = at;
        add(text, std::strlen(text));
    }
    const char *bytes() const { return _bytes; }
    std::size_t length() const { return _length; }
};

constinit mutex writing;  // keeps the lines of several threads apart
ZP_MUTEX_AT_FORK(log, []() -> mutex & { return writing; });

void writeLine(const char *bytes, unsigned length, BOOL withBanner) {
    if (!bytes || length >= 0x40000000) return;
    Line line(length + std::size_t(512));
    if (withBanner) {
        char stamp[32], process[320];
        _ZPLogTimeStamp(stamp);
        int n = std::snprintf(process, sizeof process, "%s %s[%d] ", stamp, ZPHostProcessName(), ZPHostProcessNumber());
        line.add(process, std::min(std::size_t(n), sizeof process - 1));
    }
    line.add(bytes, length);
    line.endLine();

    ZPHolding hold(writing);
    constexpr std::size_t piece = 30000;
    for (std::size_t at = 0; at < line.length(); at += piece)
        if (!ZPHostWriteStandardError(line.bytes() + at, std::min(piece, line.length() - at))) break;
    if (ZPHostIsTraced()) return;
    constexpr std::size_t eventLimit = 32300, cut = 32201;
    if (line.length() > eventLimit) line.replaceFrom(cut, "[ZPLog log message too long; remainder deleted]");
    ZPHostReportEvent(line.bytes(),
                      line.length() - (line.length() <= eventLimit && line.bytes()[line.length() - 1] == '\n'));
}

ZPLogFunction *logFunction = writeLine;

}  // namespace

void ZPLog(ZPString *format, ...) {
    struct List {
        std::va_list list;
        ~List() { va_end(list); }
    } arguments;
    va_start(arguments.list, format);
    ZPLogv(format, arguments.list);
}

void ZPLogv(ZPString *format, std::va_list arguments) {
    if (!format) return;
    ZPAutoreleasePoolScope pool;
    try {
        auto *string = _ZPMutableStringAbove::alloc()->initWithCapacity(1024);
        string->autorelease();
        string->setStringWithFormat_locale_arguments(format, nullptr, arguments);
        const char *bytes = _ZPAbove(string->displayableString())->cString();
        if (bytes) _ZPLogCStringFunction()(bytes, unsigned(std::strlen(bytes)), YES);
    } catch (ZPException *e) {
        if (e->name() != ZPMallocException) throw;
        // Better the format alone than nothing.
        const auto *literal = reinterpret_cast<const objc_literal8 *>(format);
        bool isLiteral = literal->isa == &ZPConstantStringRecord.cls;
        _ZPLogCStringFunction()(isLiteral ? literal->bytes : "out of memory", isLiteral ? literal->numBytes : 13, YES);
    }
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
