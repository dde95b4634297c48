// SPDX-License-Identifier: MIT
#include "common.h"
#include "documents_data.h"

#include <QJsonDocument>
#include <QJsonObject>

static void read_qt(State &s, Tree which) {
    QByteArray text = QByteArray::fromStdString(makeDocument(which, Notation::json));
    REQUIRE(QJsonDocument::fromJson(text).object().size() == topLevelCount(which));
    for (auto _ : s) {
        auto d = QJsonDocument::fromJson(text);
        DoNotOptimize(d);
    }
}
BOTH_TREES(read_qt);

template <QJsonDocument::JsonFormat Format> static void write_qt(State &s, Tree which) {
    QJsonDocument d = QJsonDocument::fromJson(QByteArray::fromStdString(makeDocument(which, Notation::json)));
    REQUIRE(d.object().size() == topLevelCount(which) && QJsonDocument::fromJson(d.toJson(Format)) == d);
    for (auto _ : s) {
        QByteArray o = d.toJson(Format);
        DoNotOptimize(o);
    }
}
static void write_qt_indented(State &s, Tree which) { write_qt<QJsonDocument::Indented>(s, which); }
static void write_qt_compact(State &s, Tree which) { write_qt<QJsonDocument::Compact>(s, which); }
BOTH_TREES(write_qt_indented);
BOTH_TREES(write_qt_compact);
