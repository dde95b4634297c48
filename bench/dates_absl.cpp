// SPDX-License-Identifier: MIT
#include "common.h"

#include <absl/time/clock.h>
#include <absl/time/time.h>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr int N = 1000;

absl::TimeZone zone() {
    absl::TimeZone z;
    REQUIRE(absl::LoadTimeZone("America/New_York", &z));
    return z;
}
const std::vector<absl::Time> &moments() {
    static const auto v = [] {
        std::mt19937 random(42);
        std::vector<absl::Time> all;
        for (int i = 0; i < N; ++i) all.push_back(absl::FromUnixSeconds(random() % 1893456000));
        return all;
    }();
    return v;
}
void toText(State &s) {
    auto z = zone();
    REQUIRE(absl::FormatTime("%Y-%m-%d %H:%M:%S", absl::FromUnixSeconds(1700000000), z) == "2023-11-14 17:13:20");
    each(s, N, [&](int i) { DoNotOptimize(absl::FormatTime("%Y-%m-%d %H:%M:%S", moments()[i], z)); });
}
void fromText(State &s) {
    auto z = zone();
    std::vector<std::string> texts;
    for (auto t : moments()) texts.push_back(absl::FormatTime("%Y-%m-%d %H:%M:%S", t, z));
    int repeated = 0;
    for (int i = 0; i < N; ++i) {
        absl::Time t;
        REQUIRE(absl::ParseTime("%Y-%m-%d %H:%M:%S", texts[i], z, &t, nullptr));
        repeated += t != moments()[i];
    }
    REQUIRE(repeated <= 2);
    each(s, N, [&](int i) {
        absl::Time t;
        REQUIRE(absl::ParseTime("%Y-%m-%d %H:%M:%S", texts[i], z, &t, nullptr));
        DoNotOptimize(t);
    });
}
void toFields(State &s) {
    auto z = zone();
    auto one = z.At(absl::FromUnixSeconds(1700000000)).cs;
    REQUIRE(one == absl::CivilSecond(2023, 11, 14, 17, 13, 20));
    each(s, N, [&](int i) { DoNotOptimize(z.At(moments()[i])); });
}

}  // namespace

BENCHMARK(toText)->Name("moment to text: Abseil");
BENCHMARK(fromText)->Name("text to moment: Abseil");
BENCHMARK(toFields)->Name("moment to fields: Abseil");
