// SPDX-License-Identifier: MIT
// Strings as data objects.
#include <Bedrock/strings/cluster/Cluster.h>
#include <Bedrock/strings/encodings/Encodings.h>

#include <Bedrock/core/ZPLog.h>
#include <Bedrock/data/ZPData.h>

namespace {

struct DataMethods : ZPString {
    ZPData *dataUsingEncoding_allowLossyConversion(ZPStringEncoding encoding, BOOL lossy) {
        if (encoding == 0) encoding = ZPUnicodeStringEncoding;
        if (!_ZPEncodingIsKnown(encoding)) {
            ZPLog("Unknown encoding %d"_zp, int(encoding));
            return nullptr;
        }
        std::uint64_t length = self()->length();
        if (length == 0) return ZPMutableData::data();
        std::uint64_t room = encoding == ZPUnicodeStringEncoding         ? 2 * length + 2
                             : encoding == ZPASCIIStringEncoding         ? (lossy ? 4 : 1) * length
                             : encoding == ZPUTF8StringEncoding          ? 3 * length
                             : encoding == ZPNonLossyASCIIStringEncoding ? 6 * length
                             : encoding == ZPISO2022JPStringEncoding     ? 12 * length
                             : encoding == ZPJapaneseEUCStringEncoding   ? 2 * length
                             : encoding == ZPShiftJISStringEncoding      ? 2 * length
                                                                         : length;
        ZPRange whole{0, unsigned(length)}, remaining;
        // UTF-8 is measured without being converted.
        std::uint64_t worthMeasuring = encoding == ZPUTF8StringEncoding ? 1 << 14 : 64 << 20;
        unsigned filled = unsigned(room);
        if (room > worthMeasuring &&
            !self()->getBytes_maxLength_filledLength_encoding_allowLossyConversion_range_remainingRange(
                nullptr, 0x7FFFFFFE, &filled, encoding, lossy, whole, nullptr))
            return nullptr;
        room = filled;
        ZPZoneBlock<char> block(room);
        if (!self()->getBytes_maxLength_filledLength_encoding_allowLossyConversion_range_remainingRange(
                block.get(), filled, &filled, encoding, lossy, whole, &remaining))
            return nullptr;
        if (remaining.length)
            ZPException::raise_format(ZPInternalInconsistencyException, "%@: didn't convert all characters"_zp,
                                      _ZPMethodExceptionProem(this, "dataUsingEncoding:allowLossyConversion:"_sel));
        bool worthShrinking = filled < room - room / 4;
        return _ZPNewMutableDataNoCopy(worthShrinking ? block.takeShrunk(filled ? filled : 1) : block.take(), filled,
                                       filled, nullptr)
            ->autorelease();
    }
    ZPData *dataUsingEncoding(ZPStringEncoding encoding) {
        return self()->dataUsingEncoding_allowLossyConversion(encoding, NO);
    }
};

}  // namespace

ZP_CATEGORY(ZPString, DataMethods, dataUsingEncoding_allowLossyConversion, dataUsingEncoding);
