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
    void add(int v) ZP_TELLS(v);
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
struct Tally2Methods : Tally {
    void add(int v) { _total += v + 2; }
};
struct Tally3Methods : Tally {
    void add(int v) { _total += v + 3; }
};
struct Tally4Methods : Tally {
    void add(int v) { _total += v + 4; }
};
ZP_IMPLEMENT_WITH(Tally, TallyMethods, add);
ZP_IMPLEMENT_WITH(Tally2, Tally2Methods, add);
ZP_IMPLEMENT_WITH(Tally3, Tally3Methods, add);
ZP_IMPLEMENT_WITH(Tally4, Tally4Methods, add);

struct Shape {
    virtual ~Shape() = default;
    virtual void add(int v) { total += v + 1; }
    long total = 0;
};
struct Circle : Shape {
    void add(int v) override { total += v + 2; }
};
struct Square : Shape {
    void add(int v) override { total += v + 3; }
};
struct Disc : Square {
    void add(int v) override { total += v + 4; }
};

// The kinds of a thousand objects, and what adding 3 to each comes to when kind k adds k + 1 more.
std::vector<unsigned> kinds() {
    std::mt19937 random(12345);
    std::vector<unsigned> all(1000);
    for (unsigned &k : all) k = random() % 4;
    return all;
}
long expectedTotal() {
    long sum = 0;
    for (unsigned k : kinds()) sum += 3 + k + 1;
    return sum;
}

}  // namespace

static void cpp_virtual(State &s) {
    std::unique_ptr<Shape> o = std::make_unique<Circle>();
    Shape *p = o.get();
    p->add(3);
    REQUIRE(p->total == 5);
    for (auto _ : s) {
        DoNotOptimize(p);
        p->add(3);
    }
    DoNotOptimize(p->total);
}
BENCHMARK(cpp_virtual);

static void bedrock_message(State &s) {
    Tally *t = Tally::new_();
    t->add(3);
    REQUIRE(t->_total == 4);
    for (auto _ : s) {
        DoNotOptimize(t);
        t->add(3);
    }
    DoNotOptimize(t->_total);
    t->release();
}
BENCHMARK(bedrock_message);

static void cpp_virtual_4classes_1000objects(State &s) {
    std::vector<std::unique_ptr<Shape>> v;
    for (unsigned kind : kinds()) switch (kind) {
        case 0: v.push_back(std::make_unique<Shape>()); break;
        case 1: v.push_back(std::make_unique<Circle>()); break;
        case 2: v.push_back(std::make_unique<Square>()); break;
        default: v.push_back(std::make_unique<Disc>());
        }
    long sum = 0;
    for (auto &o : v) o->add(3), sum += o->total;
    REQUIRE(sum == expectedTotal());
    for (auto _ : s)
        for (auto &o : v) {
            DoNotOptimize(o);
            o->add(3);
        }
    items(s, 1000);
}
BENCHMARK(cpp_virtual_4classes_1000objects);

static void bedrock_message_4classes_1000objects(State &s) {
    std::vector<Tally *> v;
    for (unsigned kind : kinds()) switch (kind) {
        case 0: v.push_back(Tally::new_()); break;
        case 1: v.push_back(Tally2::new_()); break;
        case 2: v.push_back(Tally3::new_()); break;
        default: v.push_back(Tally4::new_());
        }
    long sum = 0;
    for (Tally *o : v) o->add(3), sum += o->_total;
    REQUIRE(sum == expectedTotal());
    for (auto _ : s)
        for (Tally *o : v) {
            DoNotOptimize(o);
            o->add(3);
        }
    items(s, 1000);
    for (Tally *o : v) o->release();
}
BENCHMARK(bedrock_message_4classes_1000objects);

BENCHMARK_MAIN();
