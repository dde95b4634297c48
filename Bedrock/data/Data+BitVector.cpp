// SPDX-License-Identifier: MIT
// Data as bit vectors, plain and compressed.
//
// The compressed form: the bytes with long zero runs taken out, then three bytes for each run {16-bit little-endian
// position in those bytes, length}, the number of runs, and a zero byte. A plain vector does not end in zero.
#include <Bedrock/data/Data+Internal.h>

#include <bit>

namespace {

constexpr unsigned shortestRun = 6, longestRun = 255, mostRuns = 255, lastPosition = 0xFFFF;

// The parts of a compressed vector. What a damaged one claims beyond its bytes is cut off.
struct Compressed {
    const unsigned char *kept, *runs;
    unsigned keptLength, runCount;

    explicit Compressed(ZPDataView v) {
        unsigned most = v.length >= 2 ? (v.length - 2) / 3 : 0;
        runCount = v.length >= 2 ? std::min<unsigned>(v.bytes[v.length - 2], most) : 0;
        keptLength = v.length >= 2 ? v.length - 2 - 3 * runCount : 0;
        kept = v.bytes;
        runs = v.bytes + keptLength;
    }
    // Calls `segment(bytes, length, offset in the plain vector)` until it answers false; answers the plain length.
    template <class F> std::uint64_t each(F segment) const {
        unsigned at = 0;
        std::uint64_t offset = 0;
        for (unsigned i = 0; i <= runCount; ++i) {
            unsigned next =
                i == runCount ? keptLength : std::clamp<unsigned>(runs[3 * i] | runs[3 * i + 1] << 8, at, keptLength);
            if (next > at && !segment(kept + at, next - at, offset)) return offset;
            offset += next - at;
            at = next;
            if (i < runCount) offset += runs[3 * i + 2];
        }
        return offset;
    }
};

bool isCompressed(ZPDataView v) { return v.length && v.bytes[v.length - 1] == 0; }

bool shareBits(const unsigned char *a, const unsigned char *b, unsigned length) {
    for (unsigned i = 0; i < length; ++i)
        if (a[i] & b[i]) return true;
    return false;
}

struct Block : _ZPBlock<unsigned char> {
    explicit Block(unsigned size) : _ZPBlock(_ZPTryAllocate<unsigned char>(size)) {
        if (!get()) _ZPRaiseDataMemory(size);
    }
    ZPData *takeAsData(unsigned length) {
        if (length == 0) return _ZPNewImmutableData(nullptr, 0, nullptr)->autorelease();
        return _ZPNewImmutableDataNoCopy(takeShrunk(length), length, nullptr)->autorelease();
    }
};

struct BitVectorMethods : ZPData {
    BOOL isEqualToBitVector(ZPData *other) {
        ZPDataView a = _ZPViewOfData(this), b = _ZPViewOfData(other);
        if (a.length < b.length) std::swap(a, b);
        if (b.length && std::memcmp(a.bytes, b.bytes, b.length) != 0) return NO;
        return std::all_of(a.bytes + b.length, a.bytes + a.length, [](unsigned char byte) { return byte == 0; });
    }
    BOOL intersectsBitVector(ZPData *other) {
        ZPDataView a = _ZPViewOfData(this), b = _ZPViewOfData(other);
        return shareBits(a.bytes, b.bytes, std::min(a.length, b.length));
    }
    ZPData *intersectionWithBitVector(ZPData *other) {
        ZPDataView a = _ZPViewOfData(this), b = _ZPViewOfData(other);
        unsigned n = std::min(a.length, b.length);
        Block block(n);
        for (unsigned i = 0; i < n; ++i) block[i] = a.bytes[i] & b.bytes[i];
        while (n && block[n - 1] == 0) --n;
        return block.takeAsData(n);
    }
    ZPData *unionWithBitVector(ZPData *other) {
        ZPDataView a = _ZPViewOfData(this), b = _ZPViewOfData(other);
        if (a.length < b.length) std::swap(a, b);
        Block block(a.length);
        if (a.length) std::memcpy(block, a.bytes, a.length);
        for (unsigned i = 0; i < b.length; ++i) block[i] |= b.bytes[i];
        return block.takeAsData(a.length);
    }
    unsigned numberOfSetBits() {
        ZPDataView v = _ZPViewOfData(this);
        std::uint64_t n = 0, word;
        unsigned i = 0;
        for (; i + 8 <= v.length; i += 8) {
            std::memcpy(&word, v.bytes + i, 8);
            n += unsigned(std::popcount(word));
        }
        for (; i < v.length; ++i) n += unsigned(std::popcount(v.bytes[i]));
        return unsigned(n);
    }

