// SPDX-License-Identifier: MIT
// Zones. Two caches live for the process under one mutex, with what is in them: details by abbreviation, of which those
// at a fixed distance are also found by their hours and minutes; and the details of the host's zone. The default is
// one of these until it is set. No other zone is known by its name yet.
#include <Bedrock/time/TimeZone+Internal.h>

#include <Bedrock/collections/ZPArray.h>
#include <Bedrock/collections/ZPDictionary.h>
#include <Bedrock/core/Fronts.h>
#include <Bedrock/core/ZPAllocation.h>
#include <Bedrock/core/ZPAutoreleasePool.h>
#include <Bedrock/core/ZPNames.h>
#include <Bedrock/platform/host/Host.h>
#include <Bedrock/platform/kernel/Fork.h>
#include <Bedrock/core/ZPRef.h>
#include <Bedrock/platform/kernel/MakeOnce.h>
#include <Bedrock/strings/ZPString.h>
#include <Bedrock/strings/ZPStringEncoding.h>
#include <Bedrock/time/Date+Internal.h>
#include <Bedrock/time/ZPDate.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <unordered_map>

namespace {

// ---- the caches ----

struct Caches {
    struct mutex mutex;
    ZPMutableDictionary *byAbbreviation ZP_PT_GUARDED_BY(mutex) = ZPMutableDictionary::alloc()->initWithCapacity(16);
    std::unordered_map<int, ZPTimeZoneDetail *> fixed ZP_GUARDED_BY(mutex);  // by minutes, those west of GMT less one
    ZPTimeZoneDetail *standard = nullptr;  // the default zone, retained
    bool standardIsSet = false;  // by somebody; `standard` is read with the mutex then

