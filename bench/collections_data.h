// SPDX-License-Identifier: MIT
// The keys and words that the collection benchmarks share.
#pragma once

#include "common.h"

#include <algorithm>
#include <random>
#include <string>
#include <vector>

inline constexpr int entryCount = 1000;
inline constexpr int sortCount = 10000;

/// Forces a value into a register, so that it is really loaded.
template <class T> inline void keep(T *v) { asm volatile("" : : "r"(v) : "memory"); }

inline const std::vector<std::string> &keys() {
    static const std::vector<std::string> all = [] {
        const char *stems[] = {"customerName", "orderIdentifier", "shippingAddress",
                               "unitPrice",    "lastModified",    "warehouse"};
        std::vector<std::string> k;
        for (int i = 0; i < entryCount; ++i) k.push_back(stems[i % 6] + std::to_string(i * 7919 % 10007));
        return k;
    }();
    return all;
}
/// The same keys in other memory and another order, so that a look-up has to compare characters.
inline const std::vector<std::string> &probes() {
    static const std::vector<std::string> all = [] {
        std::vector<std::string> k = keys();
        std::shuffle(k.begin(), k.end(), std::mt19937(1));
        return k;
    }();
    return all;
}
inline const std::vector<std::string> &words() {
    static const std::vector<std::string> all = [] {
        std::mt19937 random(2);
        std::vector<std::string> w;
        for (int i = 0; i < sortCount; ++i) w.push_back(keys()[random() % entryCount] + std::to_string(random() % 100));
        return w;
    }();
    return all;
}
inline const std::vector<std::string> &sortedWords() {
    static const std::vector<std::string> all = [] {
        std::vector<std::string> w = words();
        std::sort(w.begin(), w.end());
        return w;
    }();
    return all;
}
