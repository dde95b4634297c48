// SPDX-License-Identifier: MIT
// ZPDate, and the two kinds of date that know no calendar. A concrete date keeps its seconds as they were given, so
// that they come back exactly. The distant dates are two static objects.
#include <Bedrock/platform/kernel/MakeOnce.h>
#include <Bedrock/time/ZPDate.h>

#include <Bedrock/core/Fronts.h>
#include <Bedrock/core/ZPAllocation.h>
#include <Bedrock/core/ZPException.h>
#include <Bedrock/core/ZPNames.h>
#include <Bedrock/platform/kernel/Kernel.h>
#include <Bedrock/strings/ZPString.h>
#include <Bedrock/time/Date+Internal.h>

double _ZPCurrentTime() { return cthread_time(); }

namespace {

struct ZPConcreteDate : ZPDate {
    ZP_PRIVATE_CLASS(ZPConcreteDate)
    double _time;

    id init() {
        _time = cthread_time();
        return this;
    }
    id initWithTimeIntervalSinceReferenceDate(double seconds) {
        _time = seconds;
        return this;
    }
    double timeIntervalSinceReferenceDate() { return _time; }
    id copyWithZone(ZPZone *) { return self()->retain(); }
};

struct ZPDistantDate : ZPDate {
    ZP_PRIVATE_CLASS(ZPDistantDate)
    double _timeInterval;

    id init() {
        ZPException::raise_format(ZPInternalInconsistencyException, "%@: shouldn't be called"_zp,
                                  _ZPMethodExceptionProem(this, "init"_sel));
    }
    double timeIntervalSinceReferenceDate() { return _timeInterval; }
    double timeIntervalSinceNow() { return _timeInterval; }
    double timeIntervalSince1970() { return _timeInterval; }
    double timeIntervalSinceDate(ZPDate *) { return _timeInterval; }
    id copyWithZone(ZPZone *) { return this; }
    ZPDate *addTimeInterval(double) { return this; }
    BOOL isPast() { return _timeInterval < 0; }
    int compare(ZPDate *other) { return other == this ? 0 : isPast() ? -1 : 1; }
    ZPDate *choose(ZPDate *other, BOOL mine) { return mine ? this : other->copy()->autorelease().as<ZPDate>(); }
    ZPDate *earlierDate(ZPDate *other) { return choose(other, isPast()); }
    ZPDate *laterDate(ZPDate *other) { return choose(other, !isPast()); }
    BOOL isEqualToDate(ZPDate *other) { return other == this; }
};

ZPDistantDate *makeDistant(double time) {
    auto *date = ZPAllocateObject(ZPDistantDate::class_(), 0, nullptr).as<ZPDistantDate>();
    date->_timeInterval = time;
    return date;
}

ZPDate *make(Class cls, double time) {
    if (cls == ZPDate::class_() || cls == ZPConcreteDate::class_()) {
        auto *date = ZPAllocateObject(ZPConcreteDate::class_(), 0, nullptr).as<ZPConcreteDate>();
        date->_time = time;
        return date->autorelease().as<ZPDate>();
    }
    return ZPDate::allocFrom(cls)->initWithTimeIntervalSinceReferenceDate(time)->autorelease().as<ZPDate>();
}

struct Clock {
    static double timeIntervalSinceReferenceDate(Class) { return cthread_time(); }
};

struct DateMethods : ZPDate {
    static id allocWithZone(Class self, ZPZone *zone) {
        return ZPAllocateObject(self == ZPDate::class_() ? ZPConcreteDate::class_() : self, 0, zone);
    }
    static ZPDate *date(Class self) { return make(self, cthread_time()); }
    static ZPDate *dateWithTimeIntervalSinceReferenceDate(Class self, double seconds) { return make(self, seconds); }
    static ZPDate *dateWithTimeIntervalSinceNow(Class self, double seconds) {
        return make(self, cthread_time() + seconds);
    }
    static ZPDate *dateWithTimeIntervalSince1970(Class self, double seconds) {
        return make(self, seconds - ZPTimeIntervalSince1970);
    }
    static ZPDate *dateWithDate(Class self, ZPDate *date) { return make(self, date->timeIntervalSinceReferenceDate()); }
    static ZPDate *dateWithTimeInterval_sinceDate(Class self, double seconds, ZPDate *date) {
        return make(self, date->timeIntervalSinceReferenceDate() + seconds);
    }
    static ZPDate *dateWithString(Class self, ZPString *text) {
        return ZPDate::allocFrom(self)->initWithString(text)->autorelease().as<ZPDate>();
    }
    static ZPDate *distantFuture(Class) {
        static ZPDistantDate *future;
        return ZPMakeOnce(
            future, [] { return makeDistant(63113990400.0); }, ZPDropMemory());
    }
    static ZPDate *distantPast(Class) {
        static ZPDistantDate *past;
        return ZPMakeOnce(
            past, [] { return makeDistant(-63113817600.0); }, ZPDropMemory());
    }

