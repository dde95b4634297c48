// SPDX-License-Identifier: MIT
// Every operation with every one of its allocations failing in turn: it succeeds all the same, or raises, and what it
// worked on is as it was, or as it should be, and still usable.
#include <Bedrock/Bedrock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <new>
#include <string>
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
}  // namespace

TEST(AllocationFailure, Arrays) {
    eachAllocationFails<ZPMutableArray *>(
        [] {
            ZPMutableArray *a = ZPMutableArray::array();
            for (int i = 0; i < 16; ++i) a->addObject("x"_zp);
            return a;
        },
        [](ZPMutableArray *a) {
            for (int i = 0; i < 40; ++i) a->insertObject_atIndex(ZPMutableArray::array(), 3);
        },
        [](ZPMutableArray *a, bool done) {
            EXPECT_GE(a->count(), 16u);
            if (done) {
                EXPECT_EQ(a->count(), 56u);
            }
            EXPECT_EQ(a->objectAtIndex(0), "x"_zp);
            EXPECT_EQ(a->lastObject(), "x"_zp);
            a->addObject("y"_zp);
            EXPECT_EQ(a->lastObject(), "y"_zp);
        });
}

TEST(AllocationFailure, DictionariesAndSets) {
    eachAllocationFails<ZPMutableDictionary *>([] { return ZPMutableDictionary::dictionary(); },
                                               [](ZPMutableDictionary *d) {
                                                   for (int i = 0; i < 40; ++i) d->setObject_forKey("v"_zp, key(i));
                                               },
                                               [](ZPMutableDictionary *d, bool done) {
                                                   unsigned count = d->count(), seen = 0;
                                                   for (int i = 0; i < 40; ++i)
                                                       seen += d->objectForKey(key(i)) != nullptr;
                                                   EXPECT_EQ(seen, count);
                                                   if (done) {
                                                       EXPECT_EQ(count, 40u);
                                                   }
                                                   d->setObject_forKey("v"_zp, "more"_zp);
                                                   EXPECT_EQ(d->count(), count + 1);
                                               });
    eachAllocationFails<ZPMutableSet *>([] { return ZPMutableSet::set(); },
                                        [](ZPMutableSet *s) {
                                            for (int i = 0; i < 40; ++i) s->addObject(key(i));
                                        },
                                        [](ZPMutableSet *s, bool done) {
                                            unsigned count = s->count();
                                            if (done) {
                                                EXPECT_EQ(count, 40u);
                                            }
                                            s->addObject("more"_zp);
                                            EXPECT_EQ(s->count(), count + 1);
                                            EXPECT_EQ(s->allObjects()->count(), count + 1);
                                        });
}

TEST(AllocationFailure, Strings) {
    eachAllocationFails<ZPMutableString *>([] { return ZPMutableString::stringWithFormat("%s"_zp, "start"); },
                                           [](ZPMutableString *s) {
                                               s->appendFormat("%d %@ %s"_zp, 5, key(7), std::string(300, 'z').c_str());
                                               s->insertString_atIndex("λόγος"_zp, 2);
                                               s->replaceCharactersInRange_withString({0, 1}, key(1));
                                           },
                                           [](ZPMutableString *s, bool done) {
                                               if (done) {
                                                   EXPECT_GT(s->length(), 300u);
                                               }
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
                                             if (done) {
                                                 EXPECT_EQ(d->length(), 320u);
                                             }
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

namespace {

struct Hearer : ZPObject {
    ZP_CLASS(Hearer)
    unsigned _calls;
    void hear(ZPNotification *) { ++_calls; }
};
ZP_IMPLEMENT(Hearer).method<&Hearer::hear>("hear:");

}  // namespace

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
            if (done) {
                EXPECT_EQ(c->_registry_count, 50u);
            }
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

TEST(AllocationFailure, Tables) {
    eachAllocationFails<ZPHashTable *>([] { return ZPCreateHashTable(ZPObjectHashCallBacks, 0); },
                                       [](ZPHashTable *t) {
                                           for (int i = 0; i < 40; ++i) ZPHashInsert(t, key(i));
                                       },
                                       [](ZPHashTable *t, bool done) {
                                           unsigned count = ZPCountHashTable(t);
                                           if (done) {
                                               EXPECT_EQ(count, 40u);
                                           }
                                           ZPHashInsert(t, "more"_zp);
                                           EXPECT_EQ(ZPCountHashTable(t), count + 1);
                                           ZPFreeHashTable(t);
                                       });
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
        std::string raised;
        tooLarge = 32u << 20;
        try {
            d->setLength(2 * large);
        } catch (ZPException *e) {
            raised = e->name()->cString();
        }
        tooLarge = SIZE_MAX;
        EXPECT_EQ(raised, "ZPMallocException");
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

namespace {

struct Blocks {
    ZPZone *zone = nullptr;
    int count = 0;
    char *at[300];
};

}  // namespace

TEST(AllocationFailure, PagesOfZones) {
    static Blocks blocks;
    eachAllocationFails<Blocks *>(
        [] {
            blocks = {};
            return &blocks;
        },
        [](Blocks *b) {
            b->zone = ZPCreateZone(0, 0, YES);
            if (!b->zone) throw std::bad_alloc();
            for (; b->count < 300; ++b->count) {
                auto *block = static_cast<char *>(ZPZoneMalloc(b->zone, 200));
                if (!block) throw std::bad_alloc();
                b->at[b->count] = static_cast<char *>(std::memset(block, b->count, 200));
            }
        },
        [](Blocks *b, bool done) {
            if (done) {
                EXPECT_EQ(b->count, 300);
            }
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

TEST(AllocationFailure, ZonesAnswerNullAndRaiseNothing) {
    emptyShelves();
    for (long n = 1;; ++n) {
        ASSERT_LT(n, 100);
        failed = 0;
        left = n;
        armed = true;
        ZPZone *zone = nullptr;
        int taken = 0;
        EXPECT_NO_THROW({
            zone = ZPCreateZone(0, 0, YES);
            while (zone && taken < 300 && ZPZoneMalloc(zone, 200)) ++taken;
        });
        armed = false;
        EXPECT_EQ(zone && taken == 300, failed == 0) << n;
        if (!failed) {
            EXPECT_GT(n, 3);
            break;
        }
    }
}
