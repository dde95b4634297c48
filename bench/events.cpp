// SPDX-License-Identifier: MIT
// Posting to observers, and adding and removing one.
#include "common.h"

#include <Bedrock/Bedrock.h>

#include <vector>

namespace {

long total;

struct Receiver : ZPObject {
    ZP_CLASS(Receiver)
    void changed(ZPNotification *) { ++total; }
};
ZP_IMPLEMENT(Receiver, changed);

void post(State &s) {
    if (s.range(1)) startOneThread();
    ZPAutoreleasePoolScope pool;
    ZPNotificationCenter *center = ZPNotificationCenter::new_();
    ZPObject *sender = ZPObject::new_();
    std::vector<Receiver *> receivers;
    for (int i = 0; i < s.range(0); ++i) {
        receivers.push_back(Receiver::new_());
        center->addObserver_selector_name_object(receivers.back(), "changed:"_sel, "changed"_zp, nullptr);
    }
    total = 0;
    center->postNotificationName_object("changed"_zp, sender);
    REQUIRE(total == s.range(0));
    total = 0;
    for (auto _ : s) center->postNotificationName_object("changed"_zp, sender);
    REQUIRE(total == long(s.iterations()) * s.range(0));
    items(s, s.range(0));
    for (auto *r : receivers) {
        center->removeObserver(r);
        r->release();
    }
    center->release();
    sender->release();
}

void addRemove(State &s) {
    startOneThread();
    ZPAutoreleasePoolScope pool;
    ZPNotificationCenter *center = ZPNotificationCenter::new_();
    std::vector<Receiver *> receivers;
    for (int i = 0; i < s.range(0); ++i) {
        receivers.push_back(Receiver::new_());
        center->addObserver_selector_name_object(receivers.back(), "changed:"_sel,
                                                 ZPString::stringWithFormat("changed %d"_zp, i % 100), nullptr);
    }
    Receiver *one = Receiver::new_();
    total = 0;
    center->addObserver_selector_name_object(one, "changed:"_sel, "changed 7"_zp, nullptr);
    center->postNotificationName_object("changed 7"_zp, nullptr);
    REQUIRE(total == s.range(0) / 100 + 1);
    center->removeObserver(one);
    center->postNotificationName_object("changed 7"_zp, nullptr);
    REQUIRE(total == s.range(0) / 100 * 2 + 1);
    for (auto _ : s) {
        center->addObserver_selector_name_object(one, "changed:"_sel, "changed 7"_zp, nullptr);
        center->removeObserver(one);
    }
    REQUIRE(center->_registry_count == receivers.size());
    center->release();
    for (auto *r : receivers) r->release();
    one->release();
}

}  // namespace

BENCHMARK(post)->Name("post, observers, threads: bedrock")->Args({1, 0})->Args({1, 1})->Args({10, 1})->Args({100, 1});
BENCHMARK(addRemove)->Name("add and remove among others: bedrock")->Arg(1000);

BENCHMARK_MAIN();