    ~Caches() { byAbbreviation->release(); }  // another thread's caches were first
    void enter(ZPString *abbreviation, ZPTimeZoneDetail *detail) ZP_REQUIRES(mutex) {
        byAbbreviation->setObject_forKey(detail, abbreviation);
    }
};

Caches &caches() { return ZPTheOnly<Caches>(); }

ZP_MUTEX_AT_FORK(timeZones, []() -> mutex & { return caches().mutex; });

// These stand for themselves also where the host's zone uses them for a part of the year.
BOOL isGMT(ZPString *name) { return name->isEqualToString("GMT"_zp) || name->isEqualToString("UTC"_zp); }

ZPTimeZoneDetail *namedGMT(ZPString *name) {
    Caches &c = caches();
    ZPHolding hold(c.mutex);
    auto *known = c.byAbbreviation->objectForKey(name).as<ZPTimeZoneDetail>();
    if (!known) {
        known = ZPConcreteTimeZone::alloc()->initWithName_abbreviation_secondsFromGMT(name, name, 0);
        c.enter(name, known);
    }
    return known;
}

ZPTimeZoneDetail *fixedDetail(int seconds) {
    long long distance = seconds < 0 ? -static_cast<long long>(seconds) : seconds;
    int key = int(seconds < 0 ? -(distance / 60) - 1 : distance / 60);
    Caches &c = caches();
    ZPHolding hold(c.mutex);
    ZPTimeZoneDetail *&known = c.fixed[key];
    if (!known) {
        ZPAutoreleasePoolScope pool;
        char text[32];
        std::snprintf(text, sizeof text, "GMT%c%02lld%02lld", seconds < 0 ? '-' : '+', distance / 3600,
                      distance / 60 % 60);
        ZPString *name = ZPString::stringWithCString(text);
        known = ZPConcreteTimeZone::alloc()->initWithName_abbreviation_secondsFromGMT(name, name, seconds);
        c.enter(name, known);
    }
    return known;
}

// ---- the host's zone ----

// Details are made once and linked in front of those that readers may be looking at.
struct HostDetail {
    HostDetail *next;
    ZPHostTimeZoneDetail *detail;
    const ZPHostZoneKind *asked;  // the host's own record, when it has one
    ZPHostZoneKind kind;
};

HostDetail *hostDetails;

ZPHostTimeZoneDetail *findHostDetail(const ZPHostZoneKind *kind) {
    for (HostDetail *d = __atomic_load_n(&hostDetails, __ATOMIC_ACQUIRE); d; d = d->next)
        if (d->asked == kind || (d->kind.offset == kind->offset && d->kind.isDaylight == kind->isDaylight &&
                                 std::strcmp(d->kind.abbreviation, kind->abbreviation) == 0))
            return d->detail;
    return nullptr;
}

// The environment's and a file's bytes need not be text.
ZPString *textOfHost(const char *bytes) {
    return _ZPStringFromHostBytes(bytes, unsigned(std::strlen(bytes)), _ZPDefaultCStringEncoding());
}

ZPHostTimeZoneDetail *hostDetail(const ZPHostZoneKind *kind, BOOL isKept) {
    if (ZPHostTimeZoneDetail *found = findHostDetail(kind)) return found;
    ZPAutoreleasePoolScope pool;
    Caches &c = caches();
    ZPHolding hold(c.mutex);
    if (ZPHostTimeZoneDetail *found = findHostDetail(kind)) return found;
    char zone[256];
    ZPString *shown = textOfHost(kind->abbreviation),
             *name = ZPHostZoneName(zone, sizeof zone) ? textOfHost(zone) : shown;
    auto *detail =
        id(ZPHostTimeZoneDetail::alloc()->initWithName_abbreviation_secondsFromGMT(name, shown, kind->offset))
            .unchecked<ZPHostTimeZoneDetail>();
    detail->_isDaylight = kind->isDaylight;
    __atomic_store_n(&hostDetails, new HostDetail{hostDetails, detail, isKept ? kind : nullptr, *kind},
                     __ATOMIC_RELEASE);
    if (!isGMT(shown) && !c.byAbbreviation->objectForKey(shown)) c.enter(shown, detail);
    return detail;
}

ZPTimeZoneDetail *defaultDetail() {
    return ZPMakeOnce(caches().standard,
                      [] { return _ZPHostDetailAt(_ZPCurrentTime())->retain().as<ZPTimeZoneDetail>(); });
}

// ---- the classes ----

struct ZoneMethods : ZPTimeZone {
    // Until somebody sets one, the host's, which stays; then what a reader gets is the reader's until its pool goes.
    static ZPTimeZoneDetail *defaultTimeZone(Class) {
        Caches &c = caches();
        if (!__atomic_load_n(&c.standardIsSet, __ATOMIC_ACQUIRE)) return defaultDetail();
        ZPRef<ZPTimeZoneDetail> zone;
        {
            ZPHolding hold(c.mutex);
            zone = c.standard;
        }
        return std::move(zone).autoreleased();
    }
    static void setDefaultTimeZone(Class, ZPTimeZone *zone) {
        Caches &c = caches();
        ZPRef<ZPTimeZoneDetail> old, given = zone->timeZoneDetailForDate(ZPDate::date());
        if (!given) given = _ZPHostDetailAt(_ZPCurrentTime());
        defaultDetail();
        ZPHolding hold(c.mutex);
        old = ZPAdopt(__atomic_exchange_n(&c.standard, given.detach(), __ATOMIC_ACQ_REL));
        if (!c.standardIsSet) old->retain();  // the host's
        __atomic_store_n(&c.standardIsSet, true, __ATOMIC_RELEASE);
    }
    static ZPTimeZoneDetail *localTimeZone(Class);
    static ZPTimeZone *timeZoneWithName(Class, ZPString *timeZoneName) {
        if (!timeZoneName) return nullptr;
        if (timeZoneName->isEqualToString("ZPLocalTimeZone"_zp)) return ZPTimeZone::localTimeZone();
        if (isGMT(timeZoneName)) return namedGMT(timeZoneName);
        ZPTimeZoneDetail *host = _ZPHostDetailAt(_ZPCurrentTime());
        return timeZoneName->isEqualToString(host->timeZoneName()) ? host : nullptr;
    }
    static ZPTimeZoneDetail *timeZoneWithAbbreviation(Class, ZPString *abbreviation) {
        if (!abbreviation) return nullptr;
        if (isGMT(abbreviation)) return namedGMT(abbreviation);
        learnHostAbbreviations();
        Caches &c = caches();
        {
            ZPHolding hold(c.mutex);
            if (id found = c.byAbbreviation->objectForKey(abbreviation)) return found.as<ZPTimeZoneDetail>();
        }
        return nullptr;
    }
    // The zone's details of the two years around now.
    static void learnHostAbbreviations() {
        static BOOL known;
        if (__atomic_load_n(&known, __ATOMIC_ACQUIRE)) return;
        double now = _ZPCurrentTime();
        for (int month = -12; month <= 12; ++month) _ZPHostDetailAt(now + month * 2629746.0);
        __atomic_store_n(&known, YES, __ATOMIC_RELEASE);
    }
    static ZPTimeZoneDetail *timeZoneForSecondsFromGMT(Class, int seconds) { return fixedDetail(seconds); }
    static ZPTimeZone *timeZoneForKey(Class, ZPString *key) {
        ZPTimeZone *zone = ZPTimeZone::timeZoneWithAbbreviation(key);
        return zone ? zone : ZPTimeZone::timeZoneWithName(key);
    }

