// SPDX-License-Identifier: MIT
// Posing: posers of posers, two posers of one class, supers of instances and classes, what is added later, threads.
#include <Bedrock/core/ZPObject.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace {

// Each digit is a class whose code was run.
struct Original : ZPObject {
    ZP_CLASS(Original)
    int number() { return 1; }
    static int kind(Class) { return 1; }
};
ZP_IMPLEMENT(Original, number, classMethods(kind));

#define POSER(T, Super, digit)                                                                             \
    struct T : Super {                                                                                     \
        ZP_CLASS(T)                                                                                        \
        int number() { return objc_super<T>(this).send<int>("number"_sel) + digit; }                       \
        static int kind(Class self) { return objc_super<T>(self).template send<int>("kind"_sel) + digit; } \
    };                                                                                                     \
    ZP_IMPLEMENT(T, number, classMethods(kind))
POSER(First, Original, 10);
POSER(OfFirst, First, 100);
POSER(Second, Original, 1000);
POSER(Heir, Original, 10000);

struct Threaded : ZPObject {
    ZP_CLASS(Threaded)
    int number() { return 1; }
    static int kind(Class) { return 1; }
};
ZP_IMPLEMENT(Threaded, number, classMethods(kind));
POSER(ThreadedHeir, Threaded, 10);
POSER(ThreadedPoser, Threaded, 100);

int number(Class cls) {
    ZPObject *object = objc_msgSend<ZPObject *>(cls, "new"_sel);
    int n = objc_msgSend<int>(object, "number"_sel);
    object->release();
    EXPECT_EQ(objc_msgSend<int>(cls, "kind"_sel), n);
    return n;
}

void add(Class cls, SEL selector, int (*implementation)(objc_object *, SEL)) {
    class_addMethod(cls, selector, IMP(implementation), objc_methodTypes<int>(), &objc_invokeFrame<int>, 16);
}

}  // namespace

TEST(Posing, PosersOfPosersAndTwoOfOneClass) {
    EXPECT_EQ(number(Heir::class_()), 10001);
    class_poseAs(First::class_(), Original::class_());
    EXPECT_EQ(number(Original::class_()), 11);
    EXPECT_EQ(number(Heir::class_()), 10011);
    EXPECT_EQ(number(OfFirst::class_()), 111);

    class_poseAs(OfFirst::class_(), First::class_());  // the class whose place the first took stays what it is
    EXPECT_EQ(number(Original::class_()), 11);
    EXPECT_EQ(number(First::class_()), 111);
    EXPECT_EQ(number(OfFirst::class_()), 111);
    EXPECT_TRUE(class_inherits(OfFirst::class_(), Original::class_()));
    EXPECT_FALSE(class_inherits(OfFirst::class_(), nullptr));

    class_poseAs(Second::class_(), Original::class_());  // its super is what stood there, the first poser
    EXPECT_EQ(number(Original::class_()), 1011);
    EXPECT_EQ(number(Heir::class_()), 11011);
    EXPECT_EQ(number(First::class_()), 111);
    EXPECT_EQ(number(objc_getOrigClass("Original")), 1);  // what was declared, whoever poses
}

TEST(Posing, WhatThePoserLearnsLater) {
    auto two = +[](objc_object *, SEL) { return 2; };
    auto three = +[](objc_object *, SEL) { return 3; };
    Class original = objc_makeClass(ZPObject::class_(), "LearningOriginal", 0);
    Class poser = objc_makeClass(original, "LearningPoser", 0), heir = objc_makeClass(original, "LearningHeir", 0);
    add(original, "number"_sel, two);
    ZPObject *object = objc_msgSend<ZPObject *>(heir, "new"_sel);
    EXPECT_FALSE(object->respondsToSelector("later"_sel));
    class_poseAs(poser, original);
    EXPECT_EQ(objc_msgSend<int>(object, "number"_sel), 2);
    add(poser, "number"_sel, three);
    add(poser, "later"_sel, three);
    add(poser->isa, "number"_sel, two);
    EXPECT_EQ(objc_msgSend<int>(object, "number"_sel), 3);
    EXPECT_EQ(objc_msgSend<int>(object, "later"_sel), 3);
    EXPECT_EQ(objc_msgSend<int>(heir, "number"_sel), 2);
    // A copy of the poser is another class.
    add(objc_copyClass(poser, "LearningCopy"), "later"_sel, two);
    EXPECT_EQ(objc_msgSend<int>(object, "later"_sel), 3);
    object->release();
}

TEST(Posing, WhileOtherThreadsSend) {
    std::atomic<int> wrong{0};
    std::atomic<bool> posed{false}, done{false};
    std::vector<std::thread> threads;
    for (int t = 0; t < 3; ++t)
        threads.emplace_back([&] {
            ZPObject *heir = ThreadedHeir::new_();
            while (!done) {
                bool before = posed;
                for (int n :
                     {objc_msgSend<int>(heir, "number"_sel), objc_msgSend<int>(ThreadedHeir::class_(), "kind"_sel)})
                    if (n != 111 && (before || n != 11)) ++wrong;
                ZPObject *poser = ThreadedPoser::new_();
                if (!poser->isKindOfClass(Threaded::class_())) ++wrong;
                poser->conformsToProtocol(ZPCopying::protocol());
                poser->release();
            }
            heir->release();
        });
    for (int i = 0; i < 200; ++i) number(Threaded::class_());
    class_poseAs(ThreadedPoser::class_(), Threaded::class_());
    posed = true;
    for (int i = 0; i < 200; ++i) number(Threaded::class_());
    done = true;
    for (auto &t : threads) t.join();
    EXPECT_EQ(wrong, 0);
}
