// SPDX-License-Identifier: MIT
#include "common.h"

#include <QObject>

class QTally : public QObject {
    Q_OBJECT
  public:
    long total = 0;
    Q_INVOKABLE void add(int v) { total += v; }
};

static void qt_metacall_by_index(State &s) {
    QTally o;
    int i = o.metaObject()->indexOfMethod("add(int)"), v = 3;
    void *argv[] = {nullptr, &v};
    QMetaObject::metacall(&o, QMetaObject::InvokeMetaMethod, i, argv);
    REQUIRE(o.total == 3);
    for (auto _ : s) {
        DoNotOptimize(v);
        QMetaObject::metacall(&o, QMetaObject::InvokeMetaMethod, i, argv);
    }
    DoNotOptimize(o.total);
}
BENCHMARK(qt_metacall_by_index);

#include "dispatch_qt.moc"
