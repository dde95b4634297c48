// SPDX-License-Identifier: MIT
// Bytes of the host that need not be text.
#include "EncodedText.h"

using namespace strings;

namespace {

std::string throughString(const std::string &bytes, ZPStringEncoding e) {
    ZPString *text = _ZPStringFromHostBytes(bytes.data(), unsigned(bytes.size()), e);
    int size = _ZPHostBytesFromString(text, nullptr, 0, e);
    if (size < 0) return "<fails>";
    std::string back(std::size_t(size), '\0');
    EXPECT_EQ(_ZPHostBytesFromString(text, back.data(), unsigned(size), e), size);
    if (size) {
        EXPECT_EQ(_ZPHostBytesFromString(text, back.data(), unsigned(size) - 1, e), -1);
    }
    return back;
}

}  // namespace

TEST(HostBytes, ComeBackAsTheyWere) {
    std::mt19937 random(17);
    for (ZPStringEncoding e : everyEncoding) {
        SCOPED_TRACE(e);
        for (unsigned first = 0; first < 256; ++first)
            for (unsigned second = 0; second < 256; second += 1 + first % 3) {
                std::string bytes{char(first), char(second), 'x'};
                ASSERT_EQ(throughString(bytes, e), bytes) << first << " " << second;
            }
        for (int i = 0; i < 1000; ++i) {
            std::string bytes(random() % 24, '\0');
            for (char &c : bytes) c = char(random() % 4 ? random() | 0x80 : random());
            ASSERT_EQ(throughString(bytes, e), bytes);
        }
    }
}

TEST(HostBytes, AreTextWhereTheyCanBe) {
    const std::tuple<ZPStringEncoding, std::string, std::u16string> cases[] = {
        {ZPUTF8StringEncoding, "caf\xC3\xA9 \xF0\x9F\x98\x80", u"caf\u00e9 \U0001F600"},
        {ZPUTF8StringEncoding, "caf\xE9", {'c', 'a', 'f', 0xDCE9}},
        {ZPUTF8StringEncoding, "\xED\xA0\x80", {0xDCED, 0xDCA0, 0xDC80}},  // no half pairs
        {ZPUTF8StringEncoding, "\xC0\xAF", {0xDCC0, 0xDCAF}},  // no second spelling of a slash
        {ZPISOLatin1StringEncoding, "caf\xE9", u"caf\u00e9"},
        {ZPShiftJISStringEncoding, "\x93\xFA\x80", {0x65E5, 0xDC80}},
        {ZPUnicodeStringEncoding, "caf\xC3\xA9", u"caf\u00e9"},  // read as UTF-8
    };
    for (auto &[e, bytes, units] : cases)
        EXPECT_EQ(textOf(_ZPStringFromHostBytes(bytes.data(), unsigned(bytes.size()), e)), units) << bytes;
    EXPECT_EQ(_ZPHostBytesFromString(make(std::u16string{0xD800}), nullptr, 0, ZPUTF8StringEncoding), -1);
    EXPECT_EQ(_ZPHostBytesFromString(make(u"\u4e2d"), nullptr, 0, ZPISOLatin1StringEncoding), -1);
}
