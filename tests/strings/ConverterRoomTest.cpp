// SPDX-License-Identifier: MIT
// Converters store what they fill and no byte more, whatever room they are told: before a page that cannot be written.
#include "EncodedText.h"

#include <sys/mman.h>

using namespace strings;

namespace {

struct BeforeAWall {
    std::size_t page = std::size_t(sysconf(_SC_PAGESIZE)), pages = 4;
    char *start = static_cast<char *>(
        mmap(nullptr, (pages + 1) * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    BeforeAWall() { EXPECT_EQ(mprotect(start + pages * page, page, PROT_NONE), 0); }
    ~BeforeAWall() { munmap(start, (pages + 1) * page); }
    char *last(std::size_t bytes) { return start + pages * page - bytes; }
};

}  // namespace

TEST(ConverterRoom, NothingIsStoredBehindWhatIsFilled) {
    constexpr const char16_t *alphabets[] = {
        u"abcdefgh ", u"aé", u"abcdefghé", u"жизнь", u"ab日本語の", u"aﾊﾟ本\\", u"a\x3B1\x301",
    };
    BeforeAWall wall;
    std::mt19937 random(11);
    unsigned conversions = 0;
    for (const char16_t *from : alphabets)
        for (int round = 0; round < 150; ++round) {
            std::u16string alphabet = from, units;
            for (unsigned n = random() % 90; n > 0; --n)
                units += random() % 40 ? alphabet[random() % alphabet.size()] : char16_t(random() % 0x180);
            ZPString *string = make(units);
            for (auto *encoding = ZPString::availableStringEncodings(); *encoding; ++encoding)
                for (BOOL lossy : {NO, YES}) {
                    ZPRange whole{0, string->length()};
                    unsigned counted = 0, filled = 0;
                    auto convert = [&](void *buffer, unsigned room, unsigned *bytes) {
                        return getBytes(string, buffer, room, bytes, *encoding, lossy, whole, nullptr);
                    };
                    if (!convert(nullptr, 0x7FFFFFFE, &counted)) continue;
                    std::string exact(counted, '\0');
                    ASSERT_TRUE(convert(exact.data(), counted, &filled));
                    char *buffer = wall.last(counted);
                    ASSERT_TRUE(convert(buffer, 0x7FFFFFFE, &filled));
                    ASSERT_EQ(filled, counted);
                    ASSERT_EQ(std::string(buffer, filled), exact) << "encoding " << *encoding;
                    ++conversions;
                }
        }
    EXPECT_GT(conversions, 15000u);
}