    ZPString *timeZoneName() { ZPRequestConcreteImplementation(this, "timeZoneName"_sel, ZPTimeZone::class_()); }
    ZPArray *timeZoneDetailArray() { return ZPArray::arrayWithObject(this); }
    ZPTimeZoneDetail *timeZoneDetailForDate(ZPDate *) { return id(this).unchecked<ZPTimeZoneDetail>(); }
    BOOL isEqual(id other) {
        if (other == this) return YES;
        return other->isKindOfClass(ZPTimeZone::class_()) &&
               self()->timeZoneName()->isEqualToString(other.as<ZPTimeZone>()->timeZoneName());
    }
    unsigned hash() { return self()->timeZoneName()->hash(); }
    id copyWithZone(ZPZone *) { return self()->retain(); }
    id init() {
        self()->release();
        return nullptr;
    }

    void encodeWithCoder(ZPCoder *coder) { _ZPAbove(coder)->encodeObject(self()->timeZoneName()); }
    id initWithCoder(ZPCoder *coder) {
        auto *timeZoneName = _ZPAbove(coder)->decodeObject().as<ZPString>();
        self()->release();
        return ZPTimeZone::timeZoneForKey(timeZoneName)->retain();
    }
    Class classForCoder() { return ZPTimeZone::class_(); }
    id replacementObjectForPortCoder(ZPPortCoder *) { return this; }
};

struct DetailMethods : ZPTimeZoneDetail {
    static id allocWithZone(Class self, ZPZone *zone) {
        return ZPAllocateObject(self == ZPTimeZoneDetail::class_() ? ZPConcreteTimeZone::class_() : self, 0, zone);
    }
    id initWithName_abbreviation_secondsFromGMT(ZPString *, ZPString *, int) { return this; }
    int timeZoneSecondsFromGMT() {
        ZPRequestConcreteImplementation(this, "timeZoneSecondsFromGMT"_sel, ZPTimeZoneDetail::class_());
    }
    ZPString *timeZoneAbbreviation() {
        ZPRequestConcreteImplementation(this, "timeZoneAbbreviation"_sel, ZPTimeZoneDetail::class_());
    }
    BOOL isDaylightSavingTimeZone() { return NO; }
    unsigned hash() { return unsigned(self()->timeZoneSecondsFromGMT()); }
    static BOOL same(ZPString *a, ZPString *b) { return a == b || a->isEqualToString(b); }
    BOOL isEqual(id other) {
        if (other == this) return YES;
        if (!other->isKindOfClass(ZPTimeZoneDetail::class_())) return NO;
        auto *o = other.as<ZPTimeZoneDetail>();
        return self()->timeZoneSecondsFromGMT() == o->timeZoneSecondsFromGMT() &&
               same(self()->timeZoneName(), o->timeZoneName()) &&
               same(self()->timeZoneAbbreviation(), o->timeZoneAbbreviation());
    }
    ZPString *description() {
        return ZPString::stringWithFormat("%@ offset %d%s"_zp, self()->timeZoneAbbreviation(),
                                          self()->timeZoneSecondsFromGMT(),
                                          self()->isDaylightSavingTimeZone() ? " (Daylight)" : "");
    }
    void encodeWithCoder(ZPCoder *coder) {
        auto *to = _ZPAbove(coder);
        int timeZoneSecondsFromGMT = self()->timeZoneSecondsFromGMT();
        to->encodeObject(self()->timeZoneName());
        to->encodeObject(self()->timeZoneAbbreviation());
        to->encodeValueOfObjCType_at("i", &timeZoneSecondsFromGMT);
    }
    id initWithCoder(ZPCoder *coder) {
        auto *from = _ZPAbove(coder);
        auto *name = from->decodeObject().as<ZPString>();
        auto *timeZoneAbbreviation = from->decodeObject().as<ZPString>();
        int timeZoneSecondsFromGMT = 0;
        from->decodeValueOfObjCType_at("i", &timeZoneSecondsFromGMT);
        self()->release();
        ZPArray *details = ZPTimeZone::timeZoneWithName(name)->timeZoneDetailArray();
        for (unsigned i = details->count(); i--;) {
            auto *d = details->objectAtIndex(i).as<ZPTimeZoneDetail>();
            if (d->timeZoneSecondsFromGMT() == timeZoneSecondsFromGMT && same(d->timeZoneName(), name) &&
                same(d->timeZoneAbbreviation(), timeZoneAbbreviation))
                return d->retain();
        }
        return ZPTimeZone::timeZoneForSecondsFromGMT(timeZoneSecondsFromGMT)->retain();
    }
    Class classForCoder() { return ZPTimeZoneDetail::class_(); }
};

struct ConcreteMethods : ZPConcreteTimeZone {
    id initWithName_abbreviation_secondsFromGMT(ZPString *timeZoneName, ZPString *timeZoneAbbreviation, int seconds) {
        _timeZoneName = timeZoneName->copyWithZone(nullptr).as<ZPString>();
        _abbreviation = timeZoneAbbreviation->copyWithZone(nullptr).as<ZPString>();
        _timeZoneSecondsFromGMT = seconds;
        return this;
    }
    ZPString *timeZoneName() { return _timeZoneName; }
    ZPString *timeZoneAbbreviation() { return _abbreviation; }
    int timeZoneSecondsFromGMT() { return _timeZoneSecondsFromGMT; }
    void dealloc() {
        _timeZoneName->release();
        _abbreviation->release();
        ZP_SUPER(ZPConcreteTimeZone, dealloc)();
    }
};

struct HostMethods : ZPHostTimeZoneDetail {
    ZPTimeZoneDetail *timeZoneDetailForDate(ZPDate *date) {
        return _ZPHostDetailAt(date->timeIntervalSinceReferenceDate());
    }
    BOOL isDaylightSavingTimeZone() { return _isDaylight; }
    ZPArray *timeZoneDetailArray() {
        ZPMutableArray *all = ZPMutableArray::array();
        for (HostDetail *d = __atomic_load_n(&hostDetails, __ATOMIC_ACQUIRE); d; d = d->next) all->addObject(d->detail);
        return all;
    }
};

/// Forwards everything to what is the default now.
struct ZPLocalTimeZone : ZPTimeZoneDetail {
    ZP_PRIVATE_CLASS(ZPLocalTimeZone)

