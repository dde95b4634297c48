// SPDX-License-Identifier: MIT
// Creating, sharing and releasing small objects. The cases ending in _mt run after a thread was started.
#include "common.h"

#include <Bedrock/core/ZPAutoreleasePool.h>
#include <Bedrock/core/ZPObject.h>

#include <atomic>
#include <memory>
#include <vector>

namespace {

struct Node {
    explicit Node(long v) : value(v) {}
    virtual ~Node() = default;
    long value;
};

struct Small : ZPObject {
    ZP_CLASS(Small)
    long _value;
    Small *initWithValue(long v) ZP_ASKS(v);
};
struct SmallMethods : Small {
    Small *initWithValue(long v) {
        _value = v;
        return this;
    }
};
ZP_IMPLEMENT_WITH(Small, SmallMethods, initWithValue);

}  // namespace

static void make_shared_drop(State &s) {
    REQUIRE(std::make_shared<Node>(1)->value == 1);
    for (auto _ : s) {
        auto p = std::make_shared<Node>(1);
        DoNotOptimize(p);
    }
}
static void shared_ptr_copy_drop(State &s) {
    auto p = std::make_shared<Node>(1);
    {
        auto q = p;
        REQUIRE(p.use_count() == 2);
    }
    REQUIRE(p.use_count() == 1);
    for (auto _ : s) {
        DoNotOptimize(p);
        auto q = p;
        DoNotOptimize(q);
    }
}
static void bedrock_create_init_release(State &s) {
    Small *one = Small::alloc()->initWithValue(1);
    REQUIRE(one->_value == 1 && one->retainCount() == 1);
    one->release();
    for (auto _ : s) {
        Small *o = Small::alloc()->initWithValue(1);
        DoNotOptimize(o);
        o->release();
    }
}
static void bedrock_retain_release(State &s) {
    Small *o = Small::new_();
    o->retain();
    REQUIRE(o->retainCount() == 2);
    o->release();
    REQUIRE(o->retainCount() == 1);
    for (auto _ : s) {
        DoNotOptimize(o);
        o->retain();
        DoNotOptimize(o);
        o->release();
    }
    o->release();
}
static void bedrock_autorelease_pop(State &s) {
    // 100 objects a pool, inside an outer pool as in any program; the objects are only retained, so the
    // pool alone is measured.
    Small *o = Small::new_();
    unsigned outer = ZPPushAutoreleasePool(0), first = ZPPushAutoreleasePool(0);
    for (int i = 0; i < 100; ++i) {
        o->retain();
        o->autorelease();
    }
    REQUIRE(o->retainCount() == 101);
    ZPPopAutoreleasePool(first);
    REQUIRE(o->retainCount() == 1);
    for (auto _ : s) {
        unsigned pool = ZPPushAutoreleasePool(0);
        for (int i = 0; i < 100; ++i) {
            o->retain();
            o->autorelease();
        }
        ZPPopAutoreleasePool(pool);
    }
    items(s, 100);
    ZPPopAutoreleasePool(outer);
    o->release();
}
static void bedrock_create_autorelease_pop(State &s) {
    unsigned outer = ZPPushAutoreleasePool(0), first = ZPPushAutoreleasePool(0);
    Small *kept = Small::alloc()->initWithValue(7);
    kept->retain();
    kept->autorelease();
    REQUIRE(kept->_value == 7 && kept->retainCount() == 2);
    ZPPopAutoreleasePool(first);
    REQUIRE(kept->retainCount() == 1);
    kept->release();
    for (auto _ : s) {
        unsigned pool = ZPPushAutoreleasePool(0);
        for (int i = 0; i < 100; ++i) {
            Small *o = Small::alloc()->initWithValue(i);
            o->autorelease();
        }
        ZPPopAutoreleasePool(pool);
    }
    items(s, 100);
    ZPPopAutoreleasePool(outer);
}

BENCHMARK(make_shared_drop);
BENCHMARK(bedrock_create_init_release);
BENCHMARK(shared_ptr_copy_drop);
BENCHMARK(bedrock_retain_release);
BENCHMARK(bedrock_autorelease_pop);
BENCHMARK(bedrock_create_autorelease_pop);

#define MT(f)                      \
    static void f##_mt(State &s) { \
        startOneThread();          \
        f(s);                      \
    }                              \
    BENCHMARK(f##_mt)
MT(make_shared_drop);
MT(bedrock_create_init_release);
MT(shared_ptr_copy_drop);
MT(bedrock_retain_release);
MT(bedrock_autorelease_pop);
MT(bedrock_create_autorelease_pop);

// The same while another thread shares and drops an object of its own all the time.
static void bedrock_retain_release_beside_another_thread(State &s) {
    besideAnotherThread(s, bedrock_retain_release, [](std::atomic<bool> &stop) {
        Small *mine = Small::new_();
        while (!stop.load(std::memory_order_relaxed))
            for (int i = 0; i < 1000; ++i) {
                DoNotOptimize(mine);
                mine->retain();
                mine->release();
            }
        mine->release();
    });
}
static void shared_ptr_copy_drop_beside_another_thread(State &s) {
    besideAnotherThread(s, shared_ptr_copy_drop, [](std::atomic<bool> &stop) {
        auto mine = std::make_shared<Node>(1);
        while (!stop.load(std::memory_order_relaxed))
            for (int i = 0; i < 1000; ++i) {
                DoNotOptimize(mine);
                auto copy = mine;
                DoNotOptimize(copy);
            }
    });
}
BENCHMARK(bedrock_retain_release_beside_another_thread);
BENCHMARK(shared_ptr_copy_drop_beside_another_thread);

BENCHMARK_MAIN();
