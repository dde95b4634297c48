// SPDX-License-Identifier: MIT
// Data objects in every form: reading, slicing, changing against a model, sharing, limits.
#include "DataForms.h"

using namespace data;

namespace data {

ZP_IMPLEMENT(ClientData, length, bytes);

const std::vector<Form> &forms() {
    static const std::vector<Form> all = {
        {"copied", make},
        {"adopted",
         [](const std::string &b) {
             if (b.empty()) return ZPData::data();
             void *block = ZPZoneMalloc(nullptr, b.size());
             std::memcpy(block, b.data(), b.size());
             return ZPData::dataWithBytesNoCopy_length(block, unsigned(b.size()));
         }},
        {"pages",
         [](const std::string &b) -> ZPData * {
             void *pages = ZPAllocateMemoryPages(unsigned(b.size()) + 1);
             std::memcpy(pages, b.data(), b.size());
             ZPData *d = ZPData::alloc()->initWithBytes_length_copy_freeWhenDone_bytesAreVM(pages, unsigned(b.size()),
                                                                                            NO, YES, YES);
             if (b.empty()) ZPDeallocateMemoryPages(pages, 1);
             return d->autorelease();
         }},
        {"anonymous mapping",
         [](const std::string &b) -> ZPData * {
             ZPFileMapper *mapper = ZPFileMapper::emptyFileMapperWithLength(unsigned(b.size()) + 1);
             if (void *view = mapper->newReadWriteMappingOfLength(unsigned(b.size()))) {
                 std::memcpy(view, b.data(), b.size());
                 mapper->removeMapping_length(view, unsigned(b.size()));
             }
             return ZPData::alloc()->initWithFileMapper_length(mapper, unsigned(b.size()))->autorelease();
         }},
        {"part",
         [](const std::string &b) {
             return make("before " + b + std::string(64, '.'))->subdataWithRange({7, unsigned(b.size())});
         }},
        {"mutable", [](const std::string &b) -> ZPData * { return makeMutable(b); }},
        {"mutable mapping",
         [](const std::string &b) -> ZPData * {
             ZPFileMapper *mapper = ZPFileMapper::emptyFileMapperWithLength(unsigned(b.size()) + 1);
             auto *d = static_cast<ZPMutableData *>(
                 ZPMutableData::alloc()->initWithFileMapper_length(mapper, unsigned(b.size()))->autorelease());
             d->replaceBytesInRange_withBytes({0, unsigned(b.size())}, b.data());
             return d;
         }},
        {"client",
         [](const std::string &b) -> ZPData * {
             ClientData *d = ClientData::alloc();
             d->_text = b;
             return d->autorelease();
         }},
    };
    return all;
}

}  // namespace data

namespace {

std::string pattern(unsigned length) {
    std::string bytes(length, '\0');
    for (unsigned i = 0; i < length; ++i) bytes[i] = char(i * 7 + i / 256);
    return bytes;
}

/// Supplies the primitives of mutable data alone.
struct ClientMutableData : ZPMutableData {
    ZP_CLASS(ClientMutableData)
    std::string _text;
    unsigned length() { return unsigned(_text.size()); }
    const void *bytes() { return _text.data(); }
    void *mutableBytes() { return _text.data(); }
    void setLength(unsigned n) { _text.resize(n); }
};
ZP_IMPLEMENT(ClientMutableData, length, bytes, mutableBytes, setLength);

}  // namespace

TEST(Data, ReadsTheSameInEveryForm) {
    for (unsigned length : {0u, 1u, 7u, 8u, 9u, 63u, 64u, 4095u, 4096u, 4097u, 70000u}) {
        SCOPED_TRACE(length);
        std::string bytes = pattern(length);
        inEveryForm(bytes, [&](ZPData *d) {
            EXPECT_EQ(textOf(d), bytes);
            EXPECT_TRUE(d->isEqual(make(bytes)));
            EXPECT_TRUE(make(bytes)->isEqualToData(d));
            EXPECT_EQ(d->hash(), make(bytes)->hash());
            EXPECT_FALSE(d->isEqual(make(bytes + "x")));
            EXPECT_FALSE(d->isEqual("text"_zp));
            EXPECT_EQ(textOf(ZPRef<ZPData>(ZPAdopt<ZPData>(d->copy())).get()), bytes);
            ZPRef<ZPMutableData> changed = ZPAdopt<ZPMutableData>(d->mutableCopy());
            EXPECT_EQ(textOf(changed.get()), bytes);
            changed->appendBytes_length("!", 1);
            if (length) *static_cast<char *>(changed->mutableBytes()) ^= 1;
            EXPECT_EQ(textOf(d), bytes) << "the copy is another object";
            char out[8] = {};
            d->getBytes_range(out, {length + 100, 0});
            if (length == 0) return;
            d->getBytes_length(out, 3);
            EXPECT_EQ(std::string(out, 3), (bytes.substr(0, 3) + std::string(3, '\0')).substr(0, 3));
            d->getBytes_range(out, {length - 1, 5});
            EXPECT_EQ(out[0], bytes.back());
            EXPECT_REASON_HAS("location " + std::to_string(length) + " exceeds data length",
                              d->getBytes_range(out, {length, 1}));
        });
    }
}

