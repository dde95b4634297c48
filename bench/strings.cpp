// SPDX-License-Identifier: MIT
// Creating, hashing, comparing and searching strings.
#include "common.h"

#include <Bedrock/core/ZPAutoreleasePool.h>
#include <Bedrock/strings/ZPString.h>

#include <cstring>
#include <string>

#ifdef HAVE_QT
#include <QHash>
#include <QString>
#endif
#ifdef HAVE_GLIB
#include <glib.h>
#endif

static const char k12[] = "file_name.tx";
static const char k60[] = "Projects/2024/Northern Region/reports/quarterly/summary1.txt";
template <int N> const char *text() { return N == 12 ? k12 : k60; }

static ZPString *eightBit(const std::string &s) {
    return ZPString::alloc()->initWithCString_length(s.data(), unsigned(s.size()));
}
static ZPString *sixteenBit(const std::string &s) {
    std::u16string units(s.begin(), s.end());
    return ZPString::alloc()->initWithCharacters_length(units.data(), unsigned(units.size()));
}

// ---- create and release

template <int N> void create_std(State &s) {
    const char *t = text<N>();
    REQUIRE(std::string(t).size() == N);
    for (auto _ : s) {
        DoNotOptimize(t);
        std::string x(t);
        DoNotOptimize(x);
    }
}
template <int N> void bedrock_create(State &s) {
    const char *t = text<N>();
    ZPString *one = ZPString::alloc()->initWithCString_length(t, N);
    REQUIRE(one->length() == N && std::strcmp(one->cString(), t) == 0);
    one->release();
    for (auto _ : s) {
        DoNotOptimize(t);
        ZPString *x = ZPString::alloc()->initWithCString(t);
        DoNotOptimize(x);
        x->release();
    }
}
template <int N> void bedrock_create_autoreleased(State &s) {
    const char *t = text<N>();
    unsigned outer = ZPPushAutoreleasePool(0);
    REQUIRE(std::strcmp(ZPString::stringWithCString(t)->cString(), t) == 0);
    for (auto _ : s) {
        unsigned pool = ZPPushAutoreleasePool(0);
        for (int i = 0; i < 100; ++i) {
            DoNotOptimize(t);
            ZPString *x = ZPString::stringWithCString(t);
            DoNotOptimize(x);
        }
        ZPPopAutoreleasePool(pool);
    }
    items(s, 100);
    ZPPopAutoreleasePool(outer);
}
BENCHMARK(create_std<12>);
BENCHMARK(bedrock_create<12>);
BENCHMARK(bedrock_create_autoreleased<12>);
BENCHMARK(create_std<60>);
BENCHMARK(bedrock_create<60>);
BENCHMARK(bedrock_create_autoreleased<60>);
#ifdef HAVE_QT
template <int N> void create_qstring_latin1(State &s) {
    const char *t = text<N>();
    REQUIRE(QString::fromLatin1(t).toStdString() == t);
    for (auto _ : s) {
        DoNotOptimize(t);
        QString x = QString::fromLatin1(t);
        DoNotOptimize(x);
    }
}
BENCHMARK(create_qstring_latin1<12>);
BENCHMARK(create_qstring_latin1<60>);
#endif
#ifdef HAVE_GLIB
template <int N> void create_grefstring(State &s) {
    const char *t = text<N>();
    char *one = g_ref_string_new(t);
    REQUIRE(g_ref_string_length(one) == N && std::strcmp(one, t) == 0);
    g_ref_string_release(one);
    for (auto _ : s) {
        DoNotOptimize(t);
        char *x = g_ref_string_new(t);
        DoNotOptimize(x);
        g_ref_string_release(x);
    }
}
BENCHMARK(create_grefstring<12>);
BENCHMARK(create_grefstring<60>);
#endif

// ---- hash

