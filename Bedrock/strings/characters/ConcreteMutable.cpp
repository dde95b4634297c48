// SPDX-License-Identifier: MIT
// The concrete character set and its states. References are counted beside the instance.
#include <Bedrock/core/ZPAllocation.h>
#include <Bedrock/core/ZPRef.h>
#include <Bedrock/core/ZPException.h>
#include <Bedrock/core/ZPLog.h>
#include <Bedrock/data/ZPData.h>
#include <Bedrock/strings/characters/Characters.h>
#include <Bedrock/strings/cluster/Cluster.h>

namespace {

unsigned char *newBits(ZPZone *zone) {
    auto *bits = _ZPAllocateCleared<unsigned char>(_ZPBitmapBytes, zone, "a character set");
    return bits;
}

[[noreturn]] ZP_COLD void refuseChange(ZPCharacterSet *set, SEL selector) {
    ZPLog("ZPConcreteMutableCharacterSet: attempted mutation of immutable instance\n"_zp);
    ZPException::raise_format(ZPInvalidArgumentException, "%s %s: Illegal operation on this class or instance"_zp,
                              set->isa->name, sel_getName(selector));
}

struct ConcreteCharacterSetMethods : ZPConcreteMutableCharacterSet {
    // ---- making ----

    id init() {
        if (!set && !bits) {
            static constexpr unsigned char none[_ZPBitmapBytes] = {};
            set = ZPMakeSetStructFromBitmap(none);
        }
        return this;
    }
    ZPCharacterSet *_initWithSet(ZPCharacterSetRecord *record) {
        set = record;
        return this;
    }
    ZPCharacterSet *initWithRange(ZPRange range) {
        _ZPSetBits(ownBits(), range, true);
        return this;
    }
    ZPCharacterSet *initWithCharactersInString(ZPString *string) {
        ZPRef<ZPCharacterSet> own = ZPRef<ZPCharacterSet>::adopt(this);  // the string may be anybody's
        _ZPSetBits(ownBits(), string, true);
        return own.detach();
    }
    ZPCharacterSet *initWithBitmapRepresentation(ZPData *given) {
        ZPRef<ZPCharacterSet> own = ZPRef<ZPCharacterSet>::adopt(this);  // the data may be anybody's
        ZPRef<ZPData> copy = ZPAdopt<ZPData>(given->copyWithZone(self()->zone()));
        if (copy->length() == _ZPBitmapBytes) {
            data = copy.detach();
            bits = static_cast<unsigned char *>(const_cast<void *>(data->bytes()));
        } else {
            // What is missing counts as zero.
            unsigned char *own = ownBits();
            if (copy) copy->getBytes_length(own, _ZPBitmapBytes);
        }
        return own.detach();
    }
    void dealloc() {
        freeBits();
        ZPZoneFree(ZPZoneFromPointer(set), set);
        ZP_SUPER(ZPConcreteMutableCharacterSet, dealloc)();
    }

    // ---- reading ----

    BOOL characterIsMember(unichar u) { return has(u); }
    BOOL isMutable() { return mayChange != 0; }
    void makeImmutable() { mayChange = 0; }
    BOOL isEmpty() { return ConcreteCharacterSetMethods::count() == 0; }
    unsigned count() { return bits ? ZPSetBitmap(this).count() : set ? set->count() : 0; }
    ZPData *bitmapRepresentation() {
        if (!data && !mayChange) return ZPSetBitmap(this).data();
        if (!data) {
            makeFast();
            data = ZPData::alloc()->initWithBytesNoCopy_length(bits, _ZPBitmapBytes);
        }
        return data->retain()->autorelease();
    }
    ZPCharacterSet *invertedSet() {
        if (!mayChange) return ZP_SUPER(ZPConcreteMutableCharacterSet, invertedSet)();
        ZPRef<ZPMutableCharacterSet> copy = ZPAdopt<ZPMutableCharacterSet>(self()->mutableCopyWithZone(nullptr));
        copy->invert();
        return std::move(copy).autoreleased();
    }
    id copyWithZone(ZPZone *zone) {
        if (!mayChange && ZPShouldRetainWithZone(this, zone)) return self()->retain();
        ZPCharacterSet *copy = self()->mutableCopyWithZone(zone);
        copy->makeImmutable();
        return copy;
    }
    id mutableCopyWithZone(ZPZone *zone) {
        auto copy = ZPAdopt(make(zone));
        if (data) {
            copy->data = data->copyWithZone(zone);
            copy->bits = static_cast<unsigned char *>(const_cast<void *>(copy->data->bytes()));
        } else if (bits) std::memcpy(copy->ownBits(), bits, _ZPBitmapBytes);
        else copy->set = ZPCopySetStructFromZone(set, nullptr);
        return copy.detach();
    }