TEST(Data, IsSliced) {
    std::string bytes = pattern(40000);
    inEveryForm(bytes, [&](ZPData *d) {
        for (ZPRange r : {ZPRange{0, 0}, ZPRange{50000, 0}, ZPRange{1, 63}, ZPRange{1, 64}, ZPRange{39999, 1},
                          ZPRange{100, 32768}, ZPRange{0, 40000}}) {
            ZPData *part = d->subdataWithRange(r);
            ASSERT_EQ(textOf(part), r.length ? bytes.substr(r.location, r.length) : "");
            EXPECT_TRUE(r.length <= 2 || textOf(part->subdataWithRange({1, r.length - 2})) ==
                                             bytes.substr(r.location + 1, r.length - 2));
        }
        EXPECT_REASON_HAS("subdataWithRange:]: range {location = 39990; length = 11} exceeds data length 40000",
                          d->subdataWithRange({39990, 11}));
        EXPECT_REFUSED(d->subdataWithRange({0xFFFFFFFF, 2}));
    });
    ZPData *d = make(bytes);
    EXPECT_EQ(d->subdataWithRange({0, 40000}), d);
    ZPData *part = d->subdataWithRange({10, 64});
    EXPECT_EQ(part->bytes(), static_cast<const char *>(d->bytes()) + 10);
    EXPECT_STREQ(part->isa->name, "ZPSubrangeData");
    EXPECT_NE(d->subdataWithRange({10, 63})->bytes(), static_cast<const char *>(d->bytes()) + 10);
    EXPECT_REFUSED(objc_msgSend<id>(objc_getClass("ZPSubrangeData"), "new"_sel));

    ZPMutableData *m = makeMutable(bytes);
    ZPData *slice = m->subdataWithRange({10, 32768});
    m->resetBytesInRange({0, 40000});
    EXPECT_EQ(textOf(slice), bytes.substr(10, 32768)) << "a slice of mutable data does not change with it";

    ZPData *large = make(std::string(400000, 'x') + "the end"), *rest = large->retain();
    for (int i = 0; i < 300000; ++i) {
        Pool each;
        ZPData *shorter = rest->subdataWithRange({1, rest->length() - 1})->retain();
        rest->release();
        rest = shorter;
    }
    EXPECT_EQ(rest->bytes(), static_cast<const char *>(large->bytes()) + 300000) << "parts of parts make no chain";
    rest->release();
}

TEST(Data, DescribesItselfInHexadecimal) {
    using namespace std::string_literals;
    for (auto &[bytes, wanted] :
         {std::pair{""s, "<>"}, {"\x0a\x0b\x0c\x0d"s, "<0a0b0c0d >"}, {"\0\1\2\3\4\5\6\7"s, "<00010203 04050607 >"}})
        EXPECT_EQ(text(make(bytes)->description()), wanted);
    EXPECT_EQ(make("")->hash(), 0u);
    EXPECT_EQ(make("ab")->hash(), ('b' << 4) + unsigned('a'));
    EXPECT_EQ(make("sixteen bytes...x")->hash(), make("sixteen bytes...y")->hash());
}

