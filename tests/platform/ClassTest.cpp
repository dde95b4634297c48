// SPDX-License-Identifier: MIT
// Classes: C++ fields, initialisation, categories, protocols, posing, classes made at run time, type
// strings, and what mistakes say.
#include <support/Objects.h>

namespace {

int alive;
struct Counted {
    int value = 11;
    Counted() { ++alive; }
    Counted(const Counted &other) : value(other.value) { ++alive; }
    ~Counted() { --alive; }
};

struct Holder : ZPObject {
    ZP_CLASS(Holder)
    std::vector<int> _numbers;
    Counted _counted;
    int _plain;
    alignas(16) char _wide[16];
    int total() {
        int t = _plain;
        for (int n : _numbers) t += n;
        return t;
    }
};
ZP_IMPLEMENT(Holder, total);

template <class T> struct Box : ZPObject {
    ZP_CLASS(Box)
    T _value;
    T value() { return _value; }
};
ZP_IMPLEMENT_INSTANCE(Box<double>, value);

struct Named {
    ZP_PROTOCOL(Named)
    const char *givenName();
    static id someone();
};
struct Titled {
    ZP_PROTOCOL(Titled)
    int rank(int);
};
ZP_DEFINE_PROTOCOL(Named, givenName, classMethods(someone));
ZP_DEFINE_PROTOCOL(Titled, includes(Named), rank);

struct Person : ZPObject {
    ZP_CLASS(Person)
    const char *givenName() ZP_ASKS();
};
struct PersonMethods : Person {
    const char *givenName() { return "plain"; }
    int age() { return 30; }
};
ZP_IMPLEMENT_WITH(Person, PersonMethods, adopts(Titled), version(3), givenName, age);

struct Child : Person {
    ZP_CLASS(Child)
};
ZP_IMPLEMENT(Child);

// A category replaces a method of the class's own and adds one as a free function.
struct PersonGreeting : Person {
    int age() { return 31; }
    int shout(int times) { return int(self()->givenName()[0]) * times; }
};
ZP_CATEGORY(Person, PersonGreeting, age, shout);

struct Impostor : Person {
    ZP_CLASS(Impostor)
};
struct ImpostorMethods : Impostor {
    const char *givenName() { return ZP_SUPER(Impostor, givenName)()[0] == 'p' ? "posed" : "lost"; }
};
ZP_IMPLEMENT_WITH(Impostor, ImpostorMethods, givenName);

std::atomic<int> order;
int parentAt, childAt, childRuns;
struct Parent : ZPObject {
    ZP_CLASS(Parent)
    static void initialize(Class self) {
        if (self != class_()) return;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        parentAt = ++order;
    }
};
struct Kid : Parent {
    ZP_CLASS(Kid)
    static void initialize(Class) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        childAt = ++order;
        ++childRuns;
        objc_msgSend<Class>(class_(), "class"_sel);  // a class may use itself while it initializes
    }
    int ready() { return childAt; }
};
ZP_IMPLEMENT(Parent, classMethods(initialize));
ZP_IMPLEMENT(Kid, ready, classMethods(initialize));

int posedRuns;
struct Posed : ZPObject {
    ZP_CLASS(Posed)
    int number() ZP_ASKS();
};
struct Poser : Posed {
    ZP_CLASS(Poser)
};
struct PosedMethods : Posed {
    int number() { return 1; }
    static void initialize(Class self) {
        if (self != class_()) return;
        ++posedRuns;
        class_poseAs(Poser::class_(), self);
    }
};
struct PoserMethods : Poser {
    int number() { return ZP_SUPER(Poser, number)() + 1; }
};
ZP_IMPLEMENT_WITH(Posed, PosedMethods, number, classMethods(initialize));
ZP_IMPLEMENT_WITH(Poser, PoserMethods, number);

struct Doubled : ZPObject {
    ZP_CLASS(Doubled)
    void same() {}
};
ZP_IMPLEMENT(Doubled, same, same);

struct Busy : ZPObject {
    ZP_CLASS(Busy)
};
struct BusyKid : Busy {
    ZP_CLASS(BusyKid)
};
ZP_IMPLEMENT(Busy);
ZP_IMPLEMENT(BusyKid);

int lengthOfName(objc_object *, SEL selector) { return int(std::strlen(sel_getName(selector))); }

struct Fat : Holder {
    ZP_CLASS(Fat)
    int _more;
};
ZP_IMPLEMENT(Fat);

}  // namespace

TEST(Class, FieldsWithConstructorsLiveAndDieWithTheInstance) {
    Holder *holder = Holder::new_();
    EXPECT_EQ(alive, 1);
    EXPECT_EQ(holder->_counted.value, 11);
    EXPECT_EQ(holder->_plain, 0);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(holder->_wide) % 16, 0u);
    holder->_numbers = {1, 2, 3};
    Holder *copy = ZPCopyObject(holder, 0, nullptr);
    holder->_numbers.push_back(4);
    EXPECT_EQ(alive, 2);
    EXPECT_EQ(objc_msgSend<int>(copy, "total"_sel), 6);
    EXPECT_EQ(copy->retainCount(), 1u);
    holder->release();
    copy->release();
    EXPECT_EQ(alive, 0);

    Box<double> *box = Box<double>::new_();
    box->_value = 2.5;
    EXPECT_EQ(objc_msgSend<double>(box, "value"_sel), 2.5);
    EXPECT_STREQ(box->isa->name, "Box<double>");
    box->release();
}