    // ---- the states ----

    void makeCharacterSetFast() { makeFast(); }
    void makeCharacterSetCompact() { makeCompact(); }
    BOOL isCompact() { return bits != nullptr; }
    void _makeSelfMutable() {
        if (data) ownBits();
    }
    void freeBitsAndReleaseDataIfNecessary() { freeBits(); }
    ZPString *dump() {
        return bits || !set ? ZPCharacterSet::_dumpBitmapRepresentation(bits)
                            : ZPCharacterSet::_dumpSetRepresentation(set);
    }

    // ---- changes ----

    unsigned char *change(SEL selector) {
        if (!mayChange) refuseChange(this, selector);
        return ownBits();
    }
    void addCharactersInRange(ZPRange range) { _ZPSetBits(change("addCharactersInRange:"_sel), range, true); }
    void removeCharactersInRange(ZPRange range) { _ZPSetBits(change("removeCharactersInRange:"_sel), range, false); }
    void addCharactersInString(ZPString *string) { _ZPSetBits(change("addCharactersInString:"_sel), string, true); }
    void removeCharactersInString(ZPString *string) {
        _ZPSetBits(change("removeCharactersInString:"_sel), string, false);
    }
    template <class F> void combine(SEL selector, ZPCharacterSet *other, F operation) {
        if (!mayChange) refuseChange(this, selector);
        if (!other) return;
        ZPSetBitmap its(other);  // a client's set may ask the receiver
        unsigned char *own = ownBits();
        for (unsigned i = 0; i < _ZPBitmapBytes; i += 8) {
            std::uint64_t a, b;
            std::memcpy(&a, own + i, 8);
            std::memcpy(&b, its.bits + i, 8);
            a = operation(a, b);
            std::memcpy(own + i, &a, 8);
        }
    }
    void formUnionWithCharacterSet(ZPCharacterSet *other) {
        combine("formUnionWithCharacterSet:"_sel, other, [](std::uint64_t a, std::uint64_t b) { return a | b; });
    }
    void formIntersectionWithCharacterSet(ZPCharacterSet *other) {
        combine("formIntersectionWithCharacterSet:"_sel, other, [](std::uint64_t a, std::uint64_t b) { return a & b; });
    }
    void invert() {
        unsigned char *own = change("invert"_sel);
        for (unsigned i = 0; i < _ZPBitmapBytes; ++i) own[i] = ~own[i];
    }
};

}  // namespace

ZPConcreteMutableCharacterSet *ZPConcreteMutableCharacterSet::make(ZPZone *zone) {
    ZPConcreteMutableCharacterSet *made = ZPAllocateObject(class_(), 0, zone);
    made->mayChange = 1;
    return made;
}

void ZPConcreteMutableCharacterSet::freeBits() {
    if (data) data->release();
    else ZPZoneFree(ZPZoneFromPointer(bits), bits);
    data = nullptr;
    bits = nullptr;
}

void ZPConcreteMutableCharacterSet::makeFast() {
    if (bits) return;
    bits = newBits(self()->zone());
    if (set) set->addTo(bits);
    ZPZoneFree(ZPZoneFromPointer(set), set);
    set = nullptr;
}

void ZPConcreteMutableCharacterSet::makeCompact() {
    if (!bits) return;
    set = ZPMakeSetStructFromBitmap(bits);
    freeBits();
}

unsigned char *ZPConcreteMutableCharacterSet::ownBits() {
    if (data) {
        unsigned char *copy = newBits(self()->zone());
        std::memcpy(copy, bits, _ZPBitmapBytes);
        freeBits();
        bits = copy;
    }
    makeFast();
    return bits;
}

ZP_IMPLEMENT_WITH(ZPConcreteMutableCharacterSet, ConcreteCharacterSetMethods, init, _initWithSet, initWithRange,
                  initWithCharactersInString, initWithBitmapRepresentation, dealloc, characterIsMember, isMutable,
                  makeImmutable, isEmpty, count, bitmapRepresentation, invertedSet, copyWithZone, mutableCopyWithZone,
                  makeCharacterSetFast, makeCharacterSetCompact, isCompact, _makeSelfMutable,
                  freeBitsAndReleaseDataIfNecessary, dump, addCharactersInRange, removeCharactersInRange,
                  addCharactersInString, removeCharactersInString, formUnionWithCharacterSet,
                  formIntersectionWithCharacterSet, invert);