TEST(Data, FollowsAModelThroughRandomChanges) {
    std::mt19937 random(11);
    for (int kind = 0; kind < 3; ++kind) {
        SCOPED_TRACE(kind);
        ZPMutableData *d = kind == 0   ? ZPMutableData::dataWithCapacity(0)
                           : kind == 1 ? ZPMutableData::dataWithLength(5000)
                                       : static_cast<ZPMutableData *>(ClientMutableData::alloc()->autorelease());
        std::string model = kind == 1 ? std::string(5000, '\0') : "";
        for (int step = 0; step < 400; ++step) {
            unsigned at = unsigned(random() % (model.size() + 1)), count = unsigned(random() % 300);
            std::string bytes = pattern(count);
            for (char &c : bytes) c = char(random());
            switch (random() % 8) {
            case 0: d->setLength(count * 20), model.resize(count * 20); break;
            case 1: d->increaseLengthBy(count), model.resize(model.size() + count); break;
            case 2: d->appendData(make(bytes)), model += bytes; break;
            case 3:
                d->resetBytesInRange({at, count});
                model.resize(std::max(model.size(), std::size_t(at) + count));
                std::fill_n(model.begin() + at, count, '\0');
                break;
            case 4:
                if (random() % 8 == 0) d->setData(make(bytes)), model = bytes;
                break;
            case 5:  // bytes of its own
                count = unsigned(std::min<std::size_t>(count, model.size() - at));
                d->appendBytes_length(static_cast<const char *>(d->bytes()) + at, count);
                model += model.substr(at, count);
                break;
            default:
                d->replaceBytesInRange_withBytes({at, count}, bytes.data());
                model.resize(std::max(model.size(), std::size_t(at) + count));
                model.replace(at, count, bytes);
            }
            ASSERT_EQ(textOf(d), model) << step;
        }
        unsigned length = unsigned(model.size());
        EXPECT_REFUSED(d->replaceBytesInRange_withBytes({length + 1, 1}, "x"));
        EXPECT_REFUSED(d->resetBytesInRange({length + 1, 1}));
        EXPECT_REASON("", d->replaceBytesInRange_withBytes({length + 1, 0}, "x"));
    }
}

TEST(Data, RefusesAbsurdSizes) {
    EXPECT_REASON("", ZPMutableData::dataWithCapacity(0x3FFFFFFF));
    ZPMutableData *d = makeMutable("text");
    const std::pair<const char *, std::function<void()>> cases[] = {
        {"MutableData initWithCapacity:]: absurd capacity: 1073741824",
         [] { ZPMutableData::dataWithCapacity(0x40000000); }},
        {"Data initWithBytes:length:copy:freeWhenDone:bytesAreVM:]: absurd length: -1",
         [] { ZPData::alloc()->initWithBytes_length("", 0xFFFFFFFF); }},
        {"MutableData setLength:]: absurd length: 1073741824", [=] { d->setLength(0x40000000); }},
        {"MutableData increaseLengthBy:]: absurd extra length: -1", [=] { d->increaseLengthBy(0xFFFFFFFF); }},
    };
    for (auto &[reason, body] : cases) EXPECT_EQ(reasonOf(body), std::string("*** -[ZPConcrete") + reason);
    EXPECT_REFUSED(d->increaseLengthBy(0x3FFFFFFC));
    EXPECT_REFUSED(d->appendBytes_length("x", 0xFFFFFFFF));
    EXPECT_REFUSED(d->replaceBytesInRange_withBytes({2, 0xFFFFFFFF}, "x"));
    EXPECT_REFUSED(d->resetBytesInRange({4, 0x3FFFFFFF}));
    EXPECT_EQ(textOf(d), "text");
}

TEST(Data, SharesLargeMappingsUntilAChange) {
    constexpr unsigned large = (32u << 20) + 5;
    std::string bytes = pattern(large);
    ZPRef<ZPData> d = ZPAdopt(_ZPNewImmutableData(bytes.data(), large, nullptr));
    ASSERT_NE(d->fileMapper(), nullptr);
    EXPECT_TRUE(d->_bytesAreVM());
    ZPRef<ZPMutableData> a = ZPAdopt<ZPMutableData>(d->mutableCopy());
    EXPECT_EQ(a->fileMapper(), d->fileMapper());
    static_cast<char *>(a->mutableBytes())[5000] ^= 1;
    EXPECT_TRUE(std::memcmp(d->bytes(), bytes.data(), large) == 0);

    ZPRef<ZPMutableData> b = ZPAdopt(ZPMutableData::alloc()->initWithLength(large));
    std::memcpy(b->mutableBytes(), bytes.data(), large);
    ZPRef<ZPMutableData> c = ZPAdopt<ZPMutableData>(b->mutableCopy());
    EXPECT_EQ(b->fileMapper(), c->fileMapper());
    static_cast<char *>(b->mutableBytes())[0] = 'b';
    static_cast<char *>(c->mutableBytes())[0] = 'c';
    b->increaseLengthBy(16u << 20);
    EXPECT_NE(b->fileMapper(), c->fileMapper());
    EXPECT_EQ(*static_cast<const char *>(b->bytes()), 'b');
    EXPECT_EQ(*static_cast<const char *>(c->bytes()), 'c');
    EXPECT_TRUE(std::memcmp(static_cast<const char *>(b->bytes()) + 1, bytes.data() + 1, large - 1) == 0);
    ZPRef<ZPMutableData> e = ZPAdopt<ZPMutableData>(c->mutableCopy());
    EXPECT_NE(e->fileMapper(), c->fileMapper()) << "a view that is private already is copied";
    EXPECT_EQ(*static_cast<const char *>(e->bytes()), 'c');
}