    ZPString *timeZoneName() { return "ZPLocalTimeZone"_zp; }
    int timeZoneSecondsFromGMT() { return defaultDetail()->timeZoneSecondsFromGMT(); }
    ZPString *timeZoneAbbreviation() { return defaultDetail()->timeZoneAbbreviation(); }
    ZPTimeZoneDetail *timeZoneDetailForDate(ZPDate *date) { return defaultDetail()->timeZoneDetailForDate(date); }
    ZPArray *timeZoneDetailArray() { return defaultDetail()->timeZoneDetailArray(); }
    ZPString *description() { return defaultDetail()->description(); }
    BOOL isDaylightSavingTimeZone() { return defaultDetail()->isDaylightSavingTimeZone(); }
    void encodeWithCoder(ZPCoder *) {}
    id initWithCoder(ZPCoder *) { return ZPTimeZone::localTimeZone(); }
    Class classForCoder() { return class_(); }
};

ZPTimeZoneDetail *ZoneMethods::localTimeZone(Class) {
    static ZPTimeZoneDetail *zone;
    return ZPMakeOnce(
        zone, [] { return ZPAllocateObject(ZPLocalTimeZone::class_(), 0, nullptr).unchecked<ZPTimeZoneDetail>(); },
        ZPDropMemory());
}

}  // namespace

