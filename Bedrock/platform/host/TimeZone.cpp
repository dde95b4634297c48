// SPDX-License-Identifier: MIT
// The host's time zone. Where it is a file of the public time zone database, its changes of clock are read once and
// found by search; moments outside them, and zones that are rules and not files, are the C library's. Both say the
// same. The C library trusts such files: it is not asked about the time of a damaged one.
#include <Bedrock/platform/host/Host.h>

#include <Bedrock/platform/host/Files.h>
#include <Bedrock/platform/kernel/Fork.h>
#include <Bedrock/platform/kernel/MakeOnce.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <new>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

const char *zoneOfEnvironment() {
    const char *set = std::getenv("TZ");
    return set && *set == ':' ? set + 1 : set;
}

// The C library's own lock is not given back in a forked child; whoever holds it holds this one.
constinit mutex libraryZone;
ZP_MUTEX_AT_FORK(hostZone, []() -> mutex & { return libraryZone; });

bool localTime(std::time_t moment, std::tm &fields) {
    ZPHolding hold(libraryZone);
    return localtime_r(&moment, &fields);
}

// What rules can say and files are to say.
bool isOffset(long long seconds) { return seconds > -25 * 3600 && seconds < 26 * 3600; }

struct Zone {
    std::vector<long long> times;  // of the changes, ascending
    std::vector<unsigned char> kinds;  // in force from each on
    std::vector<ZPHostZoneKind> all;
    // Where the search begins, for every 97 days since the first change.
    static constexpr int stepBits = 23;
    std::vector<unsigned short> starts;

    // A table over more than 35,000 years is left to the C library.
    void index() {
        if (times.size() < 2) return;
        auto steps = (static_cast<unsigned long long>(times.back()) - static_cast<unsigned long long>(times.front())) >>
                     stepBits;
        if (steps >= 1 << 17) return;
        for (unsigned long long step = 0, at = 0; step <= steps; ++step) {
            while (times[at + 1] <= times.front() + static_cast<long long>(step << stepBits) && at + 2 < times.size())
                ++at;
            starts.push_back(static_cast<unsigned short>(at));
        }
    }

    // NO when there is a file for the zone that is not as it should be.
    BOOL isUsable = YES;

    Zone() {
        const char *set = zoneOfEnvironment();
        std::string path = !set ? "/etc/localtime" : *set == '/' ? set : std::string();
        if (path.empty() && *set && !std::strstr(set, "..")) {
            const char *folder = std::getenv("TZDIR");
            path = std::string(folder && *folder ? folder : "/usr/share/zoneinfo") + "/" + set;
        }
        std::vector<unsigned char> bytes((1 << 17) + 1);  // one more than a file may have
        long long length = path.empty() ? -1 : ZPHostReadFile(path.c_str(), bytes.data(), bytes.size());
        if (length >= 0)
            isUsable = std::size_t(length) < bytes.size() && isSound(bytes.data(), bytes.data() + length) ? YES : NO;
        if (!isUsable) return;
        {
            ZPHolding hold(libraryZone);
            tzset();
        }
        if (length < 0 || !read(bytes.data(), bytes.data() + length) || !agrees()) {
            times.clear();
            kinds.clear();
            all.clear();
        }
        index();
    }

    // Whether the part that the C library reads, of 64-bit numbers in every version but the first, holds what it says.
    static bool isSound(const unsigned char *at, const unsigned char *end) {
        Header h;
        if (!h.read(at, end, 4)) return false;
        std::size_t timeSize = h.version ? 8 : 4;
        if (h.version) {
            at += h.size;
            if (!h.read(at, end, 8)) return false;
        }
        auto moment = [&](const unsigned char *p) {
            return timeSize == 4 ? int(unsigned(number(p))) : static_cast<long long>(number(p) << 32 | number(p + 4));
        };
        at += 44;
        const unsigned char *kindOf = at + h.changes * timeSize, *kind = kindOf + h.changes,
                            *characters = kind + h.kinds * 6, *leap = characters + h.characters;
        for (std::size_t i = 0; i < h.changes; ++i)
            if (kindOf[i] >= h.kinds || (i && moment(at + i * timeSize) <= moment(at + (i - 1) * timeSize)))
                return false;
        for (std::size_t i = 0; i < h.kinds; ++i, kind += 6)
            if (!isOffset(int(unsigned(number(kind)))) || kind[4] > 1 || kind[5] >= h.characters ||
                !std::memchr(characters + kind[5], 0, h.characters - kind[5]))
                return false;
        for (std::size_t i = 1; i < h.leaps; ++i)
            if (moment(leap + i * (timeSize + 4)) <= moment(leap + (i - 1) * (timeSize + 4))) return false;
        return true;
    }