    [[noreturn]] void abstract(SEL selector) { ZPRequestConcreteImplementation(this, selector, ZPDate::class_()); }
    double timeIntervalSinceReferenceDate() { abstract("timeIntervalSinceReferenceDate"_sel); }
    ZPDate *initWithTimeIntervalSinceReferenceDate(double) { abstract("initWithTimeIntervalSinceReferenceDate:"_sel); }

    ZPDate *initWithTimeIntervalSinceNow(double seconds) {
        return self()->initWithTimeIntervalSinceReferenceDate(cthread_time() + seconds);
    }
    ZPDate *initWithTimeIntervalSince1970(double seconds) {
        return self()->initWithTimeIntervalSinceReferenceDate(seconds - ZPTimeIntervalSince1970);
    }
    ZPDate *initWithTimeInterval_sinceDate(double seconds, ZPDate *date) {
        return self()->initWithTimeIntervalSinceReferenceDate(date->timeIntervalSinceReferenceDate() + seconds);
    }
    id init() { return self()->initWithTimeIntervalSinceReferenceDate(cthread_time()); }

    double timeIntervalSinceDate(ZPDate *other) {
        return self()->timeIntervalSinceReferenceDate() - other->timeIntervalSinceReferenceDate();
    }
    double timeIntervalSinceNow() { return self()->timeIntervalSinceReferenceDate() - cthread_time(); }
    double timeIntervalSince1970() { return self()->timeIntervalSinceReferenceDate() + ZPTimeIntervalSince1970; }
    ZPDate *addTimeInterval(double seconds) {
        return make(self()->objectClass(), self()->timeIntervalSinceReferenceDate() + seconds);
    }

    int compare(ZPDate *other) {
        double mine = self()->timeIntervalSinceReferenceDate(), its = other->timeIntervalSinceReferenceDate();
        return mine < its ? -1 : mine > its;
    }
    BOOL isEqualToDate(ZPDate *other) {
        return self()->timeIntervalSinceReferenceDate() == other->timeIntervalSinceReferenceDate();
    }
    BOOL isEqual(id other) {
        return other == this || (other->isKindOfClass(ZPDate::class_()) && self()->isEqualToDate(other.as<ZPDate>()));
    }
    unsigned hash() { return unsigned(_ZPWholeSeconds(self()->timeIntervalSinceReferenceDate())); }
    ZPDate *choose(ZPDate *other, BOOL mine) { return (mine ? this : other)->copy()->autorelease().as<ZPDate>(); }
    ZPDate *earlierDate(ZPDate *other) { return choose(other, self()->compare(other) < 0); }
    ZPDate *laterDate(ZPDate *other) { return choose(other, self()->compare(other) > 0); }
    id copyWithZone(ZPZone *zone) {
        ZPDate *copy = ZPConcreteDate::allocWithZone(zone);
        return copy->initWithTimeIntervalSinceReferenceDate(self()->timeIntervalSinceReferenceDate());
    }

    void encodeWithCoder(ZPCoder *coder) {
        double timeIntervalSinceReferenceDate = self()->timeIntervalSinceReferenceDate();
        _ZPAbove(coder)->encodeValueOfObjCType_at("d", &timeIntervalSinceReferenceDate);
    }
    id initWithCoder(ZPCoder *coder) {
        double timeIntervalSinceReferenceDate = 0;
        _ZPAbove(coder)->decodeValueOfObjCType_at("d", &timeIntervalSinceReferenceDate);
        return self()->initWithTimeIntervalSinceReferenceDate(timeIntervalSinceReferenceDate);
    }
    Class classForCoder() { return ZPDate::class_(); }
    id replacementObjectForPortCoder(ZPPortCoder *) { return this; }
    ZPString *description() { return self()->descriptionWithLocale(nullptr); }
};

}  // namespace

ZP_IMPLEMENT_WITH(ZPDate, DateMethods, adopts(ZPCopying), timeIntervalSinceReferenceDate, init,
                  initWithTimeIntervalSinceReferenceDate, initWithTimeIntervalSinceNow, initWithTimeIntervalSince1970,
                  initWithTimeInterval_sinceDate, timeIntervalSinceDate, timeIntervalSinceNow, timeIntervalSince1970,
                  addTimeInterval, compare, isEqualToDate, isEqual, hash, earlierDate, laterDate, copyWithZone,
                  encodeWithCoder, initWithCoder, classForCoder, replacementObjectForPortCoder, description,
                  classMethods(allocWithZone, date, dateWithTimeIntervalSinceReferenceDate,
                               dateWithTimeIntervalSinceNow, dateWithTimeIntervalSince1970,
                               dateWithTimeInterval_sinceDate, dateWithDate, dateWithString, distantFuture,
                               distantPast),
                  classMethodsOf(Clock, named(timeIntervalSinceReferenceDate, "timeIntervalSinceReferenceDate")));

ZP_IMPLEMENT(ZPConcreteDate, init, initWithTimeIntervalSinceReferenceDate, timeIntervalSinceReferenceDate,
             copyWithZone);

ZP_IMPLEMENT(ZPDistantDate, immortal(), init, timeIntervalSinceReferenceDate, timeIntervalSinceNow,
             timeIntervalSince1970, timeIntervalSinceDate, copyWithZone, addTimeInterval, compare, earlierDate,
             laterDate, isEqualToDate);
