// SPDX-License-Identifier: MIT
// What tests share: the library, a pool around each test, values that count how many of them live, the text of an
// error, the log, zones and threads.
#pragma once

#include <Bedrock/Bedrock.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <unistd.h>

/// An autorelease pool around every test of a program.
struct PoolPerTest : testing::EmptyTestEventListener {
    unsigned token = 0;
    void OnTestStart(const testing::TestInfo &) override { token = ZPPushAutoreleasePool(0); }
    void OnTestEnd(const testing::TestInfo &) override { ZPPopAutoreleasePool(token); }
};
inline const bool poolPerTest = (testing::UnitTest::GetInstance()->listeners().Append(new PoolPerTest), true);

/// A number, equal by value; all hash alike when `sameHash` is set.
struct TestItem : ZPObject {
    ZP_CLASS(TestItem)
    int value;
    static inline int live = 0, copies = 0, comparisons = 0;

    static TestItem *with(int value) {
        TestItem *item = alloc();
        ++live;
        item->value = value;
        return item->autorelease();
    }
    void dealloc() {
        --live;
        ZP_SUPER(TestItem, dealloc)();
    }
    unsigned hash() { return unsigned(value) * 2654435761u; }
    BOOL isEqual(id other) {
        ++comparisons;
        return other && other->isKindOfClass(class_()) && static_cast<TestItem *>(other)->value == value;
    }
    id copyWithZone(ZPZone *) {
        ++copies;
        ++live;
        TestItem *item = alloc();
        item->value = value;
        return item;
    }
    int compare(TestItem *other) { return (value > other->value) - (value < other->value); }
    id half() { return value % 2 ? id() : id(with(value / 2)); }
    void add(id sum) { static_cast<TestItem *>(sum)->value += value; }
};

/// Does as it was told when it is sent `act:`, and at its end. The program that uses it implements it.
struct Doer : ZPObject {
    ZP_CLASS(Doer)
    std::function<void(id)> _does;
    std::function<void()> _ends;
    static inline std::atomic<int> live = 0;

    static ZPRef<Doer> with(std::function<void(id)> does = {}, std::function<void()> ends = {}) {
        ZPRef<Doer> doer = ZPAdopt(Doer::new_());
        doer->_does = does;
        doer->_ends = ends;
        ++live;
        return doer;
    }
    void act(id what) {
        if (_does) _does(what);
    }
    void dealloc() {
        if (_ends) _ends();
        --live;
        ZP_SUPER(Doer, dealloc)();
    }
};

inline int valueOf(id item) { return item ? static_cast<TestItem *>(item)->value : -1; }

inline std::string text(ZPString *string) { return string ? string->cString() : "(null)"; }
inline std::string described(ZPObject *object) { return text(object->description()); }

/// The reason of what f raises, and its name; empty when it raises nothing.
template <class F> std::string reasonOf(F f, ZPString **name = nullptr) {
    try {
        f();
    } catch (ZPException *e) {
        if (name) *name = e->name();
        return text(e->reason());
    }
    return "";
}

/// "Name: reason" of what f raises; empty when it raises nothing.
template <class F> std::string raised(F f) {
    ZPString *name = nullptr;
    std::string reason = reasonOf(f, &name);
    return name ? text(name) + ": " + reason : "";
}

/// A reason that begins as most do.
inline std::string invalid(const std::string &what) { return "ZPInvalidArgumentException: *** " + what; }

inline bool has(const std::string &text, const std::string &piece) { return text.find(piece) != std::string::npos; }
#define EXPECT_HAS(text, piece) EXPECT_PRED2(has, text, piece)

// What the statements raise: all of it, its reason, a piece of its reason, or anything.
#define EXPECT_RAISES(wanted, ...) EXPECT_EQ(raised([&] { __VA_ARGS__; }), wanted)
#define EXPECT_REASON(wanted, ...) EXPECT_EQ(reasonOf([&] { __VA_ARGS__; }), wanted)
#define EXPECT_REASON_HAS(piece, ...) EXPECT_HAS(reasonOf([&] { __VA_ARGS__; }), piece)
#define EXPECT_REFUSED(...) EXPECT_NE(raised([&] { __VA_ARGS__; }), "")

/// How often each is retained.
template <class... T> std::vector<unsigned> retained(T *...objects) { return {objects->retainCount()...}; }
using Counts = std::vector<unsigned>;

/// The two sides of "input -> answer".
template <class C> std::pair<std::basic_string<C>, std::basic_string<C>> sides(const C *row) {
    static const C arrow[] = {' ', '-', '>', ' ', 0};
    std::basic_string<C> text = row;
    std::size_t at = text.find(arrow);
    EXPECT_NE(at, text.npos);
    return {text.substr(0, at), text.substr(at + 4)};
}
/// The sides of each of the rows.
template <class C, class... R> auto rows(const C *first, R *...more) {
    return std::vector{sides(first), sides(more)...};
}

/// Holds what is logged while it lives.
struct LogCapture {
    static inline std::string text;
    static inline BOOL banner;
    LogCapture() {
        text.clear();
        _ZPSetLogCStringFunction([](const char *bytes, unsigned length, BOOL withBanner) {
            text.append(bytes, length);
            banner = withBanner;
        });
    }
    ~LogCapture() { _ZPSetLogCStringFunction(nullptr); }
};

/// A directory of its own that goes away with it.
struct Directory {
    std::filesystem::path path;
    Directory() {
        std::string name = (std::filesystem::temp_directory_path() / "bedrock-XXXXXX").string();
        path = mkdtemp(name.data());
    }
    ~Directory() { std::filesystem::remove_all(path); }
    /// The library's path of a file in it.
    ZPString *operator/(const char *name) const { return ZPString::stringWithCString((path / name).c_str()); }
    std::string read(const char *name) const {
        std::ifstream in(path / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    void write(const char *name, const std::string &bytes) const {
        std::ofstream(path / name, std::ios::binary) << bytes;
    }
    unsigned count() const { return unsigned(std::distance(std::filesystem::directory_iterator(path), {})); }
};

/// A zone that is handed back at its end.
struct TestZone {
    ZPZone *zone = ZPCreateZone(0, 0, YES);
    ~TestZone() { ZPRecycleZone(zone); }
    operator ZPZone *() const { return zone; }
};

/// Ends the process by what a check says.
[[noreturn]] inline void endBy(const std::function<void()> &check) {
    {
        ZPAutoreleasePoolScope pool;
        check();
    }
    std::exit(testing::Test::HasFailure());
}

/// A check in a process of its own, which has used nothing yet.
#define IN_A_PROCESS(...)                                                \
    do {                                                                 \
        GTEST_FLAG_SET(death_test_style, "threadsafe");                  \
        EXPECT_EXIT(endBy(__VA_ARGS__), testing::ExitedWithCode(0), ""); \
    } while (0)

/// As many threads at once, each with its number and a pool of its own; waits for their ends.
template <class F> void onThreads(int count, F f) {
    std::vector<std::thread> threads;
    for (int t = 0; t < count; ++t)
        threads.emplace_back([&f, t] {
            ZPAutoreleasePoolScope pool;
            f(t);
        });
    for (auto &t : threads) t.join();
}
