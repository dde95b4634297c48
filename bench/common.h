// SPDX-License-Identifier: MIT
// What the benchmarks share.
#pragma once

#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

using benchmark::DoNotOptimize;
using benchmark::State;

/// Ends the run when an answer is wrong: a wrong answer has no speed.
#define REQUIRE(condition)                                                                     \
    do {                                                                                       \
        if (!(condition)) {                                                                    \
            std::fprintf(stderr, "%s:%d: wrong answer: %s\n", __FILE__, __LINE__, #condition); \
            std::exit(1);                                                                      \
        }                                                                                      \
    } while (0)

/// The first `n` letters of an English text that repeats.
inline std::string ascii(std::size_t n) {
    static const char words[] = "the quick brown fox jumps over the lazy dog and then rests near a river ";
    std::string r;
    while (r.size() < n) r += words;
    r.resize(n);
    return r;
}

/// After this call the process counts as multithreaded, for ever.
inline void startOneThread() {
    static const bool done = [] {
        std::thread([] {}).join();
        return true;
    }();
    DoNotOptimize(done);
}

/// Times `measured` while another thread does `work`, again and again until its flag is set.
template <class Work> void besideAnotherThread(State &s, void (*measured)(State &), Work work) {
    std::atomic<bool> stop{false};
    std::thread other([&] { work(stop); });
    measured(s);
    stop = true;
    other.join();
}

inline void items(State &s, std::int64_t n) { s.SetItemsProcessed(s.iterations() * n); }
/// Times `f` of 0 to n - 1, one item each.
template <class F> void each(State &s, int n, F f) {
    startOneThread();
    for (auto _ : s)
        for (int i = 0; i < n; ++i) f(i);
    items(s, n);
}
inline void bytes(State &s, std::int64_t n) { s.SetBytesProcessed(s.iterations() * n); }