    ZPData *_compressIfNeeded() {
        ZPDataView v = _ZPViewOfData(this);
        unsigned length = v.length;
        while (length && v.bytes[length - 1] == 0) --length;
        if (length == v.length && length <= shortestRun - 1) return this;

        struct {
            unsigned at, length;
        } found[mostRuns];
        unsigned count = 0, removed = 0;
        for (unsigned i = 0; length > shortestRun && i < length - shortestRun && count < mostRuns;) {
            if (v.bytes[i]) {
                ++i;
                continue;
            }
            unsigned run = 1;
            while (run < longestRun && i + run < length && v.bytes[i + run] == 0) ++run;
            if (run >= shortestRun) {
                if (i - removed > lastPosition) break;  // the run table could not name the place
                found[count++] = {i, run};
                removed += run;
                if (i + run - 1 > 65534) break;
            }
            i += run;
        }
        if (count == 0)
            return length == v.length ? this
                                      : _ZPNewImmutableData(v.bytes, length, nullptr)->autorelease().as<ZPData>();

        Block block(length - removed + 3 * count + 2);
        unsigned char *out = block, *table = block + (length - removed);
        unsigned from = 0, gone = 0;
        for (unsigned k = 0; k < count; ++k) {
            unsigned position = found[k].at - gone;
            std::memcpy(out, v.bytes + from, found[k].at - from);
            out += found[k].at - from;
            from = found[k].at + found[k].length;
            gone += found[k].length;
            *table++ = static_cast<unsigned char>(position);
            *table++ = static_cast<unsigned char>(position >> 8);
            *table++ = static_cast<unsigned char>(found[k].length);
        }
        std::memcpy(out, v.bytes + from, length - from);
        *table++ = static_cast<unsigned char>(count);
        *table++ = 0;
        return block.takeAsData(unsigned(table - block));
    }
    ZPData *_decompressIfNeeded() {
        ZPDataView v = _ZPViewOfData(this);
        if (!isCompressed(v)) return this;
        ZPMutableData *plain = ZPMutableData::dataWithCapacity(
            unsigned(std::min<std::uint64_t>(10 * std::uint64_t(v.length), _ZPLargestData)));
        std::uint64_t length = Compressed(v).each([&](const unsigned char *bytes, unsigned n, std::uint64_t offset) {
            plain->setLength(unsigned(offset));
            plain->appendBytes_length(bytes, n);
            return true;
        });
        plain->setLength(unsigned(length));
        return plain;
    }
    BOOL _intersectsBitVectorMaybeCompressed(ZPData *other) {
        ZPDataView a = _ZPViewOfData(this), b = _ZPViewOfData(other);
        if (!isCompressed(b)) return shareBits(a.bytes, b.bytes, std::min(a.length, b.length));
        bool common = false;
        Compressed(b).each([&](const unsigned char *bytes, unsigned n, std::uint64_t offset) {
            if (offset >= a.length) return false;
            common = shareBits(a.bytes + offset, bytes, std::min(n, a.length - unsigned(offset)));
            return !common;
        });
        return common;
    }
};

struct MutableBitVectorMethods : ZPMutableData {
    void intersectBitVector(ZPData *other) {
        ZPDataView b = _ZPViewOfData(other);
        if (b.length < self()->length()) self()->setLength(b.length);
        unsigned n = self()->length();
        auto *a = static_cast<unsigned char *>(self()->mutableBytes());
        for (unsigned i = 0; i < n; ++i) a[i] &= b.bytes[i];
    }
    void unite(const unsigned char *bytes, unsigned n, unsigned offset) {
        if (offset + n > self()->length()) self()->setLength(offset + n);
        auto *a = static_cast<unsigned char *>(self()->mutableBytes()) + offset;
        for (unsigned i = 0; i < n; ++i) a[i] |= bytes[i];
    }
    void unionBitVector(ZPData *other) {
        if (other == this) return;
        ZPDataView b = _ZPViewOfData(other);
        unite(b.bytes, b.length, 0);
    }
    void _unionBitVectorMaybeCompressed(ZPData *other) {
        if (other == this) return;
        ZPDataView b = _ZPViewOfData(other);
        if (!isCompressed(b)) {
            unite(b.bytes, b.length, 0);
            return;
        }
        std::uint64_t plain = Compressed(b).each([&](const unsigned char *bytes, unsigned n, std::uint64_t offset) {
            unite(bytes, n, unsigned(offset));
            return true;
        });
        if (plain > self()->length()) self()->setLength(unsigned(plain));
    }
};

}  // namespace

ZP_CATEGORY(ZPData, BitVectorMethods, isEqualToBitVector, intersectsBitVector, intersectionWithBitVector,
            unionWithBitVector, numberOfSetBits, _compressIfNeeded, _decompressIfNeeded,
            _intersectsBitVectorMaybeCompressed);

ZP_CATEGORY(ZPMutableData, MutableBitVectorMethods, intersectBitVector, unionBitVector, _unionBitVectorMaybeCompressed);
