// SPDX-License-Identifier: MIT
// ZPDate, and the two kinds of date that know no calendar. A concrete date keeps its seconds as they were given, so
// that they come back exactly. The distant dates are two static objects.
#include <Bedrock/time/ZPDate.h>

#include <Bedrock/core/ZPAllocation.h>
#include <Bedrock/core/ZPException.h>
#include <Bedrock/core/ZPNames.h>
#include <Bedrock/platform/kernel/Kernel.h>
#include <Bedrock/strings/ZPString.h>
#include <Bedrock/time/ZPDate+Internal.h>

ZP_FORWARD(ZPCoder);
ZP_FORWARD(ZPPortCoder);

double _ZPCurrentTime() { return cthread_time(); }

namespace {

struct ZPConcreteDate : ZPDate {
    ZP_PRIVATE_CLASS(ZPConcreteDate)
    double _time;

    id init() {
        _time = cthread_time();
        return this;
    }
    id initWithTime(double seconds) {
        _time = seconds;
        return this;
    }
    double time() { return _time; }
    id copyWithZone(ZPZone *) { return retain(); }
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
    double timeSinceDate(ZPDate *) { return _timeInterval; }
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
    auto *date = objc_msgSend<id>(id(cls), "allocWithZone:"_sel, (ZPZone *)nullptr).unchecked<ZPDate>();
    return date->initWithTimeIntervalSinceReferenceDate(time)->autorelease().as<ZPDate>();
}

struct Clock {
    static double timeIntervalSinceReferenceDate(Class) { return cthread_time(); }
};

struct DateMethods : ZPDate {
    static id allocWithZone(Class self, ZPZone *zone) {
        return ZPAllocateObject(self == ZPDate::class_() ? ZPConcreteDate::class_() : self, 0, zone);
    }
    static ZPDate *date(Class self) { return make(self, cthread_time()); }
    static ZPDate *withReference(Class self, double seconds) { return make(self, seconds); }
    static ZPDate *withNow(Class self, double seconds) { return make(self, cthread_time() + seconds); }
    static ZPDate *with1970(Class self, double seconds) { return make(self, seconds - ZPTimeIntervalSince1970); }
    static ZPDate *withDate(Class self, ZPDate *date) { return make(self, date->timeIntervalSinceReferenceDate()); }
    static ZPDate *withInterval(Class self, double seconds, ZPDate *date) {
        return make(self, date->timeIntervalSinceReferenceDate() + seconds);
    }
    static ZPDate *withString(Class self, ZPString *text) {
        auto *date = objc_msgSend<id>(id(self), "allocWithZone:"_sel, (ZPZone *)nullptr).unchecked<ZPDate>();
        date = date->initWithString(text);
        return date->autorelease().as<ZPDate>();
    }
    static ZPDate *distantFuture(Class) {
        static ZPDistantDate *const future = makeDistant(63113990400.0);
        return future;
    }
    static ZPDate *distantPast(Class) {
        static ZPDistantDate *const past = makeDistant(-63113817600.0);
        return past;
    }

    [[noreturn]] void abstract(SEL selector) { ZPRequestConcreteImplementation(this, selector, ZPDate::class_()); }
    double time() { abstract("timeIntervalSinceReferenceDate"_sel); }
    ZPDate *initWithTime(double) { abstract("initWithTimeIntervalSinceReferenceDate:"_sel); }

    ZPDate *initWithNow(double seconds) { return initWithTimeIntervalSinceReferenceDate(cthread_time() + seconds); }
    ZPDate *initWith1970(double seconds) {
        return initWithTimeIntervalSinceReferenceDate(seconds - ZPTimeIntervalSince1970);
    }
    ZPDate *initWithInterval(double seconds, ZPDate *date) {
        return initWithTimeIntervalSinceReferenceDate(date->timeIntervalSinceReferenceDate() + seconds);
    }
    id init() { return initWithTimeIntervalSinceReferenceDate(cthread_time()); }

    double since(ZPDate *other) { return timeIntervalSinceReferenceDate() - other->timeIntervalSinceReferenceDate(); }
    double sinceNow() { return timeIntervalSinceReferenceDate() - cthread_time(); }
    double since1970() { return timeIntervalSinceReferenceDate() + ZPTimeIntervalSince1970; }
    ZPDate *adding(double seconds) { return make(objectClass(), timeIntervalSinceReferenceDate() + seconds); }

    int compareTo(ZPDate *other) {
        double mine = timeIntervalSinceReferenceDate(), its = other->timeIntervalSinceReferenceDate();
        return mine < its ? -1 : mine > its;
    }
    BOOL equalsDate(ZPDate *other) {
        return timeIntervalSinceReferenceDate() == other->timeIntervalSinceReferenceDate();
    }
    BOOL equals(id other) {
        return other == this || (other->isKindOfClass(ZPDate::class_()) && isEqualToDate(other.as<ZPDate>()));
    }
    unsigned hash() { return unsigned(_ZPWholeSeconds(timeIntervalSinceReferenceDate())); }
    ZPDate *choose(ZPDate *other, BOOL mine) { return (mine ? this : other)->copy()->autorelease().as<ZPDate>(); }
    ZPDate *earlier(ZPDate *other) { return choose(other, compare(other) < 0); }
    ZPDate *later(ZPDate *other) { return choose(other, compare(other) > 0); }
    id copyWithZone(ZPZone *zone) {
        return ((ZPDate *)ZPConcreteDate::allocWithZone(zone))
            ->initWithTimeIntervalSinceReferenceDate(timeIntervalSinceReferenceDate());
    }

