// SPDX-License-Identifier: MIT
// Paths as runs of units.
#include <Bedrock/strings/paths/Paths.h>

#include <Bedrock/collections/Makers.h>
#include <Bedrock/strings/encodings/Encodings.h>

#include <algorithm>
#include <iterator>

BOOL _ZPIsAbsolutePath(const unichar *units, unsigned length) {
    if (length && units[0] == '~') return YES;
    return _ZPHasNetworkPrefix(units, length) ||
                   (length >= 3 && _ZPHasDrivePrefix(units, length) && _ZPIsPathSeparator(units[2]))
               ? YES
               : NO;
}

// ---- separators ---------------------------------------------------------------------------------

BOOL _ZPStripTrailingPathSlashes(const unichar *units, unsigned *length) {
    unsigned n = *length, least = _ZPHasDrivePrefix(units, n) ? 3 : 1;
    while (n > least && _ZPIsPathSeparator(units[n - 1])) --n;
    return n == *length ? NO : (*length = n, YES);
}

// Most paths are as they should be: a length at the start of which every run of separators is one `separator`.
static unsigned lengthInOrder(const unichar *units, unsigned length, unichar separator) {
    using Eight = unichar __attribute__((vector_size(16)));
    const Eight own = Eight{} + separator, other = own ^ (Eight{} + unichar('/' ^ '\\'));
    unsigned at = 0;
    for (; length - at > 8; at += 8) {
        Eight here, next;
        std::memcpy(&here, units + at, sizeof here);
        std::memcpy(&next, units + at + 1, sizeof next);
        auto wrong = (here == other) | ((here == own) & ((next == own) | (next == other)));
        std::uint64_t halves[2];
        std::memcpy(halves, &wrong, sizeof halves);
        if (halves[0] | halves[1]) break;
    }
    return at;
}

BOOL _ZPTransmutePathSlashes(unichar *units, unsigned *length, unichar separator) {
    unsigned to = _ZPHasNetworkPrefix(units, *length) ? 2 : 0;
    to += lengthInOrder(units + to, *length - to, separator);
    for (unsigned from = to; from < *length; ++from) {
        if (!_ZPIsPathSeparator(units[from])) units[to++] = units[from];
        else if (from + 1 == *length || !_ZPIsPathSeparator(units[from + 1])) units[to++] = separator;
    }
    return to == *length ? NO : (*length = to, YES);
}

// ---- components and extensions ------------------------------------------------------------------

// The last separator before the last unit, or -1.
static int lastSeparator(const unichar *units, unsigned length) {
    for (int i = int(length) - 2; i >= 0; --i)
        if (_ZPIsPathSeparator(units[i])) return i;
    return -1;
}

unsigned _ZPStartOfLastPathComponent(const unichar *units, unsigned length) {
    if (length < 2) return 0;
    int p = lastSeparator(units, length);
    if (p >= 0) return unsigned(p) + 1;
    return length >= 3 && _ZPHasDrivePrefix(units, length) ? 2 : 0;
}

unsigned _ZPLengthAfterDeletingLastPathComponent(const unichar *units, unsigned length) {
    if (length < 2) return 0;
    int p = lastSeparator(units, length);
    bool drive = _ZPHasDrivePrefix(units, length);
    if (p < 0) return length >= 3 && drive ? 2 : 0;
    return p == 0 ? 1 : drive && p == 2 ? 3 : unsigned(p);
}

BOOL _ZPAppendPathComponent(unichar *buffer, unsigned *length, unsigned capacity, const unichar *component,
                            unsigned componentLength) {
    if (componentLength == 0) return YES;
    unsigned n = *length;
    if (std::uint64_t(n) + 1 + componentLength > capacity) return NO;
    if (n && (_ZPHasDrivePrefix(component, componentLength) || _ZPHasNetworkPrefix(component, componentLength)))
        return NO;
    bool joins = n == 0 || (n == 1 && _ZPIsPathSeparator(buffer[0])) ||
                 (n == 2 && (_ZPHasDrivePrefix(buffer, n) || _ZPHasNetworkPrefix(buffer, n)));
    if (!joins) buffer[n++] = '\\';
    std::copy_n(component, componentLength, buffer + n);
    *length = n + componentLength;
    return YES;
}

