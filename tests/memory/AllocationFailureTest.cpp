// SPDX-License-Identifier: MIT
// Every operation with every one of its allocations failing in turn: it succeeds all the same, or raises, and what it
// worked on is as it was, or as it should be, and still usable.
#include <Bedrock/Bedrock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <functional>
#include <new>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

// The program's own allocator, and its own mapping of pages, stand before the C library's. Thread-local, so that
// gtest's threads do not count.
extern "C" {
void *__libc_malloc(std::size_t);
void *__libc_calloc(std::size_t, std::size_t);
void *__libc_realloc(void *, std::size_t);
}

namespace {

thread_local bool armed;
thread_local long left, failed, calls;
thread_local std::size_t tooLarge = SIZE_MAX;  // what is at least this large fails as well

bool fails(std::size_t size) {
    ++calls;
    if (size < tooLarge && (!armed || --left != 0)) return false;
    ++failed;
    errno = ENOMEM;
    return true;
}

}  // namespace

extern "C" {
void *malloc(std::size_t size) { return fails(size) ? nullptr : __libc_malloc(size); }
void *calloc(std::size_t count, std::size_t size) { return fails(count * size) ? nullptr : __libc_calloc(count, size); }
void *realloc(void *block, std::size_t size) { return fails(size) ? nullptr : __libc_realloc(block, size); }
void *mmap(void *at, std::size_t size, int access, int kind, int file, off_t offset) noexcept {
    if (fails(size)) return MAP_FAILED;
    return reinterpret_cast<void *>(syscall(SYS_mmap, at, size, access, kind, file, offset));
}
}

namespace {

// Freed blocks of small objects are kept for the next: takes them all, so that every object is an allocation.
void emptyShelves() {
    for (unsigned size = 0; size < 1200; size += 16)
        for (long before = calls; before == calls;) ZPAllocateObject(ZPObject::class_(), size, nullptr);
}

/// Runs the operation on what `prepare` makes anew each time, with allocation 1, 2, 3 ... failing, until none is
/// reached any more; `check` is asked after each whether the operation had been done. One of them at least raises, or,
/// with `raises` false, none.
template <class Subject> void eachAllocationFails(std::function<Subject()> prepare,
                                                  std::function<void(Subject)> operation,
                                                  std::function<void(Subject, bool done)> check, bool raises = true) {
    {
        // The first use of a class makes its tables, which the process cannot do without.
        failed = 0;
        ZPAutoreleasePoolScope pool;
        Subject subject = prepare();
        operation(subject);
        check(subject, true);
    }
    int raised = 0;
    for (long n = 1; n < 5000; ++n) {
        ZPAutoreleasePoolScope pool;
        Subject subject = prepare();
        bool done = false;
        emptyShelves();
        failed = 0;
        left = n;
        armed = true;
        try {
            operation(subject);
            done = true;
        } catch (ZPException *e) {
            armed = false;
            ++raised;
            bool isOfPages = e->reason()->hasPrefix("*** ZPAllocateMemoryPages("_zp);
            EXPECT_TRUE(isOfPages || e->name()->isEqualToString(ZPMallocException))
                << e->name()->cString() << ": " << e->reason()->cString();
        } catch (std::bad_alloc &) {
            armed = false;
            ++raised;
        }
        armed = false;
        check(subject, done);
        if (!failed) {
            EXPECT_TRUE(done);
            EXPECT_GT(n, 1);
            EXPECT_EQ(raised > 0, raises) << raised << " of " << n - 1 << " failures were noticed";
            std::printf("%ld allocations, %d raised\n", n - 1, raised);
            return;
        }
    }
    FAIL() << "the operation never came to its end";
}

ZPString *key(int i) { return ZPString::stringWithFormat("key number %d"_zp, i); }

/// A collection that grows from nothing by 40 keys, each of which it has or has not.
template <class C> void eachAllocationFailsWhileGrowing(
    C make(), void add(C, ZPString *), unsigned count(C), bool has(C, ZPString *), void end(C) = [](C) {}) {
    eachAllocationFails<C>(
        make,
        [=](C c) {
            for (int i = 0; i < 40; ++i) add(c, key(i));
        },
        [=](C c, bool done) {
            unsigned size = count(c), seen = 0;
            for (int i = 0; i < 40; ++i) seen += has(c, key(i));
            EXPECT_EQ(seen, size);
            EXPECT_TRUE(!done || size == 40);
            add(c, "more"_zp);
            EXPECT_EQ(count(c), size + 1);
            EXPECT_TRUE(has(c, "more"_zp));
            end(c);
        });
}

struct Hearer : ZPObject {
    ZP_CLASS(Hearer)
    unsigned _calls;
    void hear(ZPNotification *) { ++_calls; }
};
ZP_IMPLEMENT(Hearer, hear);

struct Blocks {
    ZPZone *zone = nullptr;
    int count = 0;
    char *at[300];
};

}  // namespace

