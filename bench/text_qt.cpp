// SPDX-License-Identifier: MIT
#include "common.h"

#include <QString>

static void append10k_qt(State &s) {
    for (auto _ : s) {
        QString x;
        for (int i = 0; i < 10000; ++i) x.append(QChar('a' + i % 26));
        DoNotOptimize(x);
    }
    items(s, 10000);
}
BENCHMARK(append10k_qt);
static void concat50_qt(State &s) {
    QString a(50, 'x'), b(50, 'y');
    for (auto _ : s) {
        DoNotOptimize(a);
        QString c = a + b;
        DoNotOptimize(c);
    }
}
BENCHMARK(concat50_qt);
static void format_qt(State &s) {
    const char *name = "Warehouse 7";
    int count = 1234;
    for (auto _ : s) {
        DoNotOptimize(count);
        QString x = QString::asprintf("%s has %d items (%.2f)", name, count, 98.765);
        DoNotOptimize(x);
    }
}
BENCHMARK(format_qt);
static void encode_qt_1M(State &s) {
    QString t = QString::fromUtf8("Größe und Maß überprüfen. Съешь же ещё этих булок. ").repeated(14000);
    qsizetype length = t.toUtf8().size();
    for (auto _ : s) {
        QByteArray x = t.toUtf8();
        DoNotOptimize(x);
    }
    bytes(s, length);
}
BENCHMARK(encode_qt_1M);
