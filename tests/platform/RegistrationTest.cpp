// SPDX-License-Identifier: MIT
// What lists of classes may say; and classes, methods and categories that come at any time, against maps.
#include <support/Objects.h>

#include <cstdarg>
#include <stdexcept>

namespace {

struct GaugeCode : ZPObject {
    int _value;
    GaugeCode *initWithValue(int value) { return _value = value, this; }
    int sum_and(int a, int b) const { return _value + a + b; }
    void setValue(int value) noexcept { _value = value; }
    int first(int a, int, int) { return a; }
    int last(int n, std::va_list rest) {
        while (n-- > 1) (void)va_arg(rest, int);
        return va_arg(rest, int);
    }
    static const char *name(Class self) { return self->name; }
};
ZP_MAKE_CLASS(Gauge, GaugeCode, initWithValue, sum_and, setValue, named(first, "first:::"), variadic(last),
              adopts(ZPCopying), version(4), classMethods(name));

// Initialisers of each form.
struct Coarse : Gauge {
    ZP_CLASS(Coarse)
};
struct CoarseMethods : Coarse {
    int sum_and(int a, int b) { return ZP_SUPER(Coarse, sum_and)(a, b) * 10; }
    id init() { return self()->initWithValue(2); }
};
ZP_IMPLEMENT_WITH(Coarse, CoarseMethods, sum_and, init);
struct Coarser : Coarse {
    ZP_CLASS(Coarser)
    Coarser *init() noexcept { return ZP_SUPER(Coarser, init)(); }
};
ZP_IMPLEMENT(Coarser, init);

#define TEN(M, p) M(p##0) M(p##1) M(p##2) M(p##3) M(p##4) M(p##5) M(p##6) M(p##7) M(p##8) M(p##9)
#define HUNDRED(M, p) \
    TEN(M, p##0)      \
    TEN(M, p##1) TEN(M, p##2) TEN(M, p##3) TEN(M, p##4) TEN(M, p##5) TEN(M, p##6) TEN(M, p##7) TEN(M, p##8) TEN(M, p##9)
#define DEFINE(name) \
    int name() { return std::atoi(&#name[1]); }
#define LIST(name) name,
struct Long : ZPObject {
    ZP_CLASS(Long)
    HUNDRED(DEFINE, m1) HUNDRED(DEFINE, m2) int _odd_name(int a, int b) ZP_ASKS(a, b);
    int plain(int a, int b) { return a - b; }
};
ZP_IMPLEMENT(Long, HUNDRED(LIST, m1) HUNDRED(LIST, m2) named(plain, "_odd:name:"));

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

struct Field {
    static inline int alive, countdown = 100;
    Field() {
        if (!--countdown) throw std::runtime_error("no more");
        ++alive;
    }
    ~Field() { --alive; }
};
struct Thrower : ZPObject {
    ZP_CLASS(Thrower)
    Field _first, _second;
};
ZP_IMPLEMENT(Thrower);

}  // namespace

TEST(Registration, FrontsMadeOfCode) {
    ZPRef<Gauge> gauge = ZPAdopt(Gauge::alloc()->initWithValue(4)), coarse = ZPAdopt<Gauge>(Coarser::new_());
    EXPECT_EQ(gauge->sum_and(1, 2), 7);
    EXPECT_EQ(coarse->sum_and(1, 1), 40);
    gauge->setValue(8);
    EXPECT_EQ(gauge->sum_and(0, 0), 8);
    EXPECT_STREQ(Gauge::name(), "Gauge");
    EXPECT_EQ(objc_msgSend<int>(coarse, "first:::"_sel, 1, 2, 3), 1);
    EXPECT_EQ((objc_sendVariadic<int, int>::send(coarse, "last:"_sel, 3, 1, 2, 3)), 3);
    EXPECT_TRUE(coarse->conformsToProtocol(ZPCopying::protocol()));
    EXPECT_EQ(Gauge::class_()->version, 4);
}

TEST(Registration, LongListsOddNamesAndFieldsThatThrow) {
    ZPRef<Long> list = ZPAdopt(Long::new_());
    for (int i = 100; i < 300; ++i)
        EXPECT_EQ(objc_msgSend<int>(list, sel_registerName(("m" + std::to_string(i)).c_str())), i);
    EXPECT_EQ(list->_odd_name(5, 3), 2);

    ZPRef<Thrower> thrower = ZPAdopt(Thrower::new_());
    Field::countdown = 2;  // the second field's constructor
    EXPECT_THROW(Thrower::alloc(), std::runtime_error);
    EXPECT_EQ(Field::alive, 2);
    thrower = nullptr;
    EXPECT_EQ(Field::alive, 0);
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

namespace {

template <int... N> std::vector<IMP> answers(std::integer_sequence<int, N...>) {
    return {IMP(+[](objc_object *, SEL) { return N; })...};
}
const std::vector<IMP> implementations = answers(std::make_integer_sequence<int, 16>{});
void answerMinusOne(objc_object *, SEL, SEL, objc_frame *frame) { *static_cast<int *>(frame->result) = -1; }

struct Modelled {
    Class cls;
    int super;
    std::map<SEL, int> methods[2];  // of instances, of the class
    ZPRef<ZPObject> object;
};

std::map<SEL, int> added[2];  // what the category that is being loaded has
void listAdded(objc_lister &lister) {
    for (int ofClass : {0, 1})
        for (auto [selector, n] : added[ofClass])
            objc_enterMethod(lister, sel_getName(selector), objc_listsSelector | unsigned(ofClass),
                             "i@:", implementations[unsigned(n)], nullptr);
}

}  // namespace

TEST(Registration, RandomChangesAgreeWithAModel) {
    std::mt19937 random(7);
    auto below = [&](std::size_t n) { return unsigned(random() % n); };
    std::vector<SEL> selectors;
    for (int i = 0; i < 700; ++i) selectors.push_back(sel_registerName(("model" + std::to_string(i)).c_str()));
    std::vector<Modelled> classes;
    classes.push_back({objc_makeClass(ZPObject::class_(), "Model0", 0), -1, {}, {}});
    for (Class cls : {classes[0].cls, classes[0].cls->isa})
        class_addMethod(cls, "forward::"_sel, IMP(&answerMinusOne), "v@::^v", nullptr, 32);
    auto expected = [&](int n, bool ofClass, SEL selector) {
        for (; n >= 0; n = classes[unsigned(n)].super)
            if (auto &own = classes[unsigned(n)].methods[ofClass]; own.count(selector)) return own[selector];
        return -1;
    };
    for (int step = 0; step < 60000; ++step) {
        unsigned n = below(classes.size()), kind = below(16), operation = below(1000);
        Modelled &model = classes[n];
        bool ofClass = below(3) == 0;
        SEL selector = selectors[below(selectors.size())];
        if (operation < 5) {
            std::string name = "Model" + std::to_string(classes.size());
            Modelled made{nullptr, int(n), {}, {}};
            if (n && operation == 0) {
                made = model;
                made.object = nullptr;
                made.cls = objc_copyClass(model.cls, name.c_str());
            } else made.cls = objc_makeClass(model.cls, name.c_str(), 0);
            if (classes.size() < 60) classes.push_back(made);
        } else if (operation < 40) {
            class_addMethod(ofClass ? model.cls + 1 : model.cls, selector, implementations[kind], "i@:", nullptr, 16);
            model.methods[ofClass][selector] = int(kind);
        } else if (operation < 44) {
            for (auto &side : added) side = {{selector, kind}, {selectors[below(selectors.size())], below(16)}};
            auto **category = new const objc_registration *(new objc_registration{"Added", model.cls, &listAdded});
            class_getInstanceMethod(model.cls, selector);  // realized: the category is entered at once
            objc_loadLibrary(*new objc_library{nullptr, nullptr, category, category + 1, nullptr});
            for (int side : {0, 1})
                for (auto [s, k] : added[side]) model.methods[side][s] = k;
        } else {
            if (!model.object) model.object = ZPAdopt(objc_msgSend<ZPObject *>(model.cls, "new"_sel));
            ZPObject *receiver = ofClass ? ZPClassObject(model.cls) : model.object.get();
            int wanted = expected(int(n), ofClass, selector);
            if (operation < 400) ASSERT_EQ(receiver->respondsToSelector(selector), wanted >= 0) << step;
            else ASSERT_EQ(objc_msgSend<int>(receiver, selector), wanted) << step;
            if (model.super < 0) continue;
            Class super = classes[unsigned(model.super)].cls + ofClass;
            ASSERT_EQ(objc_msgSendSuper<int>(receiver, super, selector), expected(model.super, ofClass, selector));
        }
    }
}

TEST(Registration, MethodsComeWhileOthersFindNone) {
    Class above = objc_makeClass(ZPObject::class_(), "Above", 0), below = objc_makeClass(above, "Below", 0);
    class_addMethod(above, "forward::"_sel, IMP(&answerMinusOne), "v@::^v", nullptr, 32);
    constexpr int count = 200;
    std::vector<SEL> selectors;
    for (int i = 0; i < count; ++i) selectors.push_back(sel_registerName(("late" + std::to_string(i)).c_str()));
    std::atomic<int> known{0};
    std::atomic<bool> wrong{false};
    onThreads(4, [&](int t) {
        if (t == 0) {
            for (int i = 0; i < count; ++i) {
                class_addMethod(i % 2 ? above : below, selectors[std::size_t(i)], implementations[unsigned(i % 5)],
                                "i@:", nullptr, 16);
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