TEST(AllocationFailure, Collections) {
    using A = ZPMutableArray *;
    using D = ZPMutableDictionary *;
    using S = ZPMutableSet *;
    using H = ZPHashTable *;
    eachAllocationFailsWhileGrowing<A>([]() -> A { return ZPMutableArray::array(); },
                                       [](A a, ZPString *k) { a->insertObject_atIndex(k, a->count() / 2); },
                                       [](A a) { return a->count(); },
                                       [](A a, ZPString *k) -> bool { return a->containsObject(k); });
    eachAllocationFailsWhileGrowing<D>([]() -> D { return ZPMutableDictionary::dictionary(); },
                                       [](D d, ZPString *k) { d->setObject_forKey("v"_zp, k); },
                                       [](D d) { return d->count(); },
                                       [](D d, ZPString *k) { return d->objectForKey(k) != nullptr; });
    eachAllocationFailsWhileGrowing<S>([]() -> S { return ZPMutableSet::set(); },
                                       [](S s, ZPString *k) { s->addObject(k); }, [](S s) { return s->count(); },
                                       [](S s, ZPString *k) -> bool { return s->containsObject(k); });
    eachAllocationFailsWhileGrowing<H>([] { return ZPCreateHashTable(ZPObjectHashCallBacks, 0); },
                                       [](H t, ZPString *k) { ZPHashInsert(t, k); },
                                       [](H t) { return ZPCountHashTable(t); },
                                       [](H t, ZPString *k) { return ZPHashGet(t, k) != nullptr; }, ZPFreeHashTable);
}

TEST(AllocationFailure, Strings) {
    eachAllocationFails<ZPMutableString *>([] { return ZPMutableString::stringWithFormat("%s"_zp, "start"); },
                                           [](ZPMutableString *s) {
                                               s->appendFormat("%d %@ %s"_zp, 5, key(7), std::string(300, 'z').c_str());
                                               s->insertString_atIndex("λόγος"_zp, 2);
                                               s->replaceCharactersInRange_withString({0, 1}, key(1));
                                           },
                                           [](ZPMutableString *s, bool done) {
                                               EXPECT_TRUE(!done || s->length() > 300);
                                               unsigned length = s->length();
                                               s->appendString("!"_zp);
                                               EXPECT_EQ(s->length(), length + 1);
                                               EXPECT_EQ(s->characterAtIndex(length), u'!');
                                           });
    eachAllocationFails<ZPString *>(
        [] { return key(4); },
        [](ZPString *s) {
            s->uppercaseString()->dataUsingEncoding(ZPUTF8StringEncoding);
            s->componentsSeparatedByString(" "_zp);
            s->substringFromIndex(2)->stringByAppendingString(s)->cString();
            ZPCharacterSet::characterSetWithCharactersInString(s)->mutableCopy()->autorelease();
        },
        [](ZPString *s, bool) { EXPECT_TRUE(s->isEqualToString("key number 4"_zp)); });
}

TEST(AllocationFailure, DataAndPropertyLists) {
    eachAllocationFails<ZPMutableData *>([] { return ZPMutableData::dataWithCapacity(4); },
                                         [](ZPMutableData *d) {
                                             for (int i = 0; i < 10; ++i)
                                                 d->appendBytes_length("0123456789abcdef0123456789abcdef", 32);
                                         },
                                         [](ZPMutableData *d, bool done) {
                                             EXPECT_EQ(d->length() % 32, 0u);
                                             EXPECT_TRUE(!done || d->length() == 320u);
                                             d->appendBytes_length("x", 1);
                                             EXPECT_EQ(static_cast<const char *>(d->bytes())[d->length() - 1], 'x');
                                         });
    eachAllocationFails<ZPString *>(
        [] { return ZPString::stringWithFormat("{a = (1, 2, {k = \"%@\";}); b = <0f0e>;}"_zp, key(3)); },
        [](ZPString *s) {
            id tree = s->propertyList();
            EXPECT_TRUE(tree->description()->propertyList()->isEqual(tree));
        },
        [](ZPString *s, bool) { EXPECT_NE(s->propertyList(), nullptr); });
}

TEST(AllocationFailure, NotificationsAndDates) {
    ZPRef<Hearer> hearer = ZPAdopt(Hearer::new_());
    eachAllocationFails<ZPNotificationCenter *>(
        [] { return (ZPNotificationCenter *)ZPNotificationCenter::new_()->autorelease().pointer(); },
        [&](ZPNotificationCenter *c) {
            for (int i = 0; i < 50; ++i)
                c->addObserver_selector_name_object(hearer.get(), "hear:"_sel, i % 5 ? key(i) : nullptr, nullptr);
            c->postNotificationName_object(key(4), nullptr);
        },
        [&](ZPNotificationCenter *c, bool done) {
            EXPECT_TRUE(!done || c->_registry_count == 50u);
            // Who was added before is still called, once by its name or by every post.
            unsigned added = c->_registry_count, unnamed = (added + 4) / 5;
            hearer->_calls = 0;
            for (unsigned i = 0; i < 50; ++i) c->postNotificationName_object(key(int(i)), nullptr);
            EXPECT_EQ(hearer->_calls, added - unnamed + 50 * unnamed);
            c->addObserver_selector_name_object("p"_zp, "self"_sel, "late"_zp, nullptr);
            c->removeObserver(hearer.get());
            EXPECT_EQ(c->_registry_count, 1u);
        });
    eachAllocationFails<ZPDate *>([] { return ZPDate::dateWithTimeIntervalSinceReferenceDate(1e9); },
                                  [](ZPDate *d) { ZPDate::dateWithString(d->description()); },
                                  [](ZPDate *d, bool) { EXPECT_EQ(d->description()->length(), 25u); });
}

