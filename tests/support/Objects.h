// SPDX-License-Identifier: MIT
// What tests share: a pool around each, values that count how many of them live, and the text of an error.
#pragma once

#include <Bedrock/bridge/ZPMemory.h>
#include <Bedrock/core/ZPAutoreleasePool.h>
#include <Bedrock/core/ZPException.h>
#include <Bedrock/strings/ZPString.h>

#include <gtest/gtest.h>

#include <string>

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
        objc_super<TestItem>(this).send("dealloc"_sel);
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

inline int valueOf(id item) { return item ? static_cast<TestItem *>(item)->value : -1; }

inline std::string text(ZPString *string) { return string ? string->cString() : "(null)"; }

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
