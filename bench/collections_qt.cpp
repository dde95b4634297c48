// SPDX-License-Identifier: MIT
#include "collections_data.h"

#include <QHash>
#include <QList>
#include <QString>

static QList<QString> list(const std::vector<std::string> &v) {
    QList<QString> made;
    for (auto &x : v) made.append(QString::fromStdString(x));
    return made;
}
using Hash = QHash<QString, const int *>;
static const int value = 0;
static void fill(Hash &h, const QList<QString> &k) {
    for (auto &x : k) h.insert(x, &value);
}

static void lookup_qt(State &s) {
    Hash h;
    auto k = list(keys()), p = list(probes());
    fill(h, k);
    for (auto &x : p) REQUIRE(h.value(x) == &value);
    for (auto _ : s)
        for (auto &x : p) keep(*h.constFind(x));
    items(s, entryCount);
}
static void insert_qt(State &s) {
    auto k = list(keys());
    Hash one;
    fill(one, k);
    REQUIRE(one.size() == entryCount);
    for (auto _ : s) {
        Hash h;
        fill(h, k);
        DoNotOptimize(h);
    }
    items(s, entryCount);
}
static void iterate_qt(State &s) {
    Hash h;
    fill(h, list(keys()));
    int seen = 0;
    for (auto i = h.cbegin(); i != h.cend(); ++i) seen += h.constFind(i.key()) == i;
    REQUIRE(seen == entryCount);
    for (auto _ : s)
        for (auto i = h.cbegin(); i != h.cend(); ++i) keep(i.key().constData()), keep(i.value());
    items(s, entryCount);
}
static void sort10k_qt(State &s) {
    QList<QString> v = list(words());
    bool (*before)(const QString &, const QString &) = [](const QString &a, const QString &b) { return a < b; };
    DoNotOptimize(before);
    QList<QString> one(v);
    std::stable_sort(one.begin(), one.end(), before);
    for (int i = 0; i < sortCount; ++i) REQUIRE(one[i].toStdString() == sortedWords()[i]);
    for (auto _ : s) {
        QList<QString> copy(v);
        std::stable_sort(copy.begin(), copy.end(), before);
        DoNotOptimize(copy);
    }
    items(s, sortCount);
}
BENCHMARK(lookup_qt);
BENCHMARK(insert_qt);
BENCHMARK(iterate_qt);
BENCHMARK(sort10k_qt);