    void encodeWithCoder(ZPCoder *coder) {
        double time = timeIntervalSinceReferenceDate();
        objc_msgSend(id((objc_object *)coder), "encodeValueOfObjCType:at:"_sel, (const char *)"d", (const void *)&time);
    }
    id initWithCoder(ZPCoder *coder) {
        double time = 0;
        objc_msgSend(id((objc_object *)coder), "decodeValueOfObjCType:at:"_sel, (const char *)"d", (void *)&time);
        return initWithTimeIntervalSinceReferenceDate(time);
    }
    Class classForCoder() { return ZPDate::class_(); }
    id replacementObjectForPortCoder(ZPPortCoder *) { return this; }
    ZPString *description() { return descriptionWithLocale(nullptr); }
};

}  // namespace

ZP_IMPLEMENT(ZPDate)
    .adopts<ZPCopying>()
    .classMethod<&DateMethods::allocWithZone>("allocWithZone:")
    .classMethod<&DateMethods::date>("date")
    .classMethod<&DateMethods::withReference>("dateWithTimeIntervalSinceReferenceDate:")
    .classMethod<&DateMethods::withNow>("dateWithTimeIntervalSinceNow:")
    .classMethod<&DateMethods::with1970>("dateWithTimeIntervalSince1970:")
    .classMethod<&DateMethods::withInterval>("dateWithTimeInterval:sinceDate:")
    .classMethod<&DateMethods::withDate>("dateWithDate:")
    .classMethod<&DateMethods::withString>("dateWithString:")
    .classMethod<&Clock::timeIntervalSinceReferenceDate>("timeIntervalSinceReferenceDate")
    .classMethod<&DateMethods::distantFuture>("distantFuture")
    .classMethod<&DateMethods::distantPast>("distantPast")
    .method<&DateMethods::time>("timeIntervalSinceReferenceDate")
    .method<&DateMethods::init>("init")
    .method<&DateMethods::initWithTime>("initWithTimeIntervalSinceReferenceDate:")
    .method<&DateMethods::initWithNow>("initWithTimeIntervalSinceNow:")
    .method<&DateMethods::initWith1970>("initWithTimeIntervalSince1970:")
    .method<&DateMethods::initWithInterval>("initWithTimeInterval:sinceDate:")
    .method<&DateMethods::since>("timeIntervalSinceDate:")
    .method<&DateMethods::sinceNow>("timeIntervalSinceNow")
    .method<&DateMethods::since1970>("timeIntervalSince1970")
    .method<&DateMethods::adding>("addTimeInterval:")
    .method<&DateMethods::compareTo>("compare:")
    .method<&DateMethods::equalsDate>("isEqualToDate:")
    .method<&DateMethods::equals>("isEqual:")
    .method<&DateMethods::hash>("hash")
    .method<&DateMethods::earlier>("earlierDate:")
    .method<&DateMethods::later>("laterDate:")
    .method<&DateMethods::copyWithZone>("copyWithZone:")
    .method<&DateMethods::encodeWithCoder>("encodeWithCoder:")
    .method<&DateMethods::initWithCoder>("initWithCoder:")
    .method<&DateMethods::classForCoder>("classForCoder")
    .method<&DateMethods::replacementObjectForPortCoder>("replacementObjectForPortCoder:")
    .method<&DateMethods::description>("description");

ZP_IMPLEMENT(ZPConcreteDate)
    .method<&ZPConcreteDate::init>("init")
    .method<&ZPConcreteDate::initWithTime>("initWithTimeIntervalSinceReferenceDate:")
    .method<&ZPConcreteDate::time>("timeIntervalSinceReferenceDate")
    .method<&ZPConcreteDate::copyWithZone>("copyWithZone:");

ZP_IMPLEMENT(ZPDistantDate)
    .method<&ZPDistantDate::init>("init")
    .method<&ZPDistantDate::timeIntervalSinceReferenceDate>("timeIntervalSinceReferenceDate")
    .method<&ZPDistantDate::timeIntervalSinceNow>("timeIntervalSinceNow")
    .method<&ZPDistantDate::timeIntervalSince1970>("timeIntervalSince1970")
    .method<&ZPDistantDate::timeSinceDate>("timeIntervalSinceDate:")
    .immortal()
    .method<&ZPDistantDate::copyWithZone>("copyWithZone:")
    .method<&ZPDistantDate::addTimeInterval>("addTimeInterval:")
    .method<&ZPDistantDate::compare>("compare:")
    .method<&ZPDistantDate::earlierDate>("earlierDate:")
    .method<&ZPDistantDate::laterDate>("laterDate:")
    .method<&ZPDistantDate::isEqualToDate>("isEqualToDate:");