static void hash_std(State &s) {
    std::string x = ascii(s.range(0)), y = x;
    REQUIRE(std::hash<std::string>()(x) == std::hash<std::string>()(y) &&
            std::hash<std::string>()("t" + y) != std::hash<std::string>()(x));
    for (auto _ : s) {
        DoNotOptimize(x);
        DoNotOptimize(std::hash<std::string>()(x));
    }
}
static void bedrock_hash(State &s) {
    ZPString *x = eightBit(ascii(s.range(0))), *y = sixteenBit(ascii(s.range(0)));
    REQUIRE(x->hash() == y->hash() && x->hash() != eightBit("t" + ascii(s.range(0)))->hash());
    for (auto _ : s) {
        DoNotOptimize(x);
        DoNotOptimize(x->hash());
    }
}
static void bedrock_hash_units(State &s) {
    ZPString *x = sixteenBit(ascii(s.range(0)));
    REQUIRE(x->hash() == eightBit(ascii(s.range(0)))->hash());
    for (auto _ : s) {
        DoNotOptimize(x);
        DoNotOptimize(x->hash());
    }
}
#define SIZES Arg(12)->Arg(16)->Arg(60)->Arg(1000)
BENCHMARK(hash_std)->SIZES;
BENCHMARK(bedrock_hash)->SIZES;
BENCHMARK(bedrock_hash_units)->SIZES;
#ifdef HAVE_QT
static void hash_qt(State &s) {
    QString x = QString::fromStdString(ascii(s.range(0)));
    REQUIRE(qHash(x, 1) == qHash(QString::fromStdString(ascii(s.range(0))), 1) && qHash(x, 1) != qHash("t" + x, 1));
    for (auto _ : s) {
        DoNotOptimize(x);
        DoNotOptimize(qHash(x, 1));
    }
}
BENCHMARK(hash_qt)->SIZES;
#endif

// ---- equality of equal 60-unit strings in different buffers

static void equal60_std(State &s) {
    std::string a = k60, b = k60;
    REQUIRE(a.data() != b.data() && a == b && a != "other");
    for (auto _ : s) {
        DoNotOptimize(a);
        DoNotOptimize(b);
        DoNotOptimize(a == b);
    }
}
static void equal60(State &s, ZPString *a, ZPString *b) {
    REQUIRE(a != b && a->isEqualToString(b) && !a->isEqualToString("other"_zp));
    for (auto _ : s) {
        DoNotOptimize(a);
        DoNotOptimize(b);
        DoNotOptimize(a->isEqualToString(b));
    }
}
static void bedrock_equal60(State &s) { equal60(s, eightBit(k60), eightBit(k60)); }
static void bedrock_equal60_units(State &s) { equal60(s, sixteenBit(k60), sixteenBit(k60)); }
static void bedrock_equal60_mixed(State &s) { equal60(s, eightBit(k60), sixteenBit(k60)); }
static void bedrock_compare60(State &s) {
    ZPString *a = eightBit(k60), *b = eightBit(k60);
    REQUIRE(a->compare(b) == ZPOrderedSame && a->compare("other"_zp) == ZPOrderedAscending);
    for (auto _ : s) {
        DoNotOptimize(a);
        DoNotOptimize(b);
        DoNotOptimize(a->compare(b));
    }
}
BENCHMARK(equal60_std);
BENCHMARK(bedrock_equal60);
BENCHMARK(bedrock_equal60_units);
BENCHMARK(bedrock_equal60_mixed);
BENCHMARK(bedrock_compare60);
#ifdef HAVE_QT
static void equal60_qt(State &s) {
    QString a = QString::fromLatin1(k60), b = QString::fromLatin1(k60);
    REQUIRE(a.constData() != b.constData() && a == b && a != QString("other"));
    for (auto _ : s) {
        DoNotOptimize(a);
        DoNotOptimize(b);
        DoNotOptimize(a == b);
    }
}
BENCHMARK(equal60_qt);
#endif

// ---- find a 6-unit needle at the end of 10,000 units; its first letters are common in the text