TEST(AllocationFailure, DataThatIsMapped) {
    static constexpr unsigned small = 1000, large = (32u << 20) + 5;
    auto prepare = [] {
        ZPMutableData *d = ZPMutableData::dataWithLength(small);
        static_cast<char *>(d->mutableBytes())[small - 1] = 'e';
        return d;
    };
    auto check = [](ZPMutableData *d, bool done) {
        auto *bytes = static_cast<const char *>(d->bytes());
        ASSERT_EQ(d->length(), done ? large : small);
        EXPECT_EQ(bytes[small - 1], 'e');
        if (done) {
            EXPECT_EQ(bytes[small], 0);
            EXPECT_EQ(bytes[large - 1], 0);
        }
        unsigned length = d->length();
        d->appendBytes_length("x", 1);
        EXPECT_EQ(static_cast<const char *>(d->bytes())[length], 'x');
    };
    // Where there is no mapping there is a block.
    eachAllocationFails<ZPMutableData *>(
        prepare, [](ZPMutableData *d) { d->setLength(large); }, check, false);
    // Neither a mapping nor a block, for data that has either.
    for (bool mapped : {false, true}) {
        ZPAutoreleasePoolScope pool;
        ZPMutableData *d = prepare();
        if (mapped) d->setLength(large);
        unsigned length = d->length();
        tooLarge = 32u << 20;
        try {
            d->setLength(2 * large);
            ADD_FAILURE();
        } catch (ZPException *e) {
            tooLarge = SIZE_MAX;
            EXPECT_STREQ(e->name()->cString(), "ZPMallocException");
        }
        ASSERT_EQ(d->length(), length);
        check(d, mapped);
    }
    // A copy that cannot share the mapping is made of bytes.
    eachAllocationFails<ZPMutableData *>(
        [&] {
            ZPMutableData *d = prepare();
            d->setLength(large);
            return d;
        },
        [](ZPMutableData *d) {
            ZPRef<ZPData> copy = ZPAdopt<ZPData>(d->copy());
            ZPRef<ZPMutableData> another = ZPAdopt<ZPMutableData>(d->mutableCopy());
            if (!copy || !another) throw std::bad_alloc();
            EXPECT_TRUE(copy->isEqualToData(d));
            EXPECT_TRUE(another->isEqualToData(d));
        },
        [&](ZPMutableData *d, bool) { check(d, true); });
}

TEST(AllocationFailure, PagesOfAPool) {
    eachAllocationFails<ZPObject *>([] { return static_cast<ZPObject *>(ZPObject::new_()); },
                                    [](ZPObject *o) {
                                        // A few pages are kept for later, so more than those hold.
                                        ZPAutoreleasePoolScope pool;
                                        for (int i = 0; i < 20000; ++i) o->retain()->autorelease();
                                    },
                                    [](ZPObject *o, bool done) {
                                        // What no pool took stays the caller's; the others are given back, or will be.
                                        EXPECT_EQ(o->retainCount(),
                                                  ZPAutoreleasePoolCountForObject(o) + (done ? 1u : 2u));
                                        if (!done) o->release();
                                        o->release();
                                    });
}

TEST(AllocationFailure, PagesOfZones) {
    static Blocks blocks;
    eachAllocationFails<Blocks *>(
        [] {
            blocks = {};
            return &blocks;
        },
        [](Blocks *b) {
            EXPECT_NO_THROW({
                b->zone = ZPCreateZone(0, 0, YES);
                for (void *block; b->zone && b->count < 300 && (block = ZPZoneMalloc(b->zone, 200)); ++b->count)
                    b->at[b->count] = static_cast<char *>(std::memset(block, b->count, 200));
            }) << "zones answer null";
            if (b->count < 300) throw std::bad_alloc();
        },
        [](Blocks *b, bool done) {
            EXPECT_EQ(done, failed == 0) << "no failure is passed over";
            EXPECT_TRUE(!done || b->count == 300);
            if (!b->zone) return;
            for (int i = 0; i < b->count; ++i) {
                EXPECT_EQ(ZPZoneFromPointer(b->at[i]), b->zone);
                EXPECT_TRUE(b->at[i][0] == char(i) && b->at[i][199] == char(i)) << i;
            }
            void *more = ZPZoneMalloc(b->zone, 5000);
            EXPECT_TRUE(more && ZPZoneFromPointer(more) == b->zone);
            for (int i = 0; i < b->count; ++i) ZPZoneFree(b->zone, b->at[i]);
            ZPRecycleZone(b->zone);
        });
}