ZPTimeZoneDetail *_ZPHostDetailAt(double time) {
    long long seconds = _ZPFloorSeconds(time + ZPTimeIntervalSince1970);
    if (const ZPHostZoneKind *kind = ZPHostZoneAt(seconds)) return hostDetail(kind, YES);
    ZPHostZoneKind kind;
    return ZPHostZoneByRule(seconds, &kind) ? hostDetail(&kind, NO) : namedGMT("GMT"_zp);
}

ZPTimeZoneDetail *_ZPDetailAt(ZPTimeZone *zone, double time, ZPDate *holder) {
    if (!zone) zone = defaultDetail();
    if (zone->isa == ZPConcreteTimeZone::class_()) return static_cast<ZPTimeZoneDetail *>(zone);
    if (zone->isa == ZPHostTimeZoneDetail::class_()) return _ZPHostDetailAt(time);
    return zone->timeZoneDetailForDate(holder);
}

ZP_IMPLEMENT_WITH(ZPTimeZone, ZoneMethods, adopts(ZPCopying), init, timeZoneName, timeZoneDetailArray,
                  timeZoneDetailForDate, isEqual, hash, copyWithZone, encodeWithCoder, initWithCoder, classForCoder,
                  replacementObjectForPortCoder,
                  classMethods(defaultTimeZone, setDefaultTimeZone, localTimeZone, timeZoneWithName,
                               timeZoneWithAbbreviation, timeZoneForSecondsFromGMT, timeZoneForKey));

ZP_IMPLEMENT_WITH(ZPTimeZoneDetail, DetailMethods, initWithName_abbreviation_secondsFromGMT, timeZoneSecondsFromGMT,
                  timeZoneAbbreviation, isDaylightSavingTimeZone, hash, isEqual, description, encodeWithCoder,
                  initWithCoder, classForCoder, classMethods(allocWithZone));

ZP_IMPLEMENT_WITH(ZPConcreteTimeZone, ConcreteMethods, initWithName_abbreviation_secondsFromGMT, timeZoneName,
                  timeZoneAbbreviation, timeZoneSecondsFromGMT, dealloc);

ZP_IMPLEMENT_WITH(ZPHostTimeZoneDetail, HostMethods, immortal(), timeZoneDetailForDate, isDaylightSavingTimeZone,
                  timeZoneDetailArray);

ZP_IMPLEMENT(ZPLocalTimeZone, immortal(), timeZoneName, timeZoneSecondsFromGMT, timeZoneAbbreviation,
             timeZoneDetailForDate, timeZoneDetailArray, description, isDaylightSavingTimeZone, encodeWithCoder,
             initWithCoder, classForCoder);
