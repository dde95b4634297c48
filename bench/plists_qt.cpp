#include "plists_data.h"

#include <QByteArray>
#include <QJsonDocument>

static void json_read_qt(State &s) {
    auto text = QByteArray::fromStdString(DocumentWriter::text(true));
    REQUIRE(QJsonDocument::fromJson(text).isObject());
    for (auto _ : s) {
        auto d = QJsonDocument::fromJson(text);
        DoNotOptimize(d);
    }
    bytes(s, text.size());
    s.counters["bytes"] = double(text.size());
}
static void json_write_qt(State &s) {
    auto d = QJsonDocument::fromJson(QByteArray::fromStdString(DocumentWriter::text(true)));
    qsizetype n = 0;
    for (auto _ : s) {
        QByteArray out = d.toJson(QJsonDocument::Compact);
        n = out.size();
        DoNotOptimize(out);
    }
    bytes(s, n);
}
static void json_write_indented_qt(State &s) {
    auto d = QJsonDocument::fromJson(QByteArray::fromStdString(DocumentWriter::text(true)));
    qsizetype n = 0;
    for (auto _ : s) {
        QByteArray out = d.toJson();
        n = out.size();
        DoNotOptimize(out);
    }
    bytes(s, n);
}
BENCHMARK(json_read_qt); BENCHMARK(json_write_qt); BENCHMARK(json_write_indented_qt);