unsigned _ZPStartOfPathExtension(const unichar *units, unsigned length) {
    if (length < 2) return 0;
    for (unsigned i = length - 1; i >= 1; --i) {
        if (_ZPIsPathSeparator(units[i - 1])) return 0;
        if (units[i] == '.') return i == 2 && _ZPHasDrivePrefix(units, length) ? 0 : i;
    }
    return 0;
}

unsigned _ZPLengthAfterDeletingPathExtension(const unichar *units, unsigned length) {
    unsigned start = _ZPStartOfPathExtension(units, length);
    return start ? start : length;
}

BOOL _ZPAppendPathExtension(unichar *buffer, unsigned *length, unsigned capacity, const unichar *extension,
                            unsigned extensionLength) {
    if (std::uint64_t(*length) + 1 + extensionLength > capacity) return NO;
    if (extensionLength && (_ZPIsPathSeparator(extension[0]) || _ZPHasDrivePrefix(extension, extensionLength)))
        return NO;
    _ZPStripTrailingPathSlashes(buffer, length);
    unsigned n = *length;
    if (n == 0 || (n == 1 && _ZPIsPathSeparator(buffer[0]))) return NO;
    if (buffer[0] == '~' && std::none_of(buffer + 1, buffer + n, _ZPIsPathSeparator)) return NO;
    bool drive = _ZPHasDrivePrefix(buffer, n);
    if (n == 2 && (drive || _ZPHasNetworkPrefix(buffer, n))) return NO;
    if (n == 3 && drive && _ZPIsPathSeparator(buffer[2])) return NO;
    buffer[n++] = '.';
    std::copy_n(extension, extensionLength, buffer + n);
    *length = n + extensionLength;
    return YES;
}

namespace {

// The components as they are found: owned here until the array has them.
struct Components {
    ZPMutableArray *array = nullptr;
    unsigned count = 0;
    id found[32];

    ~Components() {
        while (count) found[--count]->release();
    }
    void add(ZPString *owned) {
        found[count++] = owned;
        if (count == std::size(found)) flush();
    }
    void add(const unsigned char *bytes, unsigned length) {
        add(_ZPNewInlineCString(reinterpret_cast<const char *>(bytes), length, nullptr));
    }
    void add(const unichar *units, unsigned length) {
        unsigned char bytes[256];
        bool narrow = length <= sizeof bytes && _ZPNarrowASCII(units, length, bytes) == length;
        narrow ? add(bytes, length) : add(_ZPNewStringWithUnits(units, length, nullptr));
    }
    void flush() {
        if (!array) (array = _ZPNewMutableArray())->autorelease();
        _ZPAddAdopting(array, found, count);
        count = 0;
    }
};

template <class U> ZPMutableArray *componentsOf(const U *units, unsigned length) {
    Components components;
    unsigned at = 0;
    if (_ZPHasDrivePrefix(units, length)) {
        at = 2;
        units[0] == 'C' ? components.add("C:"_zp) : components.add(units, 2);
    }
    if (at < length && _ZPIsPathSeparator(units[at])) components.add(units[at++] == '/' ? "/"_zp : "\\"_zp);
    for (;;) {
        while (at < length && _ZPIsPathSeparator(units[at])) ++at;
        if (at == length) break;
        unsigned from = at;
        while (at < length && !_ZPIsPathSeparator(units[at])) ++at;
        components.add(units + from, at - from);
    }
    components.flush();
    return components.array;
}

}  // namespace

ZPMutableArray *_ZPPathComponents(const unichar *units, unsigned length) { return componentsOf(units, length); }
ZPMutableArray *_ZPPathComponents(const unsigned char *bytes, unsigned length) { return componentsOf(bytes, length); }

// ---- the tilde ----------------------------------------------------------------------------------

BOOL _ZPAbbreviatePathWithTilde(unichar *units, unsigned *length) {
    unsigned n = *length;
    if (n == 0 || (n == 1 && _ZPIsPathSeparator(units[0]))) return NO;
    ZPString *home = ZPHomeDirectory();
    if (!home) return NO;
    _ZPPathBuffer h(home, 0);
    if (h.length > n || !std::equal(h.units, h.units + h.length, units)) return NO;
    if (n > h.length && !_ZPIsPathSeparator(units[h.length])) return NO;
    units[0] = '~';
    std::copy(units + h.length, units + n, units + 1);
    *length = n - h.length + 1;
    return YES;
}

