// Locks and thread objects from many threads.
#include <Bedrock/bridge/ZPMemory.h>
#include <Bedrock/collections/ZPArray.h>
#include <Bedrock/collections/ZPDictionary.h>
#include <Bedrock/strings/ZPMutableString.h>
#include <Bedrock/strings/ZPString.h>
#include <Bedrock/threads/ZPLock.h>
#include <Bedrock/threads/ZPThread.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <set>
#include <thread>
#include <vector>

namespace {

// Any object that tells an absolute time can be a limit.
struct Moment : ZPObject {
    ZP_CLASS(Moment)
    double _time;
    double timeIntervalSinceReferenceDate() { return _time; }
    static ZPDate *in(double seconds) {
        using namespace std::chrono;
        Moment *m = Moment::new_();
        m->_time = duration<double>(system_clock::now().time_since_epoch()).count() - 978307200 + seconds;
        return (ZPDate *)m->autorelease().pointer();
    }
};
ZP_IMPLEMENT(Moment).method<&Moment::timeIntervalSinceReferenceDate>("timeIntervalSinceReferenceDate");

}  // namespace

TEST(Lock, ExcludesThreads) {
    ZPRef<ZPLock> lock = ZPAdopt(ZPLock::new_());
    long counter = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t)
        threads.emplace_back([&] {
            for (int i = 0; i < 20000; ++i) {
                lock->lock();
                ++counter;
                lock->unlock();
                if (i % 16 == 0 && lock->tryLock()) {
                    ++counter;
                    --counter;
                    lock->unlock();
                }
            }
        });
    for (auto &t : threads) t.join();
    EXPECT_EQ(counter, 160000);
}

TEST(Lock, LimitsAndMisuse) {
    ZPAutoreleasePoolScope pool;
    ZPRef<ZPLock> lock = ZPAdopt(ZPLock::new_());
    EXPECT_TRUE(lock->lockBeforeDate(Moment::in(-5)));  // free: taken even so late
    EXPECT_FALSE(lock->tryLock());
    EXPECT_FALSE(lock->lockBeforeDate(Moment::in(-5)));
    auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(lock->lockBeforeDate(Moment::in(0.05)));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(45));
    std::thread other([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        lock->unlock();  // a lock has no owner
    });
    EXPECT_TRUE(lock->lockBeforeDate(Moment::in(30)));
    other.join();
    std::string text = lock->description()->cString();
    EXPECT_EQ(text.find("ZPLock(0x"), 0u) << text;
    EXPECT_EQ(text.substr(text.size() - 12), " locked: YES");
    lock->unlock();
    lock->unlock();
    EXPECT_TRUE(lock->tryLock());
    EXPECT_TRUE(lock->conformsToProtocol(ZPLocking::protocol()));
}

TEST(Thread, EveryThreadHasItsOwnObjectAndDictionary) {
    ZPAutoreleasePoolScope pool;
    ZPThread *mine = ZPThread::currentThread();
    EXPECT_EQ(ZPThread::currentThread(), mine);
    mine->threadDictionary()->setObject_forKey("main"_zp, "who"_zp);
    std::atomic<int> wrong{0};
    for (int round = 0; round < 3; ++round) {  // stacks are reused by the following round
        std::vector<std::thread> threads;
        for (int t = 0; t < 8; ++t)
            threads.emplace_back([&] {
                ZPAutoreleasePoolScope inner;
                ZPThread *own = ZPThread::currentThread();
                if (own == mine || own->threadDictionary()->objectForKey("who"_zp)) ++wrong;
                own->threadDictionary()->setObject_forKey("other"_zp, "who"_zp);
                if (ZPThread::currentThread() != own) ++wrong;
            });
        for (auto &t : threads) t.join();
    }
    EXPECT_EQ(wrong, 0);
    EXPECT_TRUE(mine->threadDictionary()->objectForKey("who"_zp)->isEqual("main"_zp));
}

TEST(Thread, StringsCollectionsAndClassesFromManyThreads) {
    // Placeholders, literals, caches of classes seen for the first time, shared immutable objects.
    ZPAutoreleasePoolScope pool;
    ZPRef<ZPArray> shared = ZPArray::arrayWithObjects("one"_zp, ZPString::stringWithFormat("%d"_zp, 2), "drei und mehr Zeichen als in ein kleines Stück passen"_zp);
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t)
        threads.emplace_back([&, t] {
            for (int i = 0; i < 300; ++i) {
                ZPAutoreleasePoolScope inner;
                ZPString *text = ZPString::stringWithFormat("%@ %d %@"_zp, shared->objectAtIndex(i % 3), t, "λόγος"_zp);
                ZPMutableDictionary *map = ZPMutableDictionary::dictionary();
                map->setObject_forKey(text, shared->objectAtIndex(1));
                map->setObject_forKey(shared.get(), text);
                if (map->count() != 2 || !map->objectForKey("2"_zp)->isEqual(text)) ++wrong;
                ZPRef<ZPString> part = text->substringFromIndex(1);
                if (!text->hasSuffix(part)) ++wrong;
                if (!text->uppercaseString()->hasSuffix("ΛΌΓΟΣ"_zp)) ++wrong;
            }
        });
    for (auto &t : threads) t.join();
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(shared->retainCount(), 2u);
}
