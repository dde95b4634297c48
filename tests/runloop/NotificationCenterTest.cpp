// SPDX-License-Identifier: MIT
// Notifications and their centers.
#include <support/Objects.h>

ZP_IMPLEMENT(Doer, act, dealloc);

namespace {

std::vector<int> calls;  // who was called, in order

struct Listener : ZPObject {
    ZP_CLASS(Listener)
    int _number;
    std::function<void(ZPNotification *)> _does;

    static ZPRef<Listener> with(int number, std::function<void(ZPNotification *)> does = {}) {
        ZPRef<Listener> l = ZPAdopt(Listener::new_());
        l->_number = number;
        l->_does = does;
        return l;
    }
    void hear(ZPNotification *note) {
        calls.push_back(_number);
        if (_does) _does(note);
    }
    void forward(SEL selector, objc_frame *) { calls.push_back(selector == "neverDefined:"_sel ? -_number : 0); }
};
ZP_IMPLEMENT(Listener, hear, named(forward, "forward::"));

/// A class whose first message is a notification.
struct Untouched : ZPObject {
    ZP_CLASS(Untouched)
    static inline int _ready = 0;
    static void initialize(Class) { _ready = 100; }
    static void hear(Class, ZPNotification *) { calls.push_back(_ready); }
};
ZP_IMPLEMENT(Untouched, classMethods(initialize, hear));

const SEL hear = "hear:"_sel;
using Calls = std::vector<int>;

struct Center : testing::Test {
    ZPRef<ZPNotificationCenter> center = ZPAdopt(ZPNotificationCenter::new_());
    ZPString *a = "a"_zp, *b = "b"_zp;

    Calls post(ZPString *name, id object = nullptr) {
        calls.clear();
        center->postNotificationName_object(name, object);
        return calls;
    }
    void add(const ZPRef<Listener> &l, ZPString *name, id object = nullptr) {
        center->addObserver_selector_name_object(l.get(), hear, name, object);
    }
};

struct OtherCenter : ZPNotificationCenter {
    ZP_CLASS(OtherCenter)
};
ZP_IMPLEMENT(OtherCenter);

}  // namespace

TEST(Notification, IsAValue) {
    ZPDictionary *info = ZPDictionary::dictionaryWithObject_forKey("v"_zp, "k"_zp);
    ZPNotification *n = ZPNotification::notificationWithName_object_userInfo("name"_zp, "o"_zp, info);
    ZPNotification *bare = ZPNotification::notificationWithName_object("name"_zp, "o"_zp);
    EXPECT_FALSE(
        bare->isEqual(ZPNotification::notificationWithName_object("name"_zp, "o"_zp)));  // no information to compare
    std::string t = described(n);
    EXPECT_TRUE(t.starts_with("ZPConcreteNotification ")) << t;
    EXPECT_HAS(t, " {name = name; object = o; userInfo = {");
    EXPECT_TRUE(described(ZPNotification::notificationWithName_object("x"_zp, nullptr)).ends_with(" {name = x}"));
    EXPECT_REASON("*** -[ZPConcreteNotification init]: should never be used", n->init());
}

TEST_F(Center, CallsThoseOfOneObjectFirstAndOfANameLast) {
    auto any = Listener::with(1), named = Listener::with(2), sender = Listener::with(3), both = Listener::with(4);
    id from = ZPObject::new_()->autorelease();
    add(named, a);
    add(both, a, from);
    add(sender, nullptr, from);
    add(any, nullptr);
    center->removeObserver(nullptr);
    center->addObserver_selector_name_object(nullptr, hear, a, nullptr);
    EXPECT_EQ(post(a, from), (Calls{3, 1, 2, 4}));
}

TEST_F(Center, HandsOverTheNotification) {
    ZPDictionary *info = ZPDictionary::dictionaryWithObject_forKey("v"_zp, "k"_zp);
    ZPNotification *given = ZPNotification::notificationWithName_object_userInfo(a, b, info), *seen = nullptr;
    bool made = false;
    auto l = Listener::with(1, [&](ZPNotification *n) {
        seen = n;
        made = n && n->name()->isEqualToString(a) && n->object() == b && n->userInfo() == info;
    });
    add(l, nullptr);
    center->postNotification(given);
    EXPECT_EQ(seen, given);
    center->postNotificationName_object_userInfo(a, b, info);
    EXPECT_TRUE(made);
    center->postNotificationName_object(nullptr, b);
    EXPECT_EQ(seen, nullptr);
    // What the observer has no method for is forwarded; a class can observe too.
    center->addObserver_selector_name_object(l.get(), "neverDefined:"_sel, b, nullptr);
    EXPECT_EQ(post(b), (Calls{1, -1}));
    center->addObserver_selector_name_object(id(Untouched::class_()), hear, "first"_zp, nullptr);
    EXPECT_EQ(post("first"_zp), (Calls{1, 100}));  // the class has had its `+initialize`
}