BOOL _ZPExpandTildeInPath(unichar *units, unsigned *length, unsigned capacity) {
    unsigned n = *length;
    if (n == 0 || units[0] != '~') return NO;
    auto user = unsigned(std::find_if(units, units + n, _ZPIsPathSeparator) - units);
    ZPString *home = user == 1 ? ZPHomeDirectory()
                               : ZPHomeDirectoryForUser(ZPString::stringWithCharacters_length(units + 1, user - 1));
    if (!home) return NO;
    _ZPPathBuffer h(home, 0);
    if (std::uint64_t(n - user) + h.length > capacity) return NO;
    std::memmove(units + h.length, units + user, (n - user) * sizeof(unichar));
    std::copy_n(h.units, h.length, units);
    *length = n - user + h.length;
    return YES;
}

// ---- standardizing ------------------------------------------------------------------------------

// Where the names begin that ".." may take away: behind the separator that follows the share, the drive or the
// tilde part; the length when there is none.
static unsigned startBehindRoot(const unichar *units, unsigned length, bool network) {
    if (!network && _ZPHasDrivePrefix(units, length)) return std::min(length, 3u);
    unsigned at = network ? 2 : 0;
    for (unsigned names = network ? 2 : 1; names; --names) {
        at = unsigned(std::find_if(units + at, units + length, _ZPIsPathSeparator) - units);
        if (at == length) return length;
        ++at;
    }
    return at;
}

BOOL __pathHasDotDot(const unichar *units, unsigned length, BOOL isNetworkPath) {
    if (length < 2 || !_ZPIsAbsolutePath(units, length)) return NO;
    for (unsigned i = isNetworkPath ? startBehindRoot(units, length, true) : 0; i + 1 < length; ++i) {
        if (units[i] != '.' || units[i + 1] != '.') continue;
        bool begins = i == 0 || _ZPIsPathSeparator(units[i - 1]), ends = i + 2 == length;
        if (begins && (ends ? i > 0 : _ZPIsPathSeparator(units[i + 2]) != NO)) return YES;
    }
    return NO;
}

// Takes every ".." away with the name before it; those at the root go alone. Behind a tilde, which stands for a
// place not known, they stay.
static unsigned resolveDotDots(unichar *units, unsigned length, bool network) {
    bool tilde = units[0] == '~';
    unsigned base = startBehindRoot(units, length, network), out = base;
    for (unsigned at = base; at < length;) {
        auto end = unsigned(std::find(units + at, units + length, u'\\') - units);
        unsigned next = end < length ? end + 1 : end;
        if (end - at == 2 && units[at] == '.' && units[at + 1] == '.') {
            if (out > base) {
                --out;
                while (out > base && units[out - 1] != '\\') --out;
            } else if (tilde) {
                out = base = unsigned(std::copy(units + at, units + next, units + out) - units);
            }
        } else {
            out = unsigned(std::copy(units + at, units + next, units + out) - units);
        }
        at = next;
    }
    return out;
}

BOOL _ZPStandardizePath(unichar *units, unsigned *length) {
    _ZPTransmutePathSlashes(units, length, '\\');
    _ZPStripTrailingPathSlashes(units, length);
    unsigned n = *length;
    bool network = _ZPHasNetworkPrefix(units, n);

    while (n >= (network ? 5u : 3u) && units[n - 1] == '.' && units[n - 2] == '\\') n -= 2;

    if (!network) {
        unsigned from = 0;
        while (n - from >= 2 && units[from] == '.' && units[from + 1] == '\\') from += 2;
        // A name that looks like a drive or a home directory needs the "." before it.
        if (from && from < n && (units[from] == '~' || _ZPHasDrivePrefix(units + from, n - from))) from -= 2;
        std::copy(units + from, units + n, units);
        n -= from;
    }

    unsigned out = 0, first = network ? 3 : 0;
    for (unsigned at = 0; at < n; ++at) {
        if (units[at] == '\\' && out >= first && at + 2 < n && units[at + 1] == '.' && units[at + 2] == '\\') ++at;
        else units[out++] = units[at];
    }
    n = out;

    if (__pathHasDotDot(units, n, network)) n = resolveDotDots(units, n, network);
    *length = n;
    _ZPTransmutePathSlashes(units, length, '\\');
    _ZPStripTrailingPathSlashes(units, length);
    return YES;
}

BOOL _ZPResolveSymlinksInPath(unichar *, unsigned *) { return NO; }
