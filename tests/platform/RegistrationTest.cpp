// SPDX-License-Identifier: MIT
// What classes list, and what is found of it: against a model while methods come and go, in lists of any length, in
// class methods, in made classes, and by several threads.
#include <support/Objects.h>

namespace {

// ---- a list that no macro counts by hand ----

#define TEN(M, n) M(n##0) M(n##1) M(n##2) M(n##3) M(n##4) M(n##5) M(n##6) M(n##7) M(n##8) M(n##9)
#define NAMES(n) m##n##0, m##n##1, m##n##2, m##n##3, m##n##4, m##n##5, m##n##6, m##n##7, m##n##8, m##n##9
#define METHOD(n) \
    int m##n() { return 1##n; }
#define HUNDRED(M) TEN(M, 0) TEN(M, 1) TEN(M, 2) TEN(M, 3) TEN(M, 4) TEN(M, 5) TEN(M, 6) TEN(M, 7) TEN(M, 8) TEN(M, 9)
#define FORTY(M) TEN(M, 10) TEN(M, 11) TEN(M, 12) TEN(M, 13)
struct Long : ZPObject {
    ZP_CLASS(Long)
    HUNDRED(METHOD)
    FORTY(METHOD)
};
ZP_IMPLEMENT(Long, NAMES(0), NAMES(1), NAMES(2), NAMES(3), NAMES(4), NAMES(5), NAMES(6), NAMES(7), NAMES(8), NAMES(9),
             NAMES(10), NAMES(11), NAMES(12), NAMES(13));

// ---- class methods, with and without the class, and made classes ----

struct Bird : ZPObject {
    ZP_CLASS(Bird)
    static int census() ZP_CLASS_ASKS();
    static int legs() ZP_CLASS_ASKS();
    static ZPString *kind() ZP_CLASS_ASKS();
};
struct BirdMethods : Bird {
    static int census() { return 3; }
    static int legs(Class) { return 2; }
    static ZPString *kind(Class self) { return ZPStringFromClass(self); }
};
ZP_IMPLEMENT_WITH(Bird, BirdMethods, classMethods(census, legs, kind));
struct Ostrich : Bird {
    ZP_CLASS(Ostrich)
};
struct OstrichMethods : Ostrich {
    static int census(Class self) { return 10 * objc_super<Ostrich>(self).send<int>("census"_sel); }
    static ZPString *kind(Class self) {
        return objc_super<Ostrich>(self).send<ZPString *>("kind"_sel)->stringByAppendingString("!"_zp);
    }
};
ZP_IMPLEMENT_WITH(Ostrich, OstrichMethods, classMethods(census, kind));

struct X;  // names that templates like to use themselves
struct XCode : ZPObject {
    int _a = 1;
    id initWith_and(int a, int b) {
        _a = a + b;
        return this;
    }
    int a() { return _a; }
    static int twice(int a) { return 2 * a; }
};
ZP_MAKE_CLASS(X, XCode, initWith_and, a, classMethods(twice));
struct R;
struct RCode : X {
    int a() { return objc_super<R>(this).send<int>("a"_sel) + 100; }
};
ZP_MAKE_CLASS(R, RCode, a);

// ---- classes of the run time ----

template <int N> int answer(objc_object *, SEL) { return N; }
const IMP answers[] = {IMP(&answer<0>), IMP(&answer<1>), IMP(&answer<2>), IMP(&answer<3>), IMP(&answer<4>)};

struct Root : ZPObject {
    ZP_CLASS(Root)
    void forward(SEL, objc_frame *frame) {
        int none = -1;
        std::memcpy(frame->result, &none, sizeof none);
    }
};
ZP_IMPLEMENT(Root, named(forward, "forward::"));

Class makeClass(Class superclass, const std::string &name) {
    Class cls = objc_makeClass(superclass, name.c_str(), 0);
    objc_addClass(cls);
    return cls;
}
void define(Class cls, SEL selector, unsigned which) {
    class_addMethod(cls, selector, answers[which], objc_methodTypes<int>(), nullptr, 0);
}

}  // namespace

TEST(Registration, ListsOfAnyLength) {
    ZPRef<Long> all = ZPAdopt(Long::new_());
    for (int i = 0; i < 140; ++i) {
        std::string name = "m" + std::to_string(i / 10) + std::to_string(i % 10);
        EXPECT_EQ(objc_msgSend<int>(all, sel_registerName(name.c_str())), std::stoi("1" + name.substr(1)));
    }
}

