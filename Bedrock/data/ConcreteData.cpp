// SPDX-License-Identifier: MIT
// The library's own immutable data: bytes that it owns, borrows or maps from a file.
#include <Bedrock/core/ZPAutoreleasePool.h>
#include <Bedrock/core/ZPRef.h>
#include <Bedrock/data/Data+Internal.h>

namespace {

struct ConcreteDataMethods : ZPConcreteData {
    // Answers the receiver, or a larger instance in its place.
    ZPConcreteData *fillInline(const void *bytes, unsigned length) {
        ZPConcreteData *data = this;
        if (length > sizeof _bytes) {
            Class cls = isa;
            ZPZone *zone = self()->zone();
            ZPDeallocateObject(this);
            data = ZPAllocateObject(cls, length - unsigned(sizeof _bytes), zone);
        }
        data->_flags = _ZPDataInline;
        data->_length = data->_capacity = length;
        copyInline(data, bytes, length);
        return data;
    }
    static void copyInline(ZPConcreteData *data, const void *bytes, unsigned length) {
        void *to = &data->_bytes;
        __asm__("" : "+r"(to));  // the bytes go on behind the field
        std::memcpy(to, bytes, length);
    }
    ZPConcreteData *giveUp() {
        self()->release();
        return nullptr;
    }

    ZPData *initWithBytes_length_copy_freeWhenDone_bytesAreVM(void *bytes, unsigned length, BOOL copy,
                                                              BOOL freeWhenDone, BOOL pages) {
        _ZPCheckInitialDataSize(this, "initWithBytes:length:copy:freeWhenDone:bytesAreVM:"_sel, "length", length);
        if (length == 0) {
            _flags = 0;
            _capacity = _length = 0;
            _bytes = nullptr;
            return this;
        }
        if (!copy) {
            _flags = (freeWhenDone ? unsigned(_ZPDataFreeWhenDone) : 0u) | (pages ? unsigned(_ZPDataPages) : 0u);
            _capacity = pages ? ZPRoundUpToMultipleOfPageSize(length) : length;
            _bytes = bytes;
            _length = length;
            return this;
        }
        if (length < ZPPageSize()) return fillInline(bytes, length);
        if (length < _ZPWorthMapping) {
            _bytes = ZPZoneMalloc(self()->zone(), length);
            if (!_bytes) return giveUp();
            _flags = _ZPDataFreeWhenDone;
            _capacity = length;
        } else {
            unsigned capacity = ZPRoundUpToMultipleOfPageSize(length);
            {
                ZPAutoreleasePoolScope pool;
                _mapper = ZPFileMapper::emptyFileMapperWithLength(capacity);
                if (_mapper) _mapper->retain();
            }
            _bytes = _mapper ? _mapper->newReadWriteMappingOfLength(capacity) : nullptr;
            if (!_bytes) return giveUp();
            _flags = _ZPDataFreeWhenDone | _ZPDataPages;
            _capacity = capacity;
        }
        std::memcpy(_bytes, bytes, length);
        _length = length;
        return this;
    }
    ZPData *initWithBytes_length(const void *bytes, unsigned length) {
        return ConcreteDataMethods::initWithBytes_length_copy_freeWhenDone_bytesAreVM(const_cast<void *>(bytes), length,
                                                                                      YES, NO, NO);
    }
    ZPData *initWithFileMapper_length(ZPFileMapper *mapper, unsigned length) {
        if (!mapper || length == 0)
            return self()->initWithBytes_length_copy_freeWhenDone_bytesAreVM(nullptr, 0, NO, NO, NO);
        _ZPCheckInitialDataSize(this, "initWithFileMapper:length:"_sel, "length", length);
        void *view = mapper->newReadOnlyMappingOfLength(length);
        if (!view) return giveUp();
        _mapper = mapper->retain().as<ZPFileMapper>();
        return self()->initWithBytes_length_copy_freeWhenDone_bytesAreVM(view, length, NO, YES, YES);
    }
    ZPData *initWithContentsOfMappedFile(ZPString *path) {
        ZPRef<ZPFileMapper> mapper = _ZPMapperOfFile(path);
        if (!mapper) return giveUp();
        return self()->initWithFileMapper_length(mapper, mapper->length());
    }
    void dealloc() {
        if (_flags & _ZPDataFreeWhenDone && _bytes) {
            if (!(_flags & _ZPDataPages)) ZPZoneFree(ZPZoneFromPointer(_bytes), _bytes);
            else if (!_mapper) ZPDeallocateMemoryPages(_bytes, _capacity);
            else _mapper->removeMapping_length(_bytes, _capacity);
        }
        if (_mapper) _mapper->release();
        ZP_SUPER(ZPConcreteData, dealloc)();
    }

    unsigned length() { return _length; }
    const void *bytes() { return contents(); }
    BOOL _bytesAreVM() { return _flags & _ZPDataPages ? YES : NO; }
    ZPFileMapper *fileMapper() { return _mapper; }
    id copyWithZone(ZPZone *) { return self()->retain(); }
};

}  // namespace

bool _ZPViewOfOwnData(id object, ZPDataView &view) {
    if (object.pointer()->isa != ZPConcreteData::class_()) return false;
    view = _ZPViewOfData(object);
    return true;
}

ZP_IMPLEMENT_WITH(ZPConcreteData, ConcreteDataMethods, initWithBytes_length_copy_freeWhenDone_bytesAreVM,
                  initWithBytes_length, initWithFileMapper_length, initWithContentsOfMappedFile, dealloc, length, bytes,
                  _bytesAreVM, fileMapper, copyWithZone);

ZPData *_ZPNewImmutableData(const void *bytes, unsigned length, ZPZone *zone) {
    if (length == 0 || length >= ZPPageSize())
        return ZPAllocateObject(ZPConcreteData::class_(), 0, zone).as<ZPData>()->initWithBytes_length(bytes, length);
    constexpr unsigned field = sizeof(void *);
    ZPConcreteData *data = ZPAllocateObject(ZPConcreteData::class_(), length > field ? length - field : 0, zone);
    data->_flags = _ZPDataInline;
    data->_length = data->_capacity = length;
    ConcreteDataMethods::copyInline(data, bytes, length);
    return data;
}

ZPData *_ZPNewImmutableDataNoCopy(void *bytes, unsigned length, ZPZone *zone) {
    return ZPAllocateObject(ZPConcreteData::class_(), 0, zone)
        .as<ZPData>()
        ->initWithBytes_length_copy_freeWhenDone_bytesAreVM(bytes, length, NO, YES, NO);
}