    // The 64-bit part of a sound file of version 2 or later without leap seconds.
    bool read(const unsigned char *at, const unsigned char *end) {
        Header h;
        if (!h.read(at, end, 4) || h.version < '2') return false;
        at += h.size;
        if (!h.read(at, end, 8) || h.leaps || h.changes > 0xFFFF) return false;
        at += 44;
        const unsigned char *kindOf = at + h.changes * 8, *kind = kindOf + h.changes, *characters = kind + h.kinds * 6;
        for (std::size_t i = 0; i < h.changes; ++i) {
            times.push_back(static_cast<long long>(number(at + i * 8) << 32 | number(at + i * 8 + 4)));
            kinds.push_back(kindOf[i]);
            if (kindOf[i] >= h.kinds || (i && times[i] <= times[i - 1])) return false;
        }
        for (std::size_t i = 0; i < h.kinds; ++i, kind += 6) {
            ZPHostZoneKind k{int(unsigned(number(kind))), kind[4] != 0, {}};
            for (std::size_t c = kind[5], n = 0; c < h.characters && characters[c] && n < sizeof k.abbreviation - 1;
                 ++c, ++n)
                k.abbreviation[n] = char(characters[c]);
            all.push_back(k);
        }
        return true;
    }

    // The C library may have been told of another zone.
    bool agrees() const {
        for (std::size_t i = 0; i < times.size(); i += std::max<std::size_t>(1, times.size() / 16)) {
            std::tm f;
            const ZPHostZoneKind &k = all[kinds[i]];
            if (!localTime(times[i], f) || f.tm_gmtoff != k.offset || (f.tm_isdst > 0) != bool(k.isDaylight))
                return false;
        }
        return true;
    }

    struct Header {
        unsigned char version;
        std::size_t leaps, changes, kinds, characters, size;

        bool read(const unsigned char *at, const unsigned char *end, std::size_t timeSize) {
            if (end - at < 44 || std::memcmp(at, "TZif", 4) != 0) return false;
            version = at[4];
            std::size_t indicators = number(at + 20) + number(at + 24);
            leaps = number(at + 28);
            changes = number(at + 32);
            kinds = number(at + 36);
            characters = number(at + 40);
            if (std::max({indicators, leaps, changes, characters}) > 1 << 17 || !kinds || kinds > 256) return false;
            size = 44 + changes * (timeSize + 1) + kinds * 6 + characters + leaps * (timeSize + 4) + indicators;
            return size <= std::size_t(end - at);
        }
    };
    static unsigned long long number(const unsigned char *p) {
        return static_cast<unsigned long long>(p[0]) << 24 | unsigned(p[1]) << 16 | unsigned(p[2]) << 8 | p[3];
    }
};

const Zone &zone() {
    static Zone *made;
    return *ZPMakeOnce(made, [] { return new Zone; });
}

}  // namespace

const ZPHostZoneKind *ZPHostZoneAt(long long moment) {
    const Zone &z = zone();
    if (z.starts.empty() || moment < z.times.front() || moment >= z.times.back()) return nullptr;
    std::size_t at = z.starts[std::size_t((moment - z.times.front()) >> Zone::stepBits)];
    while (z.times[at + 1] <= moment) ++at;
    return &z.all[z.kinds[at]];
}

BOOL ZPHostZoneByRule(long long moment, ZPHostZoneKind *kind) {
    if (!zone().isUsable) return NO;
    std::tm f;
    if (!localTime(moment, f) || !isOffset(f.tm_gmtoff)) return NO;
    *kind = {static_cast<int>(f.tm_gmtoff), f.tm_isdst > 0, {}};
    std::strncpy(kind->abbreviation, f.tm_zone ? f.tm_zone : "", sizeof kind->abbreviation - 1);
    return YES;
}

BOOL ZPHostZoneIsUsable() {
    try {
        return zone().isUsable;
    } catch (const std::bad_alloc &) {
        return NO;
    }
}

BOOL ZPHostZoneName(char *name, std::size_t size) {
    const char *set = zoneOfEnvironment();
    char link[1024];
    if (!set) {
        ssize_t length = readlink("/etc/localtime", link, sizeof link - 1);
        if (length <= 0) return NO;
        link[length] = 0;
        const char *zones = std::strstr(link, "zoneinfo/");
        if (!zones) return NO;
        set = zones + 9;
    }
    int length = std::snprintf(name, size, "%s", set);
    return length > 0 && std::size_t(length) < size;
}
