// SPDX-License-Identifier: MIT
// A message beside a virtual call.
#include "common.h"

#include <Bedrock/core/ZPObject.h>

#include <memory>
#include <random>
#include <vector>

namespace {

struct Tally : ZPObject {
    ZP_CLASS(Tally)
    long _total;
    void add(int v) { objc_msgSend(this, "add:"_sel, v); }
};
struct TallyMethods : Tally {
    void add(int v) { _total += v + 1; }
};
struct Tally2 : Tally {
    ZP_CLASS(Tally2)
};
struct Tally3 : Tally {
    ZP_CLASS(Tally3)
};
struct Tally4 : Tally3 {
    ZP_CLASS(Tally4)
};
struct Tally2Methods : Tally { void add(int v) { _total += v + 2; } };
struct Tally3Methods : Tally { void add(int v) { _total += v + 3; } };
struct Tally4Methods : Tally { void add(int v) { _total += v + 4; } };
ZP_IMPLEMENT(Tally).method<&TallyMethods::add>("add:");
ZP_IMPLEMENT(Tally2).method<&Tally2Methods::add>("add:");
ZP_IMPLEMENT(Tally3).method<&Tally3Methods::add>("add:");
ZP_IMPLEMENT(Tally4).method<&Tally4Methods::add>("add:");

struct Shape {
    virtual ~Shape() = default;
    virtual void add(int v) { total += v; }
    long total = 0;
};
struct Circle : Shape { void add(int v) override { total += v + 1; } };
struct Square : Shape { void add(int v) override { total += v + 2; } };
struct Disc : Circle { void add(int v) override { total += v + 3; } };

}  // namespace

static void cpp_virtual(State &s) {
    std::unique_ptr<Shape> o = std::make_unique<Circle>();
    Shape *p = o.get();
    for (auto _ : s) { DoNotOptimize(p); p->add(3); }
    DoNotOptimize(p->total);
}
BENCHMARK(cpp_virtual);

static void bedrock_message(State &s) {
    Tally *t = Tally::new_();
    t->add(3);
    REQUIRE(t->_total == 4);
    for (auto _ : s) { DoNotOptimize(t); t->add(3); }
    DoNotOptimize(t->_total);
    t->release();
}
BENCHMARK(bedrock_message);

static void cpp_virtual_4classes_1000objects(State &s) {
    std::mt19937 random(12345);
    std::vector<std::unique_ptr<Shape>> v;
    for (int i = 0; i < 1000; ++i) switch (random() % 4) {
        case 0: v.push_back(std::make_unique<Shape>()); break;
        case 1: v.push_back(std::make_unique<Circle>()); break;
        case 2: v.push_back(std::make_unique<Square>()); break;
        default: v.push_back(std::make_unique<Disc>());
    }
    for (auto _ : s) for (auto &o : v) { DoNotOptimize(o); o->add(3); }
    items(s, 1000);
}
BENCHMARK(cpp_virtual_4classes_1000objects);

static void bedrock_message_4classes_1000objects(State &s) {
    std::mt19937 random(12345);
    std::vector<Tally *> v;
    for (int i = 0; i < 1000; ++i) switch (random() % 4) {
        case 0: v.push_back(Tally::new_()); break;
        case 1: v.push_back(Tally2::new_()); break;
        case 2: v.push_back(Tally3::new_()); break;
        default: v.push_back(Tally4::new_());
    }
    for (auto _ : s) for (Tally *o : v) { DoNotOptimize(o); o->add(3); }
    items(s, 1000);
    for (Tally *o : v) o->release();
}
BENCHMARK(bedrock_message_4classes_1000objects);

BENCHMARK_MAIN();
