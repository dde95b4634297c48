// SPDX-License-Identifier: MIT
// First messages: `+initialize` of classes that need each other, and everything that is entered at first use, from many
// threads at once.
#include <Bedrock/core/ZPRef.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

namespace {

struct Ranked {
    ZP_PROTOCOL(Ranked)
    int rank();
    static int kind();
};
ZP_DEFINE_PROTOCOL(Ranked, rank, classMethods(kind));

std::atomic<int> running, met;

// Each class's `+initialize` waits until that of another runs as well, and then uses the next class of the ring.
template <int N> struct Ring : ZPObject {
    ZP_CLASS(Ring)
    static inline std::atomic<int> runs;
    static void initialize(Class) {
        ++runs;
        if (++running >= 2) met = 1;
        for (int i = 0; !met && i < 500; ++i) std::this_thread::sleep_for(std::chrono::milliseconds(1));
        objc_msgSend<int>(Ring<(N + 1) % 3>::class_(), "kind"_sel);
    }
    static int kind(Class) { return N; }
    int rank() { return N; }
};

// A superclass and a class derived from it, where the superclass's `+initialize` uses the derived one.
template <int N> struct Derived : Ring<N> {
    ZP_CLASS(Derived)
    static int kind(Class self) { return objc_super<Derived>(self).template send<int>("kind"_sel) + 10; }
};

struct Plain : ZPObject {
    ZP_CLASS(Plain)
    void initialize() { ADD_FAILURE() << "an instance's method of this name was sent to a class"; }
};
ZP_IMPLEMENT(Plain, initialize);

template <int N> void useRing(std::atomic<int> &wrong) {
    if (objc_msgSend<int>(Derived<N>::class_(), "kind"_sel) != N + 10) ++wrong;
    ZPRef<ZPObject> object = ZPAdopt(Derived<N>::new_());
    if (objc_msgSend<int>(object, "rank"_sel) != N) ++wrong;
    if (!object->conformsToProtocol(Ranked::protocol())) ++wrong;
    if (object->respondsToSelector("kind"_sel)) ++wrong;
}

}  // namespace

#define RING(N)                                                                           \
    ZP_IMPLEMENT_INSTANCE(Ring<N>, rank, adopts(Ranked), classMethods(initialize, kind)); \
    ZP_IMPLEMENT_INSTANCE(Derived<N>, classMethods(kind))
RING(0);
RING(1);
RING(2);

TEST(Startup, ClassesThatNeedEachOtherInManyThreads) {
    std::atomic<int> wrong{0};
    void (*uses[])(std::atomic<int> &) = {useRing<0>, useRing<1>, useRing<2>};
    std::vector<std::thread> threads;
    for (int t = 0; t < 6; ++t)
        threads.emplace_back([&, t] {
            for (int i = 0; i < 3; ++i) uses[(t + i) % 3](wrong);
        });
    for (auto &t : threads) t.join();
    EXPECT_EQ(wrong, 0);
    EXPECT_TRUE(met);
    EXPECT_EQ(Ring<0>::runs + Ring<1>::runs + Ring<2>::runs, 6);  // each for itself and once for the derived class
}

namespace {

std::atomic<bool> usesBelow, endsAbove;
struct Above : ZPObject {
    ZP_CLASS(Above)
    static void initialize(Class self);
    static BOOL isReady(Class) { return endsAbove; }
};
struct Below : Above {
    ZP_CLASS(Below)
};
void Above::initialize(Class self) {
    if (self != class_()) return;
    objc_msgSend<BOOL>(Below::class_(), "isReady"_sel);
    objc_msgSend<BOOL>(Below::class_(), "isReady"_sel);
    usesBelow = true;
    for (int i = 0; i < 50; ++i) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    endsAbove = true;
}
ZP_IMPLEMENT(Above, classMethods(initialize, isReady));
ZP_IMPLEMENT(Below);

}  // namespace

TEST(Startup, ASubclassUsedInsideItsSuperclasssInitializeWaitsForIt) {
    std::thread first([] { objc_msgSend<BOOL>(Above::class_(), "isReady"_sel); });
    while (!usesBelow) std::this_thread::yield();
    EXPECT_TRUE(objc_msgSend<BOOL>(Below::class_(), "isReady"_sel)) << "by another thread only when both are ready";
    first.join();
}

TEST(Startup, MessagesToMetaclassesInitializeTheClass) {
    ZPAdopt(Plain::new_());
    Class meta = Plain::class_()->isa;
    EXPECT_EQ(objc_msgSend<Class>(meta, "class"_sel), meta);
}
