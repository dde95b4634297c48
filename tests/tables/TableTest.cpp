// SPDX-License-Identifier: MIT
// Hash tables and map tables: what they keep, give up and report.
#include <support/Objects.h>

ZP_IMPLEMENT(TestItem, dealloc, hash, isEqual);

namespace {

const void *word(std::uintptr_t n) { return reinterpret_cast<const void *>(n); }
std::uintptr_t number(const void *p) { return reinterpret_cast<std::uintptr_t>(p); }

std::string headOf(const char *cls, void *table) {
    return text(ZPString::stringWithFormat("<%s: 0x%lx> "_zp, cls, reinterpret_cast<unsigned long>(table)));
}

TEST(HashTable, ObjectsAreReplacedByEqualOnes) {
    ZPHashTable *table = ZPCreateHashTable(ZPObjectHashCallBacks, 0);
    TestItem *one = TestItem::with(1), *other = TestItem::with(1);
    ZPHashInsert(table, one);
    EXPECT_EQ(ZPHashInsertIfAbsent(table, other), one);
    EXPECT_EQ(retained(one, other), (Counts{2, 1}));
    for (int i = 0; i < 2; ++i) {
        ZPHashInsert(table, other);
        EXPECT_EQ(retained(one, other), (Counts{1, 2})) << "also the same object again";
    }
    EXPECT_EQ(ZPHashGet(table, one), other);
    ZPHashRemove(table, one);
    EXPECT_EQ(retained(one, other), (Counts{1, 1}));
    ZPHashInsert(table, one);
    ZPFreeHashTable(table);
    EXPECT_EQ(one->retainCount(), 1u);
    table = ZPCreateHashTable(ZPOwnedObjectIdentityHashCallBacks, 0);
    for (TestItem *item : {one, other}) ZPHashInsert(table, item);
    EXPECT_EQ(ZPCountHashTable(table), 2u) << "identity keeps equal objects apart";
    ZPFreeHashTable(table);
}

TEST(HashTable, StructuresAreEqualByTheirFirstWord) {
    struct Pair {
        std::uintptr_t key, value;
    };
    auto make = [](std::uintptr_t key, std::uintptr_t value) {
        return new (std::malloc(sizeof(Pair))) Pair{key, value};
    };
    ZPHashTable *table = ZPCreateHashTable(ZPPointerToStructHashCallBacks, 0);
    ZPHashInsert(table, make(1, 10));
    ZPHashInsert(table, make(1, 11));  // frees the first
    ZPHashInsert(table, make(2, 20));
    Pair probe{1, 0};
    EXPECT_EQ(static_cast<Pair *>(ZPHashGet(table, &probe))->value, 11u);
    ZPFreeHashTable(table);
}

TEST(HashTable, PointersFarApartAreFoundAsQuickly) {
    constexpr std::uintptr_t count = 200000;
    for (unsigned shift : {16u, 20u, 26u}) {  // as large blocks lie: in one chain they took 6 to 21 s
        auto begin = std::chrono::steady_clock::now();
        ZPHashTable *table = ZPCreateHashTable(ZPNonOwnedPointerHashCallBacks, 0);
        for (std::uintptr_t i = 1; i <= count; ++i) ZPHashInsert(table, word(0x550000000000 + (i << shift)));
        EXPECT_EQ(ZPCountHashTable(table), count);
        ZPFreeHashTable(table);
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(3)) << shift;
    }
}

TEST(HashTable, ByteStrings) {
    ZPHashTable *table = ZPCreateHashTable(_ZPByteStringHashCallBacks, 0);
    auto hash = [&](const char *s) { return _ZPByteStringHashCallBacks.hash(table, s); };
    EXPECT_EQ(hash(nullptr), 0u);
    EXPECT_EQ(hash("\x80"), 0xFFFFFF80u);
    EXPECT_EQ(hash("a\x80"), 0x61u ^ 0xFFFF8000u);
    EXPECT_EQ(hash("abc\x80"), 0x80636261u);
    char key[] = "name";
    ZPHashInsert(table, "name");
    EXPECT_STREQ(static_cast<char *>(ZPHashGet(table, key)), "name");
    EXPECT_FALSE(ZPHashGet(table, "names"));
    ZPFreeHashTable(table);
}