static std::string haystack() { return ascii(10000 - 6) + "theory"; }
static void find10k_std(State &s) {
    std::string h = haystack(), n = "theory";
    REQUIRE(h.find(n) == 9994);
    for (auto _ : s) {
        DoNotOptimize(h);
        DoNotOptimize(h.find(n));
    }
}
static void find10k(State &s, ZPString *h, ZPString *n, unsigned options, unsigned at) {
    REQUIRE(h->rangeOfString_options(n, options).location == at);
    for (auto _ : s) {
        DoNotOptimize(h);
        DoNotOptimize(h->rangeOfString_options(n, options));
    }
}
static void bedrock_find10k(State &s) { find10k(s, eightBit(haystack()), "theory"_zp, 0, 9994); }
static void bedrock_find10k_units(State &s) { find10k(s, sixteenBit(haystack()), "theory"_zp, 0, 9994); }
static void bedrock_find10k_nocase(State &s) {
    find10k(s, eightBit(haystack()), "THEORY"_zp, ZPCaseInsensitiveSearch, 9994);
}
static void bedrock_find10k_backwards(State &s) {
    find10k(s, eightBit("theory" + ascii(9994)), "theory"_zp, ZPBackwardsSearch, 0);
}
// The worst case: every place matches but for one unit far inside the needle.
static void bedrock_find10k_near_matches(State &s) {
    std::string n(200, 'a');
    n[100] = 'b';
    find10k(s, eightBit(std::string(9800, 'a') + n), eightBit(n), 0, 9800);
}
BENCHMARK(find10k_std);
BENCHMARK(bedrock_find10k);
BENCHMARK(bedrock_find10k_units);
BENCHMARK(bedrock_find10k_nocase);
BENCHMARK(bedrock_find10k_backwards);
BENCHMARK(bedrock_find10k_near_matches);
#ifdef HAVE_QT
static void find10k_qt(State &s) {
    QString h = QString::fromStdString(haystack()), n = "theory";
    REQUIRE(h.indexOf(n) == 9994);
    for (auto _ : s) {
        DoNotOptimize(h);
        DoNotOptimize(h.indexOf(n));
    }
}
static void find10k_qt_nocase(State &s) {
    QString h = QString::fromStdString(haystack()), n = "THEORY";
    REQUIRE(h.indexOf(n, 0, Qt::CaseInsensitive) == 9994);
    for (auto _ : s) {
        DoNotOptimize(h);
        DoNotOptimize(h.indexOf(n, 0, Qt::CaseInsensitive));
    }
}
BENCHMARK(find10k_qt);
BENCHMARK(find10k_qt_nocase);
#endif

// ---- upper-case 10,000 units

static std::u16string mixed10k() {
    std::u16string t;
    while (t.size() < 10000)
        t += u"The report is ready. Größe und Maß. Καλημέρα κόσμε. Съешь ещё. 日本語の文字列です。 ";
    t.resize(10000);
    return t;
}
static void bedrock_upper10k(State &s) {
    std::u16string units = mixed10k();
    unsigned pool = ZPPushAutoreleasePool(0);
    ZPString *t = ZPString::alloc()->initWithCharacters_length(units.data(), 10000);
    REQUIRE(t->uppercaseString()->hasPrefix("THE REPORT IS READY. GR\u00d6SSE"_zp));
    for (auto _ : s) {
        unsigned inner = ZPPushAutoreleasePool(0);
        DoNotOptimize(t->uppercaseString());
        ZPPopAutoreleasePool(inner);
    }
    items(s, 10000);
    ZPPopAutoreleasePool(pool);
}
BENCHMARK(bedrock_upper10k);
#ifdef HAVE_QT
static void upper10k_qt(State &s) {
    QString t = QString::fromStdU16String(mixed10k());
    REQUIRE(t.toUpper().startsWith("THE REPORT IS READY. GR\u00d6SSE"));
    for (auto _ : s) {
        DoNotOptimize(t);
        QString x = t.toUpper();
        DoNotOptimize(x);
    }
    items(s, 10000);
}
BENCHMARK(upper10k_qt);
#endif

BENCHMARK_MAIN();
