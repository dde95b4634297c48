// SPDX-License-Identifier: MIT
// Bit vectors, plain and compressed.
#include "DataForms.h"

using namespace data;

namespace {

std::string randomVector(std::mt19937 &random, unsigned most) {
    std::string v(random() % most, '\0');
    for (unsigned i = 0; i < v.size();) {
        unsigned run = unsigned(random() % 20 == 0 ? random() % 600 : random() % 9);
        bool zeros = random() % 2;
        for (; run && i < v.size(); --run) v[i++] = zeros ? '\0' : char(random());
    }
    while (!v.empty() && v.back() == 0) v.pop_back();
    return v;
}

}  // namespace

TEST(BitVector, CombinesBitByBit) {
    inEveryForm("\xF0\x0F", [](ZPData *d) {
        EXPECT_EQ(textOf(make("\x0F")->unionWithBitVector(d)), "\xFF\x0F");
        EXPECT_EQ(textOf(d->unionWithBitVector(make("\x0F"))), "\xFF\x0F");
        EXPECT_FALSE(d->intersectsBitVector(make("\x0F")));
        EXPECT_EQ(d->intersectionWithBitVector(make("\x0F"))->length(), 0u);
        EXPECT_EQ(d->numberOfSetBits(), 8u);
        EXPECT_TRUE(d->isEqualToBitVector(make(std::string("\xF0\x0F\0\0", 4))));
        EXPECT_FALSE(d->isEqualToBitVector(make("\xF0\x0F\x01")));
        ZPMutableData *m = static_cast<ZPMutableData *>(d->mutableCopy()->autorelease());
        m->unionBitVector(make("\x01\x00\x80"));
        m->unionBitVector(m);
        m->unionBitVector(make(std::string("\0\0\x80", 3)));
        EXPECT_EQ(textOf(m), "\xF1\x0F\x80");
        m->intersectBitVector(make("\x11\xFF"));
        EXPECT_EQ(textOf(m), "\x11\x0F");
    });
    EXPECT_EQ(textOf(make(std::string("\x0F\0", 2))->intersectionWithBitVector(make(std::string("\x0F\0", 2)))),
              "\x0F");
    EXPECT_EQ(make(std::string(1000, '\x81'))->numberOfSetBits(), 2000u);
}

TEST(BitVector, CompressesLongRunsOfZeros) {
    auto compressed = [](const std::string &v) { return textOf(make(v)->_compressIfNeeded()); };
    ZPData *five = make("12345");
    EXPECT_EQ(five->_compressIfNeeded(), five);
    EXPECT_EQ(compressed(std::string("12345\0\0", 7)), "12345");
    using namespace std::string_literals;
    EXPECT_EQ(compressed("a\0\0\0\0\0\0b"s), "ab\x01\x00\x06\x01\x00"s);
    EXPECT_EQ(compressed("a\0\0\0\0\0b"s), "a\0\0\0\0\0b"s) << "five zeros stay";
    EXPECT_EQ(compressed("a" + std::string(300, '\0') + "b"), "ab\x01\x00\xFF\x01\x00\x2D\x02\x00"s);
}

TEST(BitVector, ComesBackFromItsCompressedForm) {
    std::mt19937 random(13);
    for (int i = 0; i < 300; ++i) {
        Pool inner;
        std::string a = randomVector(random, i < 280 ? 2000 : 200000), b = randomVector(random, 3000);
        ZPData *plain = make(a), *packed = plain->_compressIfNeeded();
        ASSERT_EQ(textOf(packed->_decompressIfNeeded()), a);
        EXPECT_EQ(make(b)->_intersectsBitVectorMaybeCompressed(packed), make(b)->intersectsBitVector(plain));
        ZPMutableData *united = makeMutable(b);
        united->_unionBitVectorMaybeCompressed(packed);
        ASSERT_EQ(textOf(united), textOf(make(b)->unionWithBitVector(plain)));
    }
    // More runs than the table holds, and runs beyond the positions it can name.
    std::string many;
    for (int i = 0; i < 400; ++i) many += "x" + std::string(6, '\0');
    many += "y";
    std::string far = std::string(70000, 'x') + std::string(50, '\0') + "y";
    for (const std::string &v : {many, far}) EXPECT_EQ(textOf(make(v)->_compressIfNeeded()->_decompressIfNeeded()), v);
}

TEST(BitVector, TakesDamagedCompressedFormsWithoutHarm) {
    std::mt19937 random(17);
    for (int i = 0; i < 3000; ++i) {
        Pool inner;
        std::string noise(1 + random() % 30, '\0');
        for (char &c : noise) c = char(random());
        if (noise.size() > 1 && random() % 2) noise[noise.size() - 2] = char(random() % 4);
        noise.back() = 0;
        ZPData *d = make(noise);
        d->_decompressIfNeeded();
        make(std::string(40, '\xFF'))->_intersectsBitVectorMaybeCompressed(d);
        makeMutable("x")->_unionBitVectorMaybeCompressed(d);
    }
    EXPECT_EQ(make(std::string(1, '\0'))->_decompressIfNeeded()->length(), 0u);
}
