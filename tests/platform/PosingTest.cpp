// SPDX-License-Identifier: MIT
// Posing: posers of posers, two posers of one class, supers of instances and classes, what is added later, threads.
#include <Bedrock/core/ZPRef.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace {

// Each digit of the numbers is a class whose code was run.
#define CLASS(T, Super, code)                                 \
    struct T : Super {                                        \
        ZP_CLASS(T)                                           \
        int number() { return code(T, this); }                \
        static int kind(Class self) { return code(T, self); } \
    };                                                        \
    ZP_IMPLEMENT(T, number, classMethods(kind))
#define ONE(T, receiver) (void(receiver), 1)
#define ADDS(n, T, receiver) objc_super<T>(receiver).send<int>(selectorFor(receiver)) + n
#define TEN(T, receiver) ADDS(10, T, receiver)
#define HUNDRED(T, receiver) ADDS(100, T, receiver)
#define THOUSAND(T, receiver) ADDS(1000, T, receiver)
SEL selectorFor(id) { return "number"_sel; }
SEL selectorFor(Class) { return "kind"_sel; }

CLASS(Original, ZPObject, ONE);
CLASS(First, Original, TEN);
CLASS(OfFirst, First, HUNDRED);
CLASS(Second, Original, THOUSAND);
CLASS(Threaded, ZPObject, ONE);
CLASS(ThreadedHeir, Threaded, TEN);
CLASS(ThreadedPoser, Threaded, HUNDRED);

int number(Class cls) {
    int n = objc_msgSend<int>(ZPAdopt(objc_msgSend<ZPObject *>(cls, "new"_sel)), "number"_sel);
    EXPECT_EQ(objc_msgSend<int>(cls, "kind"_sel), n);
    return n;
}

template <int N> void add(Class cls, const char *name) {
    auto answer = +[](objc_object *, SEL) { return N; };
    class_addMethod(cls, sel_registerName(name), IMP(answer), objc_methodTypes<int>(), &objc_invokeFrame<int>, 16);
}

}  // namespace

TEST(Posing, PosersOfPosersAndTwoOfOneClass) {
    EXPECT_EQ(number(OfFirst::class_()), 111);
    class_poseAs(First::class_(), Original::class_());
    EXPECT_EQ(number(Original::class_()), 11);
    EXPECT_EQ(number(OfFirst::class_()), 111);

    class_poseAs(OfFirst::class_(), First::class_());  // the class whose place the first took stays what it is
    EXPECT_EQ(number(Original::class_()), 11);
    EXPECT_EQ(number(First::class_()), 111);
    EXPECT_EQ(number(OfFirst::class_()), 111);
    EXPECT_TRUE(class_inherits(OfFirst::class_(), Original::class_()));
    EXPECT_FALSE(class_inherits(OfFirst::class_(), nullptr));

    class_poseAs(Second::class_(), Original::class_());  // its super is what stood there, the first poser
    EXPECT_EQ(number(Original::class_()), 1011);
    EXPECT_EQ(number(First::class_()), 111);
    EXPECT_EQ(number(objc_getOrigClass("Original")), 1);  // what was declared, whoever poses
}

TEST(Posing, WhatThePoserLearnsLater) {
    Class original = objc_makeClass(ZPObject::class_(), "LearningOriginal", 0);
    Class poser = objc_makeClass(original, "LearningPoser", 0), heir = objc_makeClass(original, "LearningHeir", 0);
    add<2>(original, "number");
    ZPRef<ZPObject> object = ZPAdopt(objc_msgSend<ZPObject *>(heir, "new"_sel));
    EXPECT_FALSE(object->respondsToSelector("later"_sel));
    class_poseAs(poser, original);
    EXPECT_EQ(objc_msgSend<int>(object, "number"_sel), 2);
    add<3>(poser, "number");
    add<4>(poser, "later");
    add<5>(poser->isa, "number");
    add<6>(objc_copyClass(poser, "LearningCopy"), "later");  // of another class
    EXPECT_EQ(objc_msgSend<int>(object, "number"_sel), 3);
    EXPECT_EQ(objc_msgSend<int>(object, "later"_sel), 4);
    EXPECT_EQ(objc_msgSend<int>(heir, "number"_sel), 5);
}

TEST(Posing, WhileOtherThreadsSend) {
    std::atomic<int> wrong{0};
    std::atomic<bool> posed{false}, done{false};
    std::vector<std::thread> threads;
    for (int t = 0; t < 3; ++t)
        threads.emplace_back([&] {
            ZPRef<ThreadedHeir> heir = ZPAdopt(ThreadedHeir::new_());
            for (bool before; before = posed, !done;) {
                for (int n :
                     {objc_msgSend<int>(heir, "number"_sel), objc_msgSend<int>(ThreadedHeir::class_(), "kind"_sel)})
                    if (n != 111 && (before || n != 11)) ++wrong;
                if (!ZPAdopt(ThreadedPoser::new_())->isKindOfClass(Threaded::class_())) ++wrong;
                heir->conformsToProtocol(ZPCopying::protocol());
            }
        });
    for (int i = 0; i < 200; ++i) number(Threaded::class_());
    class_poseAs(ThreadedPoser::class_(), Threaded::class_());
    posed = true;
    for (int i = 0; i < 200; ++i) number(Threaded::class_());
    done = true;
    for (auto &t : threads) t.join();
    EXPECT_EQ(wrong, 0);
}