TEST(HashTable, ComparesAndCopies) {
    ZPHashTable *a = ZPCreateHashTable(ZPObjectHashCallBacks, 0);
    TestItem *item = nullptr;
    for (int i = 0; i < 20; ++i) ZPHashInsert(a, item = TestItem::with(i));
    ZPHashTable *b = ZPCopyHashTableWithZone(a, nullptr);
    EXPECT_TRUE(ZPCompareHashTables(a, b));
    EXPECT_EQ(item->retainCount(), 3u);
    ZPHashRemove(b, item);
    EXPECT_FALSE(ZPCompareHashTables(a, b));
    ZPHashInsert(b, TestItem::with(99));
    EXPECT_FALSE(ZPCompareHashTables(a, b));
    for (ZPHashTable *each : {a, b}) ZPFreeHashTable(each);
    EXPECT_EQ(item->retainCount(), 1u);
}

TEST(HashTable, Errors) {
    ZPHashTable *table = ZPCreateHashTable(ZPIntHashCallBacks, 0);
    ZPHashInsert(table, word(255));
    const std::pair<const char *, std::function<void()>> cases[] = {
        {"ZPHashInsert(): attempt to insert NULL pointer", [=] { ZPHashInsert(table, nullptr); }},
        {"ZPHashInsertKnownAbsent(): attempt to insert NULL pointer", [=] { ZPHashInsertKnownAbsent(table, nullptr); }},
        {"ZPHashInsertIfAbsent(): attempt to insert NULL pointer", [=] { ZPHashInsertIfAbsent(table, nullptr); }},
        {"ZPHashRemove(): attempt to remove NULL pointer", [=] { ZPHashRemove(table, nullptr); }},
        {"ZPHashInsertKnownAbsent(): item already in table: 0xff", [=] { ZPHashInsertKnownAbsent(table, word(255)); }},
    };
    for (auto &[reason, body] : cases) EXPECT_EQ(raised(body), invalid(reason));
    ZPFreeHashTable(table);
    for (unsigned capacity : {357913942u, ~0u}) EXPECT_REFUSED(ZPCreateHashTable(ZPIntHashCallBacks, capacity));
}

TEST(HashTable, DescriptionAndArray) {
    ZPHashTable *table = ZPCreateHashTable(ZPObjectHashCallBacks, 7);
    std::string head = headOf("ZPHashTable", table);
    EXPECT_EQ(text(ZPStringFromHashTable(table)), head + "()");
    ZPHashInsert(table, "a"_zp);
    ZPHashInsert(table, "b"_zp);
    EXPECT_EQ(text(ZPStringFromHashTable(table)), head + "(b, a)");
    EXPECT_TRUE(ZPAllHashTableObjects(table)->isEqual(ZPArray::arrayWithObjects("b"_zp, "a"_zp)));
    ZPFreeHashTable(table);
}

TEST(MapTable, InsertionKeepsTheKeyAndReleasesTheOldValue) {
    ZPMapTable *table = ZPCreateMapTable(ZPObjectMapKeyCallBacks, ZPObjectMapValueCallBacks, 0);
    TestItem *key = TestItem::with(1), *equal = TestItem::with(1), *v1 = TestItem::with(10), *v2 = TestItem::with(20);
    auto counts = [&] { return retained(key, equal, v1, v2); };
    ZPMapInsert(table, key, v1);
    ZPMapInsert(table, equal, v2);
    EXPECT_EQ(counts(), (Counts{2, 1, 1, 2}));
    void *storedKey, *value;
    EXPECT_TRUE(ZPMapMember(table, equal, &storedKey, &value));
    EXPECT_TRUE(storedKey == key && value == v2);
    EXPECT_EQ(ZPMapInsertIfAbsent(table, equal, v1), key);
    ZPMapInsert(table, key, v2);
    EXPECT_EQ(counts(), (Counts{2, 1, 1, 2})) << "the same value again";
    ZPMapRemove(table, equal);
    EXPECT_EQ(counts(), (Counts{1, 1, 1, 1}));
    EXPECT_EQ(ZPMapInsertIfAbsent(table, key, v1), nullptr);
    ZPMapTable *copy = ZPCopyMapTableWithZone(table, nullptr);
    EXPECT_EQ(v1->retainCount(), 3u);
    ZPMapInsert(copy, key, v2);
    EXPECT_TRUE(ZPCompareMapTables(table, copy)) << "values do not count";
    ZPResetMapTable(table);
    EXPECT_FALSE(ZPCompareMapTables(table, copy));
    ZPFreeMapTable(table);
    ZPFreeMapTable(copy);
    EXPECT_EQ(counts(), (Counts{1, 1, 1, 1}));
}

