// SPDX-License-Identifier: MIT
#include "common.h"

#include <glib.h>

#include <cstring>

static void format_glib(State &s) {
    const char *name = "Warehouse 7";
    int count = 1234;
    char *one = g_strdup_printf("%s has %d items (%.2f)", name, count, 98.765);
    REQUIRE(!std::strcmp(one, "Warehouse 7 has 1234 items (98.77)"));
    g_free(one);
    for (auto _ : s) {
        DoNotOptimize(count);
        char *x = g_strdup_printf("%s has %d items (%.2f)", name, count, 98.765);
        DoNotOptimize(x);
        g_free(x);
    }
}
BENCHMARK(format_glib);