TEST_F(Center, ChangesDuringADelivery) {
    ZPRef<Listener> second, added = Listener::with(3);
    auto first = Listener::with(1, [&](ZPNotification *) {
        if (calls.size() > 1) return;
        add(added, a);
        center->removeObserver(second.get());
    });
    second = Listener::with(2);
    add(first, a);
    add(second, a);
    EXPECT_EQ(post(a), (Calls{1, 2}));
    EXPECT_EQ(post(a), (Calls{1, 3}));
    // A post from inside a delivery ends before it.
    auto nested = Listener::with(9, [&](ZPNotification *) { center->postNotificationName_object(b, nullptr); });
    add(nested, "c"_zp);
    add(second, "c"_zp);
    add(added, b);
    EXPECT_EQ(post("c"_zp), (Calls{9, 3, 2}));
}

TEST_F(Center, EveryObserverIsCalledBeforeTheFirstExceptionGoesOn) {
    auto raising = [&](int n) {
        return Listener::with(n, [n](ZPNotification *) { ZPException::raise_format("Trouble"_zp, "%d"_zp, n); });
    };
    auto one = raising(1), two = Listener::with(2), three = raising(3),
         four = Listener::with(4, [](ZPNotification *) { throw 5; });
    for (auto &each : {one, two, three, four}) add(each, a);
    for (int round = 0; round < 2; ++round) {
        calls.clear();
        EXPECT_REASON("1", center->postNotificationName_object(a, nullptr));
        EXPECT_EQ(calls, (Calls{1, 2, 3, 4}));
    }
    center->removeObserver(one.get());
    center->removeObserver(three.get());
    EXPECT_THROW(center->postNotificationName_object(a, nullptr), int);
}

TEST_F(Center, RemovalsLeaveMarksUntilThereAreTooMany) {
    std::vector<ZPRef<Listener>> all;
    for (int i = 0; i < 30; ++i) add(all.emplace_back(Listener::with(i)), a);
    for (int i = 0; i < 26; ++i) center->removeObserver(all[i].get());
    EXPECT_EQ(post(a), (Calls{26, 27, 28, 29}));
    add(all[5], a);
    EXPECT_EQ(post(a), (Calls{29, 28, 27, 26, 5})) << "the order of the compacted records";
    std::string t = described(center.get());
    EXPECT_HAS(t, "{count = 5; max = 64; size = ");
    EXPECT_HAS(t, "\t{name = a; object = <0>; observer = ");
    EXPECT_TRUE(t.ends_with("SEL = hear:;});}")) << t;
}

TEST_F(Center, AgreesWithAPlainList) {
    struct Entry {
        int who;
        unsigned name;  // 0: any
        ZPObject *object;
    };
    std::vector<Entry> model;
    std::vector<ZPRef<Listener>> all;
    std::vector<ZPObject *> objects{nullptr};
    for (int i = 0; i < 20; ++i) all.push_back(Listener::with(i));
    for (int i = 0; i < 4; ++i) objects.push_back((ZPObject *)ZPObject::new_()->autorelease().pointer());
    std::mt19937 random(7);
    for (int step = 0; step < 4000; ++step) {
        unsigned who = random() % 20, number = random() % 31;
        ZPString *name = number ? ZPString::stringWithFormat("n%d"_zp, number) : nullptr;
        ZPObject *object = objects[random() % objects.size()];
        unsigned act = random() % 4;
        if (act == 0) {
            center->removeObserver_name_object(all[who].get(), name, object);
            std::erase_if(model, [&](const Entry &e) {
                return e.who == int(who) && (!name || e.name == number) && (!object || e.object == object);
            });
        } else if (act == 1) {
            Calls wanted, got = post(name, object);
            for (auto &e : model)
                if ((!e.name || e.name == number) && (!e.object || e.object == object)) wanted.push_back(e.who);
            std::sort(wanted.begin(), wanted.end());
            std::sort(got.begin(), got.end());
            ASSERT_EQ(got, wanted);
            ASSERT_EQ(center->_registry_count, model.size());
            ASSERT_LE(center->_registry_count * 3, center->_hashtable_count);
        } else {
            add(all[who], name, object);
            model.push_back({int(who), number, object});
        }
    }
}