TEST(Class, CategoriesAndProtocols) {
    ZPRef<Person> held = ZPAdopt((Person *)Child::new_());
    Person *child = held.get();
    EXPECT_EQ(objc_msgSend<int>(child, "age"_sel), 31);
    EXPECT_EQ(objc_msgSend<int>(child, "shout:"_sel, 2), 'p' * 2);
    EXPECT_TRUE(child->conformsToProtocol(Titled::protocol()) && child->conformsToProtocol(Named::protocol()));
    EXPECT_FALSE(child->conformsToProtocol(ZPCopying::protocol()));
    EXPECT_TRUE(ZPClassObject(Child::class_())->conformsToProtocol(Named::protocol()));
    // A promise's type string comes before the implementation's own.
    EXPECT_STREQ(child->methodDescriptionForSelector("rank:"_sel)->types, "i@:i");
    EXPECT_STREQ(child->methodDescriptionForSelector("shout:"_sel)->types, "i@:i");
    EXPECT_EQ(child->methodDescriptionForSelector("unheardOf"_sel), nullptr);
    EXPECT_STREQ(ZPClassObject(Child::class_())->methodDescriptionForSelector("someone"_sel)->types, "@@:");
    EXPECT_EQ(objc_getProtocol("Named"), Named::protocol());
    EXPECT_EQ(objc_msgSend<int>(Person::class_(), "version"_sel), 3);
    EXPECT_TRUE(child->respondsToSelector("age"_sel));
    EXPECT_EQ(child->methodForSelector("unheardOf"_sel), &_objc_msgForward);
    EXPECT_TRUE(objc_msgSend<BOOL>(Person::class_(), "instancesRespondToSelector:"_sel, "age"_sel));
    EXPECT_TRUE(objc_msgSend<BOOL>(Person::class_(), "isAncestorOfObject:"_sel, id(child)));
}

TEST(Class, ProtocolObjectsAreObjects) {
    id named = Named::protocol();
    Class kind = Protocol::class_();
    EXPECT_EQ(text(ZPString::stringWithFormat("%@ %@"_zp, named, kind)), "Named Protocol");
    EXPECT_EQ(text(ZPMakeArray({named})->description()), "(Named)");
    EXPECT_TRUE(ZPSet::setWithArray(ZPMakeArray({named, id(ZPCopying::protocol())}))->containsObject(named));
    EXPECT_EQ(ZPMakeDictionary({{named, "value"_zp}})->objectForKey(named), "value"_zp);
    EXPECT_FALSE(named->isProxy() || named->isEqual("Named"_zp) || named->respondsToSelector("length"_sel));
    EXPECT_TRUE(named->respondsToSelector("conformsTo:"_sel) && named->isMemberOfClass(kind));
    EXPECT_EQ(named->copy(), named);
    EXPECT_EQ(named->performSelector("self"_sel), named);
    EXPECT_REASON("*** -[Protocol length]: selector not recognized", named->performSelector("length"_sel));
    EXPECT_REASON("*** +[Protocol alloc]: selector not recognized", ZPClassObject(kind)->performSelector("alloc"_sel));
}

TEST(Class, PosingTakesThePlaceOfTheOriginal) {
    Person *before = Child::new_();
    EXPECT_STREQ(before->givenName(), "plain");
    objc_msgSend<id>(Impostor::class_(), "poseAsClass:"_sel, Person::class_());
    Person *after = Person::new_();
    EXPECT_STREQ(before->givenName(), "posed");
    EXPECT_STREQ(after->givenName(), "posed");
    EXPECT_EQ(objc_getClass("Person"), Person::class_());
    EXPECT_STREQ(objc_getOrigClass("Person")->name, "%Person");
    EXPECT_TRUE(before->isKindOfClass(Person::class_()));
    EXPECT_EQ(objc_msgSend<int>(after, "age"_sel), 31);
    id impostor = Impostor::new_();
    Person *person = impostor;  // an instance of the impostor's own is still what its class was derived from
    EXPECT_TRUE(person->isKindOfClass(Person::class_()));
    EXPECT_TRUE(objc_msgSend<BOOL>(Person::class_(), "isAncestorOfObject:"_sel, impostor));
    EXPECT_FALSE(after->isKindOfClass(Impostor::class_()));
    EXPECT_STREQ(person->givenName(), "posed");
    person->release();
    before->release();
    after->release();
}

TEST(Class, PosingInsideTheOriginalsInitialize) {
    ZPRef<Posed> posed = ZPAdopt((Posed *)Posed::new_()), poser = ZPAdopt((Posed *)Poser::new_());
    EXPECT_EQ(posed->number(), 2);
    EXPECT_EQ(posedRuns, 1);
    EXPECT_EQ(poser->number(), 2);
}

