// SPDX-License-Identifier: MIT
// Key operations to be counted in instructions: runs one of them a number of times. The difference between two numbers,
// divided, is what one costs, whatever else the machine does. usage: instructions [NAME COUNT]
#include <Bedrock/Bedrock.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

struct Counter : ZPObject {
    ZP_CLASS(Counter)
    long _value;
    void step() { ++_value; }
    void heard(ZPNotification *) { ++_value; }
};
ZP_IMPLEMENT(Counter, step, heard);

struct Operation {
    const char *name;
    void (*run)(long count);
};

const Operation operations[] = {
    {"message",
     [](long count) {
         Counter *c = Counter::new_();
         for (long i = 0; i < count; ++i) objc_msgSend<void>(c, "step"_sel);
         c->release();
     }},
    {"retain and release",
     [](long count) {
         Counter *c = Counter::new_();
         for (long i = 0; i < count; ++i) {
             c->retain();
             c->release();
         }
         c->release();
     }},
    {"create and release",
     [](long count) {
         for (long i = 0; i < count; ++i) ZPObject::new_()->release();
     }},
    {"pool of one object",
     [](long count) {
         for (long i = 0; i < count; ++i) {
             ZPAutoreleasePoolScope pool;
             ZPObject::new_()->autorelease();
         }
     }},
    {"string of 12 bytes",
     [](long count) {
         for (long i = 0; i < count; ++i) ZPString::alloc()->initWithCString_length("twelve bytes", 12)->release();
     }},
    {"dictionary look-up",
     [](long count) {
         ZPMutableDictionary *d = ZPMutableDictionary::dictionary();
         for (int i = 0; i < 1000; ++i)
             d->setObject_forKey("value"_zp, ZPString::stringWithFormat("key number %d"_zp, i));
         ZPString *key = ZPString::stringWithFormat("key number %d"_zp, 77);
         for (long i = 0; i < count; ++i) d->objectForKey(key);
     }},
    {"array append",
     [](long count) {
         ZPMutableArray *a = ZPMutableArray::array();
         for (long i = 0; i < count; ++i) {
             a->addObject("x"_zp);
             if (a->count() == 1000) a->removeAllObjects();
         }
     }},
    {"format",
     [](long count) {
         for (long i = 0; i < count; ++i) {
             ZPAutoreleasePoolScope pool;
             ZPString::stringWithFormat("%d of %s: %@"_zp, 42, "many", "text"_zp);
         }
     }},
    {"lock and unlock",
     [](long count) {
         ZPLock *lock = ZPLock::new_();
         for (long i = 0; i < count; ++i) {
             lock->lock();
             lock->unlock();
         }
         lock->release();
     }},
    {"post to one observer",
     [](long count) {
         ZPNotificationCenter *center = ZPNotificationCenter::new_();
         Counter *c = Counter::new_();
         center->addObserver_selector_name_object(c, "heard:"_sel, "event"_zp, nullptr);
         for (long i = 0; i < count; ++i) center->postNotificationName_object("event"_zp, nullptr);
         center->removeObserver(c);
         center->release();
         c->release();
     }},
    {"date to text",
     [](long count) {
         ZPCalendarDate *date = ZPCalendarDate::dateWithYear_month_day_hour_minute_second_timeZone(
             2026, 11, 22, 20, 15, 0, ZPTimeZone::timeZoneForSecondsFromGMT(0));
         for (long i = 0; i < count; ++i) {
             ZPAutoreleasePoolScope pool;
             date->description();
         }
     }},
};

}  // namespace

int main(int count, char **arguments) {
    ZPAutoreleasePoolScope pool;
    if (count == 1) {
        for (auto &o : operations) std::puts(o.name);
        return 0;
    }
    for (auto &o : operations)
        if (count == 3 && std::strcmp(arguments[1], o.name) == 0) {
            o.run(std::strtol(arguments[2], nullptr, 10));
            return 0;
        }
    std::fprintf(stderr, "usage: %s [NAME COUNT]\n", arguments[0]);
    return 2;
}