TEST(Registration, ClassMethodsAndMadeClasses) {
    EXPECT_EQ(Bird::census() + Bird::legs(), 5);
    EXPECT_EQ(Ostrich::census() + Ostrich::legs(), 5);  // a front's static member sends to the class that declares it
    Class ostrich = Ostrich::class_();
    EXPECT_EQ(objc_msgSend<int>(ostrich, "census"_sel) + objc_msgSend<int>(ostrich, "legs"_sel), 32);
    EXPECT_EQ(text(Bird::kind()) + text(objc_msgSend<ZPString *>(ostrich, "kind"_sel)), "BirdOstrich!");
    ZPRef<X> x = ZPAdopt(X::alloc()->initWith_and(2, 3)), r = ZPAdopt((X *)R::alloc()->initWith_and(2, 3));
    EXPECT_EQ(x->a() * 1000 + r->a(), 5105);
    EXPECT_EQ(X::twice(4), 8);
    EXPECT_EQ(ZPClassObject(R::class_())->superclass(), X::class_());
}

TEST(Registration, WhatIsFoundIsWhatTheModelHas) {
    struct Made {
        Class cls;
        int above;
        std::map<SEL, unsigned> methods;
        id instance;
    };
    std::vector<Made> made{{makeClass(Root::class_(), "Model0"), -1, {}, nullptr}};
    std::vector<SEL> selectors;
    for (int i = 0; i < 40; ++i) selectors.push_back(sel_registerName(("model" + std::to_string(i)).c_str()));
    std::mt19937 random(3);
    for (int step = 0; step < 60000; ++step) {
        std::size_t at = random() % made.size();
        SEL selector = selectors[random() % selectors.size()];
        int wanted = -1;
        for (int c = int(at); c >= 0; c = made[std::size_t(c)].above)
            if (auto found = made[std::size_t(c)].methods.find(selector); found != made[std::size_t(c)].methods.end()) {
                wanted = int(found->second);
                break;
            }
        if (!made[at].instance) made[at].instance = ZPClassObject(made[at].cls)->performSelector("new"_sel);
        unsigned what = random() % 1000;
        if (what < 4) {
            define(made[at].cls, selector, what);
            made[at].methods[selector] = what;
        } else if (what < 6 && made.size() < 40) {
            made.push_back({makeClass(made[at].cls, "Model" + std::to_string(made.size())), int(at), {}, nullptr});
        } else if (what < 500) {
            ASSERT_EQ(made[at].instance->respondsToSelector(selector), BOOL(wanted >= 0)) << step;
        } else {
            ASSERT_EQ(objc_msgSend<int>(made[at].instance, selector), wanted) << step;
        }
    }
    for (Made &one : made) one.instance->release();
}

TEST(Registration, MethodsComeWhileOthersFindNone) {
    Class above = makeClass(Root::class_(), "Above"), below = makeClass(above, "Below");
    constexpr int count = 200;
    std::vector<SEL> selectors;
    for (int i = 0; i < count; ++i) selectors.push_back(sel_registerName(("late" + std::to_string(i)).c_str()));
    std::atomic<int> known{0};
    std::atomic<bool> wrong{false};
    onThreads(4, [&](int t) {
        if (t == 0) {
            for (int i = 0; i < count; ++i) {
                define(i % 2 ? above : below, selectors[std::size_t(i)], unsigned(i % 5));
                known.store(i + 1, std::memory_order_release);
            }
            return;
        }
        ZPRef<ZPObject> object = ZPAdopt<ZPObject>(ZPClassObject(below)->performSelector("new"_sel));
        for (int n = 0; n < count;) {
            n = known.load(std::memory_order_acquire);
            for (int i = 0; i < count; ++i) {
                BOOL responds = object->respondsToSelector(selectors[std::size_t(i)]);
                int said = objc_msgSend<int>(object.get(), selectors[std::size_t(i)]);
                // What was there before is found; what came meanwhile may be.
                if (i < n ? !responds || said != i % 5 : said != -1 && said != i % 5) wrong = true;
            }
        }
    });
    EXPECT_FALSE(wrong);
}
