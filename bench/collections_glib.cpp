// SPDX-License-Identifier: MIT
#include "collections_data.h"

#include <glib.h>

static int value;
static GHashTable *filled() {
    GHashTable *h = g_hash_table_new(g_str_hash, g_str_equal);
    for (auto &k : keys()) g_hash_table_insert(h, const_cast<char *>(k.c_str()), &value);
    return h;
}
static void lookup_glib(State &s) {
    GHashTable *h = filled();
    for (auto &k : probes()) REQUIRE(g_hash_table_lookup(h, k.c_str()) == &value);
    for (auto _ : s)
        for (auto &k : probes()) keep(g_hash_table_lookup(h, k.c_str()));
    items(s, entryCount);
    g_hash_table_unref(h);
}
static void insert_glib(State &s) {
    GHashTable *one = filled();
    REQUIRE(g_hash_table_size(one) == entryCount);
    g_hash_table_unref(one);
    for (auto _ : s) g_hash_table_unref(filled());
    items(s, entryCount);
}
static void iterate_glib(State &s) {
    GHashTable *h = filled();
    GHashTableIter i;
    gpointer k, v;
    int seen = 0;
    g_hash_table_iter_init(&i, h);
    while (g_hash_table_iter_next(&i, &k, &v)) seen += v == &value;
    REQUIRE(seen == entryCount);
    for (auto _ : s) {
        g_hash_table_iter_init(&i, h);
        while (g_hash_table_iter_next(&i, &k, &v)) keep(k), keep(v);
    }
    items(s, entryCount);
    g_hash_table_unref(h);
}
static void append_glib(State &s) {
    auto filled = [] {
        GPtrArray *a = g_ptr_array_new();
        for (int i = 0; i < entryCount; ++i) g_ptr_array_add(a, &value);
        return a;
    };
    GPtrArray *one = filled();
    REQUIRE(one->len == entryCount && g_ptr_array_index(one, entryCount - 1) == &value);
    g_ptr_array_unref(one);
    for (auto _ : s) {
        GPtrArray *a = filled();
        DoNotOptimize(a);
        g_ptr_array_unref(a);
    }
    items(s, entryCount);
}
BENCHMARK(lookup_glib);
BENCHMARK(insert_glib);
BENCHMARK(iterate_glib);
BENCHMARK(append_glib);