TEST(DefaultCenter, OneForEachClass) {
    ZPRef<ZPNotificationCenter> center = ZPNotificationCenter::defaultCenter(),
                                mine = ZPAdopt(ZPNotificationCenter::new_());
    auto others = [] { return objc_msgSend<id>(id(OtherCenter::class_()), "defaultCenter"_sel); };
    auto set = ZPNotificationCenter::setDefaultCenter_forClass;
    id other = others();
    EXPECT_TRUE(other->isKindOfClass(OtherCenter::class_()));
    EXPECT_EQ(others(), other);
    EXPECT_EQ(((ZPNotificationCenter *)other.pointer())->_registry_count, 1u);  // it watches bundles
    {
        ZPAutoreleasePoolScope reader;
        set(mine.get(), OtherCenter::class_());
        EXPECT_EQ(others(), mine.get());
        set(nullptr, OtherCenter::class_());
        EXPECT_GT(mine->retainCount(), 1u) << "who got it has it to the end of the pool";
    }
    EXPECT_EQ(mine->retainCount(), 1u);
    set(mine.get(), ZPNotificationCenter::class_());
    {
        ZPAutoreleasePoolScope reader;
        EXPECT_EQ(ZPNotificationCenter::defaultCenter(), mine.get());
    }
    set(center.get(), ZPNotificationCenter::class_());
    EXPECT_EQ(mine->retainCount(), 1u);
    EXPECT_REASON("*** +[ZPNotificationCenter setDefaultCenter:forClass:]: class parameter not the "
                  "ZPNotificationCenter class or subclass",
                  set(center.get(), ZPString::class_()));
}

TEST(ConcurrentCenter, TheDefaultIsExchangedMeanwhile) {
    ZPRef<ZPNotificationCenter> first = ZPNotificationCenter::defaultCenter();
    Class classes[] = {ZPNotificationCenter::class_(), OtherCenter::class_()};
    std::atomic<int> left{300};
    onThreads(4, [&](int t) {
        while (left > 0) {
            ZPAutoreleasePoolScope pool;
            if (t == 0) {
                --left;
                for (Class cls : classes)
                    ZPNotificationCenter::setDefaultCenter_forClass(
                        ZPAdopt((ZPNotificationCenter *)ZPNotificationCenter::new_()).get(), cls);
            } else
                for (Class cls : classes) {
                    ZPNotificationCenter *center = objc_msgSend<ZPNotificationCenter *>(cls, "defaultCenter"_sel);
                    std::this_thread::yield();
                    center->postNotificationName_object("exchanged"_zp, nullptr);
                }
        }
    });
    ZPNotificationCenter::setDefaultCenter_forClass(first.get(), classes[0]);
    ZPNotificationCenter::setDefaultCenter_forClass(nullptr, classes[1]);
}

TEST(ConcurrentCenter, ObserversRaiseAndComeAndGoInsidePosts) {
    ZPRef<ZPNotificationCenter> center = ZPAdopt(ZPNotificationCenter::new_());
    constexpr int posters = 8, posts = 40, visitors = 20;  // more than a post keeps without memory of its own
    std::atomic<int> heard[visitors + 1] = {}, raised{0};
    ZPRef<Doer> doers[visitors + 1];
    auto listen = [&](int i, ZPString *name) {
        center->addObserver_selector_name_object(doers[i].get(), "act:"_sel, name, nullptr);
    };
    for (int i = 0; i < visitors; ++i) {
        // Comes and goes while it is called, posts from inside, and raises now and then.
        doers[i] = Doer::with([&, i](id note) {
            int n = ++heard[i];
            if (note.unchecked<ZPNotification>()->object()) return;
            ZPString *own = ZPString::stringWithFormat("own %d %d"_zp, i, n);
            listen(i, own);
            center->postNotificationName_object(own, doers[i].get());
            center->removeObserver_name_object(doers[i].get(), own, nullptr);
            if (n % 3 == 0) ZPException::raise_format("Trouble"_zp, "%@"_zp, own);
        });
        listen(i, "tick"_zp);
    }
    doers[visitors] = Doer::with([&](id) { ++heard[visitors]; });
    listen(visitors, "tick"_zp);
    onThreads(posters, [&](int) {
        for (int i = 0; i < posts; ++i) {
            ZPAutoreleasePoolScope inner;
            try {
                center->postNotificationName_object("tick"_zp, nullptr);
                if (i % 8 == 0) center->description();
            } catch (ZPException *e) {
                raised += e->reason()->hasPrefix("own "_zp);
            }
        }
    });
    EXPECT_EQ(heard[visitors], posters * posts) << "called after all that raised";
    for (int i = 0; i < visitors; ++i) EXPECT_EQ(heard[i], 2 * posters * posts);
    EXPECT_GT(raised, 0);
    EXPECT_EQ(center->_registry_count, 21u);
}
