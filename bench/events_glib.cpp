// SPDX-License-Identifier: MIT
#include "common.h"

#include <glib-object.h>

static long total;
static void onAdd(GObject *, int v, gpointer) { total += v; }

static void emitGObject(State &s) {
    startOneThread();
    static guint id = g_signal_new("bench-add", G_TYPE_OBJECT, G_SIGNAL_RUN_LAST, 0, nullptr, nullptr, nullptr,
                                   G_TYPE_NONE, 1, G_TYPE_INT);
    auto *object = G_OBJECT(g_object_new(G_TYPE_OBJECT, nullptr));
    for (int i = 0; i < s.range(0); ++i) g_signal_connect(object, "bench-add", G_CALLBACK(onAdd), nullptr);
    total = 0;
    g_signal_emit(object, id, 0, 1);
    REQUIRE(total == s.range(0));
    for (auto _ : s) g_signal_emit(object, id, 0, 1);
    items(s, s.range(0));
    g_object_unref(object);
}
BENCHMARK(emitGObject)->Name("emit, receivers: GObject")->Arg(1)->Arg(10)->Arg(100);
