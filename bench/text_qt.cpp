// SPDX-License-Identifier: MIT
#include "common.h"

#include <QString>

static void append10k_qt(State &s) {
    auto grown = [] {
        QString x;
        for (int i = 0; i < 10000; ++i) x.append(QChar('a' + i % 26));
        return x;
    };
    REQUIRE(grown().size() == 10000 && grown().endsWith(QChar('a' + 9999 % 26)));
    for (auto _ : s) {
        QString x = grown();
        DoNotOptimize(x);
    }
    items(s, 10000);
}
BENCHMARK(append10k_qt);
static void concat50_qt(State &s) {
    QString a(50, 'x'), b(50, 'y');
    REQUIRE(QString(a + b) == QString(50, 'x') + QString(50, 'y') && QString(a + b).size() == 100);
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
    REQUIRE(QString::asprintf("%s has %d items (%.2f)", name, count, 98.765) ==
            QString("Warehouse 7 has 1234 items (98.77)"));
    for (auto _ : s) {
        DoNotOptimize(count);
        QString x = QString::asprintf("%s has %d items (%.2f)", name, count, 98.765);
        DoNotOptimize(x);
    }
}
BENCHMARK(format_qt);
