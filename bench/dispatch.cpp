// SPDX-License-Identifier: MIT
// A message beside a virtual call.
#include "common.h"

#include <Bedrock/core/ZPAllocation.h>
#include <Bedrock/core/ZPObject.h>

#include <memory>
#include <random>
#include <utility>
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

// Thousands of classes that one call meets, each with code of its own, in an order that cannot be foreseen.
constexpr int manyClasses = 3000;
template <int I> struct Nth : Shape {
    void add(int v) override { total += v + I; }
};
template <int I> void addNth(objc_object *self, SEL, int v) { reinterpret_cast<Tally *>(self)->_total += v + I; }
template <int I> Tally *makeNth() {
    char name[20];
    std::snprintf(name, sizeof name, "Tally_%d", I);
    Class cls = objc_getClass(name);
    if (!cls) {
        cls = objc_makeClass(Tally::class_(), name, 0);
        class_addMethod(cls, "add:"_sel, reinterpret_cast<IMP>(&addNth<I>), "v@:i", nullptr, 0);
        objc_addClass(cls);
    }
    return ZPAllocateObject(cls, 0, nullptr);
}
template <class T> std::vector<T> inAnyOrder(const std::vector<T> &made) {
    std::mt19937 random(1);
    std::vector<T> all(20000);
    for (T &one : all) one = made[random() % made.size()];
    return all;
}
template <class T> void addToEach(State &s, const std::vector<T> &all) {
    for (auto _ : s)
        for (T one : all) one->add(3);
    items(s, std::int64_t(all.size()));
}

// Answers some messages itself and passes the others on.
struct Agent : ZPObject {
    ZP_CLASS(Agent)
    int forwarded;
};
struct AgentMethods : Agent {
    void forward(SEL, objc_frame *) { ++forwarded; }
};
ZP_IMPLEMENT_WITH(Agent, AgentMethods, named(forward, "forward::"));

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

static void cpp_virtual_3000classes(State &s) {
    std::vector<Shape *> made;
    [&]<int... I>(std::integer_sequence<int, I...>) { (made.push_back(new Nth<I>), ...); }
    (std::make_integer_sequence<int, manyClasses>());
    addToEach(s, inAnyOrder(made));
    for (Shape *one : made) delete one;
}
BENCHMARK(cpp_virtual_3000classes);

static void bedrock_message_3000classes(State &s) {
    std::vector<Tally *> made;
    [&]<int... I>(std::integer_sequence<int, I...>) { (made.push_back(makeNth<I>()), ...); }
    (std::make_integer_sequence<int, manyClasses>());
    addToEach(s, inAnyOrder(made));
    for (Tally *one : made) one->release();
}
BENCHMARK(bedrock_message_3000classes);

static void bedrock_forward(State &s) {
    Agent *agent = Agent::new_();
    for (auto _ : s) objc_msgSend(agent, "nobodyImplementsThis"_sel);
    REQUIRE(agent->forwarded > 0);
    agent->release();
}
BENCHMARK(bedrock_forward);

static void bedrock_responds_not(State &s) {
    Tally *t = Tally::new_();
    for (auto _ : s) {
        BOOL responds = t->respondsToSelector("nobodyImplementsThis"_sel);
        DoNotOptimize(responds);
    }
    t->release();
}
BENCHMARK(bedrock_responds_not);

// Beside a thread that sends what its object forwards, and asks what it does not implement.
static void forwardAndAsk(std::atomic<bool> &stop) {
    Agent *agent = Agent::new_();
    while (!stop.load(std::memory_order_relaxed))
        for (int i = 0; i < 1000; ++i) {
            objc_msgSend(agent, "nobodyImplementsThis"_sel);
            agent->respondsToSelector("nobodyImplementsThis"_sel);
        }
    agent->release();
}
static void bedrock_forward_beside_another_thread(State &s) { besideAnotherThread(s, bedrock_forward, forwardAndAsk); }
static void bedrock_responds_not_beside_another_thread(State &s) {
    besideAnotherThread(s, bedrock_responds_not, forwardAndAsk);
}
BENCHMARK(bedrock_forward_beside_another_thread);
BENCHMARK(bedrock_responds_not_beside_another_thread);

BENCHMARK_MAIN();
