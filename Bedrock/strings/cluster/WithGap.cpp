// SPDX-License-Identifier: MIT
// Strings with a gap where they were last changed, so that changes near it move little.
#include <Bedrock/strings/cluster/Mutable.h>

#include <Bedrock/core/ZPLog.h>

#include <algorithm>

namespace {

// The text of a gap-buffer string as two runs of one buffer.
template <class U> struct Layout {
    const U *buffer;
    unsigned gapBegin, gapEnd, length;

    void copy(unsigned from, unsigned count, U *to) const {
        unsigned before = from < gapBegin ? std::min(count, gapBegin - from) : 0;
        if (before) std::memcpy(to, buffer + from, before * sizeof(U));
        if (count > before)
            std::memcpy(to + before, buffer + from + before + (gapEnd - gapBegin), (count - before) * sizeof(U));
    }
};

template <class S> Layout<typename S::Unit> layoutOf(S *s) {
    return {_ZPBufferOf(s), s->gapBegin, s->gapEnd, _ZPLengthOf(s)};
}

}  // namespace

template <class S> S *_ZPSetRequiredLength(S *s, unsigned length, unsigned position, unsigned remove, bool extraRoom) {
    using Unit = typename S::Unit;
    bool shared = ZPExtraRefCount(s) > 0;
    Layout<Unit> old = layoutOf(s);
    unsigned kept = old.length - remove, tail = kept - position;
    unsigned size = old.length + old.gapEnd - old.gapBegin;
    std::uint64_t capacity = _capacityToExternal(s->_flags.capacity),
                  twice = std::max<std::uint64_t>(capacity, 2 * std::uint64_t(length));
    std::uint64_t want = extraRoom ? std::max<std::uint64_t>(capacity, 3 * std::uint64_t(length) / 2) : length;
    if (want > 0xFFFFFFFF) want = 0xFFFFFFFF;
    bool writable = !shared && s->_flags.canWriteIntoBuffer, owned = !shared && s->_flags.freeWhenDone;
    bool fits = writable && length <= size;

    if (fits && (owned || twice >= size)) {
        Unit *buffer = _ZPBufferOf(s);
        unsigned last = position + remove;
        if (last < old.gapBegin)
            std::memmove(buffer + (size - tail), buffer + last, (old.gapBegin - last) * sizeof(Unit));
        else if (position > old.gapBegin)
            std::memmove(buffer + old.gapBegin, buffer + old.gapEnd, (position - old.gapBegin) * sizeof(Unit));
        if (owned && want < size && (twice < size || (!extraRoom && length < size))) {
            std::memmove(buffer + (want - tail), buffer + (size - tail), tail * sizeof(Unit));
            if (void *smaller =
                    ZPZoneRealloc(ZPZoneFromPointer(buffer), buffer, std::max<std::uint64_t>(want, 1) * sizeof(Unit)))
                _ZPBufferOf(s) = static_cast<Unit *>(smaller);
            size = unsigned(want);
        }
    } else {
        ZPZone *zone = s->zone();
        bool none = size == 0 && length == 0;
        ZPZoneBlock<Unit> block(none ? 1 : want, zone);
        S *target = shared ? _ZPNewStringWithGap<S>(s->_flags.capacity, zone) : s;
        if (position) old.copy(0, position, block.get());
        size = none ? 0 : unsigned(want);
        if (tail) old.copy(position + remove, tail, block.get() + (size - tail));
        Unit *former = owned ? _ZPBufferOf(s) : nullptr;
        _ZPBufferOf(target) = none ? nullptr : block.take();
        target->_flags.freeWhenDone = target->_flags.canWriteIntoBuffer = 1;
        if (former) ZPZoneFree(ZPZoneFromPointer(former), former);
        if (shared) {
            s->release();
            s = target;
        }
    }
    s->gapBegin = position;
    s->gapEnd = position + size - kept;
    _ZPLengthOf(s) = kept;
    return s;
}

