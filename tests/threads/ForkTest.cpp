// SPDX-License-Identifier: MIT
// A process with busy threads forks: the child finds no lock held and nothing half changed.
#include <support/Objects.h>

#include <sys/wait.h>
#include <unistd.h>

namespace {

struct Still : ZPObject {
    ZP_CLASS(Still)
    void hear(ZPNotification *) {}
};
ZP_IMPLEMENT(Still, staticInstances(), hear);

Still still[16];

/// Classes whose `+initialize` takes a while, so that forks fall into it.
std::vector<Class> slowClasses(int count) {
    std::vector<Class> made;
    for (int i = 0; i < count; ++i) {
        Class cls = objc_makeClass(ZPObject::class_(), ("Slow" + std::to_string(i)).c_str(), 0);
        auto initialize = +[](objc_object *, SEL) { usleep(200); };
        class_addMethod(cls->isa, "initialize"_sel, IMP(initialize), objc_methodTypes<void>(), nullptr, 0);
        made.push_back(cls);
    }
    return made;
}

/// Whatever takes a lock of the library.
void doEverything(unsigned seed) {
    ZPAutoreleasePoolScope pool;
    Still *object = &still[seed % 16];
    for (int i = 0; i < 4; ++i) ZPIncrementExtraRefCount(object);
    for (int i = 0; i < 4; ++i) ZPDecrementExtraRefCountWasZero(object);
    ZPZone *zone = ZPCreateZone(0, 0, YES);
    ZPString::allocWithZone(zone)->initWithFormat("%d %@"_zp, int(seed), "a string that lies in a zone"_zp)->release();
    ZPRecycleZone(zone);
    ZPTimeZone::timeZoneForSecondsFromGMT(int(seed % 1000) * 60)->description();
    ZPTimeZone::localTimeZone()->timeZoneDetailForDate(ZPDate::date());
    sel_registerName(("fork" + std::to_string(seed % 5000)).c_str());
    object->respondsToSelector(sel_registerName(("fork" + std::to_string(seed % 7000)).c_str()));
    ZPRef<ZPObject> sender = ZPAdopt(ZPObject::new_());
    ZPRef<ZPNotificationCenter> own = ZPAdopt((ZPNotificationCenter *)ZPNotificationCenter::new_());
    for (ZPNotificationCenter *center : {ZPNotificationCenter::defaultCenter(), own.get()}) {
        center->addObserver_selector_name_object(object, "hear:"_sel, "fork"_zp, sender.get());
        center->postNotificationName_object("fork"_zp, sender.get());
        center->removeObserver_name_object(object, "fork"_zp, sender.get());
    }
}

}  // namespace

TEST(Fork, ChildrenOfABusyProcessGoOn) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizers' own allocators are not held over a fork";
#endif
    constexpr int children = 1000;
    static const std::vector<Class> slow = slowClasses(3000);
    for (Still &object : still) object.isa = Still::class_();
    LogCapture log;
    std::atomic<bool> ended{false};
    std::vector<std::thread> threads;
    for (unsigned t = 0; t < 3; ++t)
        threads.emplace_back([&, t] {
            for (unsigned n = t; !ended; n += 3) {
                ZPAutoreleasePoolScope pool;
                if (t || n >= slow.size()) doEverything(n);
                else ZPClassObject(slow[n])->self();
            }
        });
    int lost = 0;
    for (int i = 0; i < children; ++i) {
        pid_t child = fork();
        if (!child) {
            alarm(20);
            for (unsigned k = 0; k < 5; ++k) doEverything(unsigned(i) + k);
            ZPLog("%d"_zp, i);
            for (Class cls : slow)
                if (objc_infoOf(cls) & objc_isInitializing) ZPClassObject(cls)->self();
            for (unsigned k = unsigned(i) * 3, end = k + 30; k < end; k += 3)
                ZPClassObject(slow[k % slow.size()])->self();
            _exit(0);
        }
        int status = -1;
        waitpid(child, &status, 0);
        lost += status != 0;
    }
    ended = true;
    for (std::thread &thread : threads) thread.join();
    EXPECT_EQ(lost, 0);
}
