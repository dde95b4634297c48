// SPDX-License-Identifier: MIT
// Bytes in any encoding, the first byte choosing which: what is decoded can be encoded again without loss where the
// encoding says so, comes out the same when decoded again, and fits every buffer that is large enough and no other.
#include <Bedrock/Bedrock.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

static void require(bool holds) {
    if (!holds) std::abort();
}

static std::vector<unsigned char> encoded(ZPString *text, ZPStringEncoding encoding, unsigned room, ZPRange range,
                                          ZPRange *rest, BOOL lossy) {
    // Exactly as large as it says, so that a sanitizer sees a write past its end.
    std::vector<unsigned char> bytes(room);
    unsigned filled = 0;
    bool done = text->getBytes_maxLength_filledLength_encoding_allowLossyConversion_range_remainingRange(
        bytes.data(), room, &filled, encoding, lossy, range, rest);
    require(done && filled <= room && rest->location + rest->length == range.location + range.length);
    bytes.resize(filled);
    return bytes;
}

static void checkHostBytes(const std::uint8_t *data, unsigned size, ZPStringEncoding encoding) {
    ZPString *text = _ZPStringFromHostBytes(data, size, encoding);
    std::vector<unsigned char> back(size);
    require(_ZPHostBytesFromString(text, back.data(), size, encoding) == int(size));
    require(size == 0 || std::memcmp(back.data(), data, size) == 0);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    static const ZPStringEncoding encodings[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 21};
    if (size == 0 || size > 1 << 16) return 0;
    ZPAutoreleasePoolScope pool;
    ZPStringEncoding encoding = encodings[data[0] % std::size(encodings)];
    ++data;
    --size;
    checkHostBytes(data, unsigned(size), encoding);

    ZPString *text = ZPString::alloc()->initWithBytes_length_encoding(data, unsigned(size), encoding);
    if (!text) return 0;
    text->autorelease();
    unsigned length = text->length();
    ZPRange whole{0, length}, rest{};
    std::vector<unsigned char> all = encoded(text, encoding, 12 * length + 2, whole, &rest, YES);
    require(rest.length == 0);
    // One way there and back settles the text: what was lost the first time stays as it is.
    ZPString *again = ZPString::alloc()->initWithBytes_length_encoding(all.data(), unsigned(all.size()), encoding);
    require(again);
    again->autorelease();
    if (text->canBeConvertedToEncoding(encoding)) {
        std::vector<unsigned char> second = encoded(again, encoding, 12 * length + 2, {0, again->length()}, &rest, YES);
        ZPString *third =
            ZPString::alloc()->initWithBytes_length_encoding(second.data(), unsigned(second.size()), encoding);
        require(third && third->autorelease()->isEqual(again));
    }
    // In pieces.
    unsigned room = 8 + unsigned(size) % 13;
    std::vector<unsigned char> pieces;
    for (rest = whole; rest.length;) {
        unsigned at = rest.location;
        std::vector<unsigned char> piece = encoded(text, encoding, room, rest, &rest, YES);
        require(rest.location > at);
        pieces.insert(pieces.end(), piece.begin(), piece.end());
    }
    bool marked = encoding == ZPUnicodeStringEncoding, switches = encoding == ZPISO2022JPStringEncoding;
    require(length == 0 || marked || switches || pieces == all);
    // Characters one at a time, where there is a function for them.
    using Decoder = unsigned(const unsigned char **, unsigned, unichar *);
    Decoder *decode = encoding == ZPUTF8StringEncoding          ? ZPUTF8ToUnicode
                      : encoding == ZPJapaneseEUCStringEncoding ? ZPCorvidEUCToUnicode
                      : encoding == ZPShiftJISStringEncoding    ? ZPShiftJISToUnicode
                                                                : nullptr;
    const unsigned char *in = data, *end = data + size;
    for (unsigned at = 0; decode && in < end;) {
        unichar units[2];
        unsigned n = decode(&in, unsigned(end - in), units);
        require(n && at + n <= length);
        for (unsigned i = 0; i < n; ++i) require(text->characterAtIndex(at++) == units[i]);
    }
    return 0;
}
