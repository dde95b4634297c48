// SPDX-License-Identifier: MIT
#include "common.h"
#include "encodings_data.h"

#include <QString>

static void decode_qt(State &s, const std::string &t) {
    REQUIRE(QString::fromUtf8(t.data(), qsizetype(t.size())).toUtf8().toStdString() == t);
    for (auto _ : s) {
        QString x = QString::fromUtf8(t.data(), qsizetype(t.size()));
        DoNotOptimize(x);
    }
    bytes(s, std::int64_t(t.size()));
}
static void encode_qt(State &s, const std::string &t) {
    QString text = QString::fromStdString(t);
    REQUIRE(text.toUtf8().toStdString() == t);
    for (auto _ : s) {
        QByteArray x = text.toUtf8();
        DoNotOptimize(x);
    }
    bytes(s, std::int64_t(t.size()));
}
static void decode_latin1_qt(State &s, const std::string &t) {
    QByteArray source = QString::fromStdString(t).toLatin1();
    REQUIRE(QString::fromLatin1(source).toStdString() == t);
    for (auto _ : s) {
        QString x = QString::fromLatin1(source);
        DoNotOptimize(x);
    }
    bytes(s, source.size());
}
static void encode_latin1_qt(State &s, const std::string &t) {
    QString text = QString::fromStdString(t);
    REQUIRE(QString::fromLatin1(text.toLatin1()) == text);
    for (auto _ : s) {
        QByteArray x = text.toLatin1();
        DoNotOptimize(x);
    }
    bytes(s, text.size());
}
BENCHMARK_CAPTURE(decode_qt, utf8_mixed, mixedText());
BENCHMARK_CAPTURE(decode_qt, utf8_ascii, asciiText());
BENCHMARK_CAPTURE(decode_qt, utf8_cyrillic, cyrillicText());
BENCHMARK_CAPTURE(decode_qt, utf8_japanese, japaneseText());
BENCHMARK_CAPTURE(encode_qt, utf8_mixed, mixedText());
BENCHMARK_CAPTURE(encode_qt, utf8_cyrillic, cyrillicText());
BENCHMARK_CAPTURE(encode_qt, utf8_japanese, japaneseText());
BENCHMARK_CAPTURE(decode_latin1_qt, western, westernText());
BENCHMARK_CAPTURE(encode_latin1_qt, western, westernText());
