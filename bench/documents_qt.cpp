#include "common.h"
#include "documents_data.h"

#include <QJsonDocument>
#include <QJsonObject>

static void read_qt(State &s) {
    QByteArray text = QByteArray::fromStdString(makeDocument(Notation::json));
    REQUIRE(QJsonDocument::fromJson(text).object().size() == 3200);
    for (auto _ : s) {
        auto d = QJsonDocument::fromJson(text);
        DoNotOptimize(d);
    }
    bytes(s, text.size());
}
BENCHMARK(read_qt);

static void write_qt(State &s) {
    QJsonDocument d = QJsonDocument::fromJson(QByteArray::fromStdString(makeDocument(Notation::json)));
    qsizetype n = 0;
    for (auto _ : s) {
        QByteArray o = d.toJson();
        n = o.size();
        DoNotOptimize(o);
    }
    bytes(s, n);
}
BENCHMARK(write_qt);