TEST(Class, MadeAtRunTime) {
    Class cls = objc_makeClass(Holder::class_(), "RuntimeHolder", 8);
    auto total = +[](objc_object *, SEL) { return 99; };
    class_addMethod(cls, "total"_sel, reinterpret_cast<IMP>(total), objc_methodTypes<int>(), &objc_invokeFrame<int>,
                    16);
    objc_addClass(cls);
    EXPECT_EQ(objc_getClass("RuntimeHolder"), cls);
    Holder *made = objc_msgSend<id>(cls, "new"_sel);
    EXPECT_EQ(objc_msgSend<int>(made, "total"_sel), 99);
    EXPECT_EQ(made->_counted.value, 11);
    EXPECT_TRUE(made->isKindOfClass(Holder::class_()));
    made->release();
    EXPECT_EQ(alive, 0);
}

TEST(Class, InitializeRunsOnceAndSuperclassFirstUnderThreads) {
    std::atomic<int> ready{0};
    onThreads(8, [&](int) {
        ZPRef<Kid> kid = ZPAdopt(Kid::new_());
        if (objc_msgSend<int>(kid.get(), "ready"_sel) > 0) ++ready;
    });
    EXPECT_EQ(ready, 8);
    EXPECT_EQ(childRuns, 1);
    EXPECT_LT(parentAt, childAt);
}

TEST(Class, CachesAreFilledAndReplacedUnderThreads) {
    std::vector<SEL> selectors;
    for (int i = 0; i < 120; ++i)
        selectors.push_back(
            sel_registerName((std::string("busy") + std::string(std::size_t(i % 7), 'x') + std::to_string(i)).c_str()));
    auto define = [&](Class cls, int i) {
        class_addMethod(cls, selectors[std::size_t(i)], IMP(&lengthOfName), objc_methodTypes<int>(), nullptr, 0);
    };
    constexpr int first = 60;
    for (int i = 0; i < first; ++i) define(Busy::class_(), i);
    std::atomic<int> wrong{0}, known{first};
    std::thread senders([&] {
        onThreads(8, [&](int t) {
            ZPRef<Busy> object = ZPAdopt(t % 2 ? Busy::new_() : (Busy *)BusyKid::new_());
            for (int round = 0; round < 200; ++round)
                for (int i = 0, n = known; i < n; ++i) {
                    SEL s = selectors[std::size_t((i * 7 + t) % n)];
                    if (objc_msgSend<int>(object.get(), s) != int(std::strlen(sel_getName(s)))) ++wrong;
                }
        });
    });
    for (int i = first; i < int(selectors.size()); ++i) {
        define(i % 2 ? Busy::class_() : BusyKid::class_(), i % 2 ? i : i - first);  // new ones, and others overridden
        define(Busy::class_(), i);
        known = i + 1;
        std::this_thread::yield();
    }
    senders.join();
    EXPECT_EQ(wrong, 0);
}

TEST(TypeString, ComesFromTheCppType) {
    EXPECT_STREQ((objc_methodTypes<void>()), "v@:");
    EXPECT_STREQ((objc_methodTypes<BOOL, id, Class, SEL, const char *, char *>()), "c@:@#:r**");
    EXPECT_STREQ((objc_methodTypes<ZPRange, unichar, unsigned *, void *, ZPString *>()), "{_ZPRange=II}@:S^I^v@");
    EXPECT_STREQ((objc_methodTypes<float, double, long, unsigned long, bool>()), "f@:dqQC");
    EXPECT_STREQ(ZPEncode<int[3]>(), "[3i]");
    EXPECT_TRUE(objc_typesMatch("@@:I", "@@:i"));
    EXPECT_TRUE(objc_typesMatch("@@:@", "@@:^v"));
    EXPECT_FALSE(objc_typesMatch("@@:I", "@@:q"));
    EXPECT_FALSE(objc_typesMatch("@@:I", "@@:"));
    EXPECT_FALSE(objc_typesMatch("@@:", "d@:"));
}

#if ZP_CHECKED
TEST(MistakeDeathTest, WrongTypesAndClassesStopTheProcess) {
    Person *person = Person::new_();
    EXPECT_DEATH(objc_msgSend<int>(person, "shout:"_sel, 2.0),
                 "has the type \"i@:i\" and was sent with the C\\+\\+ types \"i@:d\"");
    EXPECT_DEATH(
        {
            Holder *h = id(person);
            (void)h;
        },
        "an object of class Person .* was converted to Holder");
    person->release();
}
#endif

TEST(MistakeDeathTest, MethodsRegisteredTwiceAndPosersWithFields) {
    EXPECT_DEATH(Doubled::new_()->release(), "-\\[Doubled same\\] is registered twice");
    EXPECT_DEATH(class_poseAs(Fat::class_(), Holder::class_()),
                 "class Fat cannot pose as Holder: it has fields of its own");
}