template ZPCStringWithGap *_ZPSetRequiredLength(ZPCStringWithGap *, unsigned, unsigned, unsigned, bool);
template ZPUnicodeStringWithGap *_ZPSetRequiredLength(ZPUnicodeStringWithGap *, unsigned, unsigned, unsigned, bool);

void _ZPCopyToGap(ZPCStringWithGap *s, const ZPStringView &view, unsigned from, unsigned count) {
    if (view.bytes) std::memcpy(s->bytes + s->gapBegin, view.bytes + from, count);
    s->gapBegin += count;
    s->numBytes += count;
}

void _ZPCopyToGap(ZPUnicodeStringWithGap *s, const ZPStringView &view, unsigned from, unsigned count) {
    if (count) _ZPCopyUnits(view, from, count, s->characters + s->gapBegin);
    s->gapBegin += count;
    s->numCharacters += count;
}

namespace {

unichar unitOf(char byte) { return _ZPUnitOfByte(static_cast<unsigned char>(byte)); }
unichar unitOf(unichar unit) { return unit; }

template <class S> struct GapMethods : S {
    ZPString *initWithCapacity(unsigned capacity) {
        this->_flags.capacity = _capacityToInternal(capacity) & 0xFFFF;
        return this;
    }
    ZPString *adopt(typename S::Unit *buffer, unsigned length, BOOL freeWhenDone) {
        this->_flags.capacity = 32;
        _ZPBufferOf(this) = buffer;
        _ZPLengthOf(this) = this->gapBegin = this->gapEnd = length;
        this->_flags.freeWhenDone = freeWhenDone != NO;
        return this;
    }
    ZPString *initWithCStringNoCopy_length_freeWhenDone(char *buffer, unsigned length, BOOL freeWhenDone) {
        return adopt(buffer, length, freeWhenDone);
    }
    ZPString *initWithCharactersNoCopy_length_freeWhenDone(unichar *buffer, unsigned length, BOOL freeWhenDone) {
        return adopt(buffer, length, freeWhenDone);
    }
    unichar characterAtIndex(unsigned index) {
        if (index >= _ZPLengthOf(this)) [[unlikely]]
            _ZPRaiseOutOfBounds(this, "characterAtIndex:"_sel);
        return unitOf(_ZPBufferOf(this)[index < this->gapBegin ? index : index + this->gapEnd - this->gapBegin]);
    }
    void getCharacters_range(unichar *buffer, ZPRange range) {
        _ZPCheckRange(this, "getCharacters:range:"_sel, range, _ZPLengthOf(this));
        unsigned end = range.location + range.length, first = std::max(range.location, std::min(end, this->gapBegin));
        auto *text = _ZPBufferOf(this);
        for (unsigned i = range.location; i < first; ++i) *buffer++ = unitOf(text[i]);
        text += this->gapEnd - this->gapBegin;
        for (unsigned i = first; i < end; ++i) *buffer++ = unitOf(text[i]);
    }
    BOOL getBytes_maxLength_filledLength_encoding_allowLossyConversion_range_remainingRange(
        void *buffer, unsigned maxLength, unsigned *filled, ZPStringEncoding encoding, BOOL lossy, ZPRange range,
        ZPRange *remaining) {
        SEL selector = "getBytes:maxLength:filledLength:encoding:allowLossyConversion:range:remainingRange:"_sel;
        if constexpr (sizeof(typename S::Unit) == 1)
            if (encoding == _ZPCStringEncoding) {
                _ZPCheckRange(this, selector, range, this->numBytes);
                unsigned n = std::min(range.length, maxLength);
                if (buffer) layoutOf(static_cast<S *>(this)).copy(range.location, n, static_cast<char *>(buffer));
                if (filled) *filled = n;
                if (remaining) *remaining = {range.location + n, range.length - n};
                return YES;
            }
        _ZPPackGap(static_cast<S *>(this));
        return objc_super<S>(this).template send<BOOL>(selector, buffer, maxLength, filled, encoding, lossy, range,
                                                       remaining);
    }
    id copyWithZone(ZPZone *zone) {
        _ZPPackGap(static_cast<S *>(this));
        return ZP_SUPER(S, copyWithZone)(zone);
    }
    void dealloc() {
        auto *buffer = _ZPBufferOf(this);
        if (this->_flags.freeWhenDone && buffer) ZPZoneFree(ZPZoneFromPointer(buffer), buffer);
        ZPDeallocateObject(this);
    }
    const typename S::Unit *_characters() {
        _ZPPackGap(static_cast<S *>(this));
        return _ZPBufferOf(this);
    }
    // The 8-bit form may be empty and without a buffer; null would say that the form is another.
    const char *_fastCStringContents() {
        const char *p = reinterpret_cast<const char *>(_characters());
        return p ? p : "";
    }
    void _pack() { _ZPPackGap(static_cast<S *>(this)); }
    id _setRequiredLength_gapPosition_delete_extraRoom(unsigned length, unsigned position, unsigned remove,
                                                       BOOL extraRoom) {
        return _ZPSetRequiredLength(static_cast<S *>(this), length, position, remove, extraRoom);
    }
    void _copyToGapRange_fromString(ZPRange range, ZPString *string) {
        ZPStackBuffer<unichar, 256> units(range.length);
        if constexpr (sizeof(typename S::Unit) == 1) {
            unsigned filled = 0;
            BOOL converted = string->getBytes_maxLength_filledLength_encoding_allowLossyConversion_range_remainingRange(
                this->bytes + this->gapBegin, range.length, &filled, _ZPCStringEncoding, NO, range, nullptr);
            if (!converted || filled != range.length)
                ZPLog("Inconsistency in ZPCStringWithGap %s"_zp, sel_getName("_copyToGapRange:fromString:"_sel));
            _ZPCopyToGap(static_cast<S *>(this), {}, 0, range.length);
        } else {
            string->getCharacters_range(units.memory, range);
            _ZPCopyToGap(static_cast<S *>(this), {nullptr, units.memory, range.length}, 0, range.length);
        }
    }
    void _copyToGapLength_fromCString(unsigned length, const char *bytes) {
        _ZPCopyToGap(static_cast<S *>(this), {reinterpret_cast<const unsigned char *>(bytes), nullptr, length}, 0,
                     length);
    }
    void _copyToGapLength_fromCharacters(unsigned length, const unichar *units) {
        _ZPCopyToGap(static_cast<S *>(this), {nullptr, units, length}, 0, length);
    }
};

using ByteGap = GapMethods<ZPCStringWithGap>;
using UnitGap = GapMethods<ZPUnicodeStringWithGap>;

}  // namespace

ZP_IMPLEMENT_WITH(ZPCStringWithGap, ByteGap, initWithCapacity, initWithCStringNoCopy_length_freeWhenDone,
                  characterAtIndex, getCharacters_range,
                  getBytes_maxLength_filledLength_encoding_allowLossyConversion_range_remainingRange, copyWithZone,
                  dealloc, _fastCStringContents, _pack, _setRequiredLength_gapPosition_delete_extraRoom,
                  _copyToGapRange_fromString, _copyToGapLength_fromCString);

ZP_IMPLEMENT_WITH(ZPUnicodeStringWithGap, UnitGap, initWithCapacity, initWithCharactersNoCopy_length_freeWhenDone,
                  characterAtIndex, getCharacters_range,
                  getBytes_maxLength_filledLength_encoding_allowLossyConversion_range_remainingRange, copyWithZone,
                  dealloc, _characters, _pack, _setRequiredLength_gapPosition_delete_extraRoom,
                  _copyToGapRange_fromString, _copyToGapLength_fromCString, _copyToGapLength_fromCharacters);
