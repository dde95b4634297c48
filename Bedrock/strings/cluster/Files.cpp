// SPDX-License-Identifier: MIT
// Whole texts to and from files.
#include <Bedrock/data/ZPData.h>
#include <Bedrock/core/ZPRef.h>
#include <Bedrock/strings/cluster/Cluster.h>

namespace {

struct FileMethods : ZPString {
    bool measure(ZPStringEncoding encoding, unsigned *bytes) {
        return self()->getBytes_maxLength_filledLength_encoding_allowLossyConversion_range_remainingRange(
            nullptr, 0x7FFFFFFE, bytes, encoding, NO, {0, self()->length()}, nullptr);
    }
    BOOL writeToFile_atomically(ZPString *path, BOOL atomically) {
        unsigned bytes = 0;
        ZPRange whole{0, self()->length()}, rest{};
        ZPStringEncoding encoding = _ZPDefaultCStringEncoding();
        if (!measure(encoding, &bytes) && !measure(encoding = ZPUnicodeStringEncoding, &bytes)) return NO;
        ZPZoneBlock<char> block(std::size_t(bytes) + 4);
        if (!self()->getBytes_maxLength_filledLength_encoding_allowLossyConversion_range_remainingRange(
                block.get(), bytes, &bytes, encoding, NO, whole, &rest) ||
            rest.length)
            return NO;
        return _ZPWriteBytesToFile(path, block.get(), bytes, atomically);
    }
    ZPString *initWithContentsOfFile(ZPString *path) {
        ZPRef<ZPData> data = ZPAdopt<ZPData>(path ? ZPData::alloc()->initWithContentsOfFile(path) : nullptr);
        if (!data) {
            self()->release();
            return nullptr;
        }
        unsigned length = data->length();
        auto *bytes = static_cast<const unsigned char *>(data->bytes());
        bool marked = length >= 2 && length % 2 == 0 &&
                      ((bytes[0] == 0xFE && bytes[1] == 0xFF) || (bytes[0] == 0xFF && bytes[1] == 0xFE));
        return self()->initWithData_encoding(data, marked ? ZPUnicodeStringEncoding : _ZPDefaultCStringEncoding());
    }
    static ZPString *stringWithContentsOfFile(Class, ZPString *path) {
        ZPString *s = _ZPPlaceholderStringFromZone(nullptr)->initWithContentsOfFile(path);
        return s ? s->autorelease() : id();
    }
};

}  // namespace

ZP_CATEGORY(ZPString, FileMethods, writeToFile_atomically, initWithContentsOfFile,
            classMethods(stringWithContentsOfFile));