TEST(MapTable, MarkersAndNullValues) {
    const void *none = ZPNotAnIntMapKey;
    ZPMapTable *ints = ZPCreateMapTable(ZPIntMapKeyCallBacks, ZPIntMapValueCallBacks, 0);
    ZPMapInsert(ints, word(7), word(8));
    const std::pair<const char *, std::function<void()>> cases[] = {
        {"ZPMapInsert(): attempt to insert notAKeyMarker", [=] { ZPMapInsert(ints, none, nullptr); }},
        {"ZPMapInsertKnownAbsent(): attempt to insert notAKeyMarker",
         [=] { ZPMapInsertKnownAbsent(ints, none, nullptr); }},
        {"ZPMapInsertIfAbsent(): attempt to insert notAKeyMarker", [=] { ZPMapInsertIfAbsent(ints, none, nullptr); }},
        {"ZPMapRemove(): attempt to remove notAKeyMarker", [=] { ZPMapRemove(ints, none); }},
        {"ZPMapInsertKnownAbsent(): key already in table: 0x7", [=] { ZPMapInsertKnownAbsent(ints, word(7), none); }},
    };
    for (auto &[reason, body] : cases) EXPECT_EQ(raised(body), invalid(reason));
    EXPECT_EQ(ZPMapGet(ints, none), nullptr);
    EXPECT_EQ(ZPMapGet(ints, word(7)), word(8));
    ZPMapInsert(ints, word(0), nullptr);
    EXPECT_TRUE(ZPMapMember(ints, word(0), nullptr, nullptr));
    EXPECT_FALSE(ZPMapMember(ints, word(1), nullptr, nullptr));
    ZPMapTable *pointers = ZPCreateMapTable(ZPNonOwnedPointerMapKeyCallBacks, ZPIntMapValueCallBacks, 0),
               *orNull = ZPCreateMapTable(ZPNonOwnedPointerOrNullMapKeyCallBacks, ZPIntMapValueCallBacks, 0);
    EXPECT_REFUSED(ZPMapInsert(pointers, nullptr, nullptr));
    ZPMapInsert(orNull, nullptr, word(3));
    EXPECT_EQ(ZPMapGet(orNull, nullptr), word(3));
    EXPECT_REFUSED(ZPMapInsert(orNull, ZPNotAPointerMapKey, nullptr));
    for (ZPMapTable *each : {ints, pointers, orNull}) ZPFreeMapTable(each);
}

TEST(MapTable, OwnedPointersAreFreed) {  // the leak checker watches
    TestZone zone;
    ZPMapTable *table =
        ZPCreateMapTableWithZone(ZPOwnedPointerMapKeyCallBacks, ZPOwnedPointerMapValueCallBacks, 0, zone);
    for (int i = 0; i < 50; ++i) ZPMapInsert(table, std::malloc(8), i % 2 ? std::malloc(8) : ZPZoneMalloc(zone, 8));
    EXPECT_EQ(ZPZoneFromPointer(table), zone.zone);
    EXPECT_EQ(ZPZoneFromPointer(table->dictionary), zone.zone);
    ZPFreeMapTable(table);
}

TEST(MapTable, DescriptionEnumerationAndArrays) {
    ZPMapTable *table = ZPCreateMapTable(ZPObjectMapKeyCallBacks, ZPIntMapValueCallBacks, 7);
    std::string head = headOf("ZPMapTable", table);
    EXPECT_EQ(text(ZPStringFromMapTable(table)), head + "{}");
    ZPMapInsert(table, "a"_zp, word(1));
    ZPMapInsert(table, "b"_zp, word(0));
    EXPECT_EQ(text(ZPStringFromMapTable(table)), head + "{b = 0x0;\na = 0x1;\n}");
    ZPMapEnumerator e = ZPEnumerateMapTable(table);
    void *key, *value;
    EXPECT_TRUE(ZPNextMapEnumeratorPair(&e, &key, &value));
    EXPECT_EQ(value, nullptr);
    EXPECT_TRUE(ZPNextMapEnumeratorPair(&e, &key, &value));
    EXPECT_EQ(number(value), 1u);
    EXPECT_FALSE(ZPNextMapEnumeratorPair(&e, &key, &value));
    EXPECT_TRUE(ZPAllMapTableKeys(table)->isEqual(ZPArray::arrayWithObjects("b"_zp, "a"_zp)));
    ZPFreeMapTable(table);
    ZPMapTable *values = ZPCreateMapTable(ZPIntMapKeyCallBacks, ZPObjectMapValueCallBacks, 7);
    ZPMapInsert(values, word(1), "x"_zp);
    EXPECT_TRUE(ZPAllMapTableValues(values)->isEqual(ZPArray::arrayWithObjects("x"_zp)));
    ZPFreeMapTable(values);
}

}  // namespace
