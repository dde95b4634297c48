// SPDX-License-Identifier: MIT
// The front of mutable data, and its concrete class.
#include <Bedrock/core/ZPAutoreleasePool.h>
#include <Bedrock/core/ZPRef.h>
#include <Bedrock/data/Data+Internal.h>

namespace {

struct MutableDataMethods : ZPMutableData {
    [[noreturn]] void abstract(SEL selector) {
        ZPRequestConcreteImplementation(this, selector, ZPMutableData::class_());
    }
    ZPMutableData *initWithCapacity(unsigned) { abstract("initWithCapacity:"_sel); }
    void *mutableBytes() { abstract("mutableBytes"_sel); }
    void setLength(unsigned) { abstract("setLength:"_sel); }

    ZPMutableData *initWithLength(unsigned length) {
        ZPMutableData *data = self()->initWithCapacity(length);
        data->setLength(length);
        return data;
    }
    void increaseLengthBy(unsigned extra) {
        if (extra == 0) return;
        _ZPCheckDataSize(this, "increaseLengthBy:"_sel, "extra length", extra);
        self()->setLength(self()->length() + extra);
    }
    void appendBytes_length(const void *bytes, unsigned count) {
        if (count) self()->replaceBytesInRange_withBytes({self()->length(), count}, bytes);
    }
    void appendData(ZPData *other) {
        ZPDataView view = _ZPViewOfData(other);
        if (view.length) self()->appendBytes_length(view.bytes, view.length);
    }
    unsigned char *overwrite(SEL selector, ZPRange range) {
        unsigned length = self()->length();
        if (range.location > length) _ZPRaiseDataLocation(this, selector, range.location, length);
        _ZPCheckDataSize(this, selector, "length", range.length);
        if (range.length > length - range.location) self()->setLength(range.location + range.length);
        return static_cast<unsigned char *>(self()->mutableBytes()) + range.location;
    }
    void replaceBytesInRange_withBytes(ZPRange range, const void *bytes) {
        if (range.length == 0) return;
        // The bytes may lie in storage that growth moves.
        auto *own = static_cast<const unsigned char *>(bytes),
             *storage = static_cast<const unsigned char *>(self()->bytes());
        bool inside = storage && own >= storage && own < storage + self()->length();
        unsigned char *to = overwrite("replaceBytesInRange:withBytes:"_sel, range);
        if (inside) own = to - range.location + (own - storage);
        std::memmove(to, own, range.length);
    }
    void resetBytesInRange(ZPRange range) {
        if (range.length) std::memset(overwrite("resetBytesInRange:"_sel, range), 0, range.length);
    }
    void setData(ZPData *other) {
        ZPDataView view = _ZPViewOfData(other);
        self()->replaceBytesInRange_withBytes({0, view.length}, view.bytes);
        self()->setLength(view.length);
    }
    Class classForCoder() { return ZPMutableData::class_(); }
};

struct MutableDataClassMethods {
    static id allocWithZone(Class self, ZPZone *zone) {
        return ZPAllocateObject(self == ZPMutableData::class_() ? ZPConcreteMutableData::class_() : self, 0, zone);
    }
    static id dataWithCapacity(Class self, unsigned capacity) {
        return ZPMutableData::allocFrom(self)->initWithCapacity(capacity)->autorelease();
    }
    static id dataWithLength(Class self, unsigned length) {
        return ZPMutableData::allocFrom(self)->initWithLength(length)->autorelease();
    }
};

struct ConcreteMutableData : ZPConcreteMutableData {
    // n and a quarter, in whole words of 4 bytes, or whole pages.
    static unsigned roomFor(unsigned n, unsigned extra) {
        unsigned capacity = (n + extra + 3) & ~3u;
        return capacity >= ZPPageSize() ? ZPRoundUpToMultipleOfPageSize(capacity) : capacity;
    }
    unsigned char *at(unsigned location) { return static_cast<unsigned char *>(_bytes) + location; }

    // ---- storage ----

    static ZPFileMapper *newMapper(unsigned capacity) {
        ZPAutoreleasePoolScope pool;
        ZPFileMapper *mapper = ZPFileMapper::emptyFileMapperWithLength(capacity);
        if (mapper) mapper->retain();
        return mapper;
    }
    // A mapping where that is worth it, else, or when there is none, a block; answers whether there is one now.
    bool setUp(unsigned capacity) {
        ZPFileMapper *mapper = capacity >= _ZPWorthMapping ? newMapper(capacity) : nullptr;
        void *storage = mapper ? mapper->newReadWriteMappingOfLength(capacity) : nullptr;
        if (mapper && !storage) {
            mapper->release();
            mapper = nullptr;
        }
        if (!storage) storage = ZPZoneMalloc(self()->zone(), capacity ? capacity : 4);
        if (!storage) return false;
        _mapper = mapper;
        _bytes = storage;
        _capacity = capacity;
        _flags = mapper ? unsigned(_ZPDataPages) : 0u;
        return true;
    }
    void setUpIfNeeded() {
        if (!_bytes && !setUp(_capacity)) _ZPRaiseDataMemory(_capacity);
    }
    void freeStorage(void *bytes, unsigned capacity, unsigned flags, ZPFileMapper *mapper) {
        if (!bytes) return;
        if (!(flags & _ZPDataPages)) ZPZoneFree(ZPZoneFromPointer(bytes), bytes);
        else if (mapper) mapper->removeMapping_length(bytes, capacity);
        else ZPDeallocateMemoryPages(bytes, capacity);
        if (mapper) mapper->release();
    }
    // Makes room for a length; the bytes stay when there is no memory.
    void grow(unsigned length) {
        unsigned capacity = roomFor(length, length >> (length < ZPPageSize() ? 1 : 2));
        if (!_bytes) {
            if (!setUp(capacity)) _ZPRaiseDataMemory(capacity);
            return;
        }
        if (!(_flags & _ZPDataPages) && capacity < _ZPWorthMapping) {
            void *larger = ZPZoneRealloc(ZPZoneFromPointer(_bytes), _bytes, capacity);
            if (!larger) _ZPRaiseDataMemory(capacity);
            _bytes = larger;
            _capacity = capacity;
            return;
        }
        void *oldBytes = _bytes;
        unsigned oldCapacity = _capacity, oldFlags = _flags;
        ZPFileMapper *oldMapper = _mapper;
        if (!setUp(capacity)) _ZPRaiseDataMemory(capacity);
        std::memcpy(_bytes, oldBytes, _length);
        freeStorage(oldBytes, oldCapacity, oldFlags, oldMapper);
    }
    // Sets a longer length; what lies between is not set.
    void extend(unsigned length) {
        if (length > _capacity || !_bytes) grow(length);
        _length = length;
    }

    // ---- initialisers ----

    ZPMutableData *initWithCapacity(unsigned n) {
        _ZPCheckInitialDataSize(this, "initWithCapacity:"_sel, "capacity", n);
        _capacity = roomFor(n, n / 4);
        return this;
    }
    id init() { return ConcreteMutableData::initWithCapacity(0); }
    ZPData *initWithBytes_length_copy_freeWhenDone_bytesAreVM(void *bytes, unsigned length, BOOL, BOOL freeWhenDone,
                                                              BOOL pages) {
        ConcreteMutableData::initWithCapacity(length);
        if (!setUp(_capacity)) {
            self()->release();
            return nullptr;
        }
        if (length) std::memcpy(_bytes, bytes, length);
        _length = length;
        if (freeWhenDone && bytes) {
            if (pages) ZPDeallocateMemoryPages(bytes, ZPRoundUpToMultipleOfPageSize(length));
            else ZPZoneFree(ZPZoneFromPointer(bytes), bytes);
        }
        return this;
    }
    ZPData *initWithFileMapper_length(ZPFileMapper *mapper, unsigned length) {
        if (!mapper || length == 0) return ConcreteMutableData::init();
        _ZPCheckInitialDataSize(this, "initWithFileMapper:length:"_sel, "capacity", length);
        void *view = mapper->newCopyOnWriteMappingOfLength(length);
        if (!view) {
            self()->release();
            return nullptr;
        }
        _mapper = mapper->retain().as<ZPFileMapper>();
        _bytes = view;
        _length = length;
        _capacity = ZPRoundUpToMultipleOfPageSize(length);
        _flags = _ZPDataSharedView | _ZPDataPages;
        return this;
    }
    ZPData *initWithContentsOfMappedFile(ZPString *path) {
        ZPRef<ZPFileMapper> mapper = _ZPMapperOfFile(path);
        if (!mapper) {
            self()->release();
            return nullptr;
        }
        return self()->initWithFileMapper_length(mapper, mapper->length());
    }
    ZPData *initWithData(ZPData *other) {
        ZPFileMapper *mapper = nullptr;
        unsigned length = 0;
        if (other && other->isa == ZPConcreteData::class_()) {
            auto *data = static_cast<ZPConcreteData *>(other);
            mapper = data->_mapper;
            length = data->_length;
        } else if (other && other->isa == ZPConcreteMutableData::class_()) {
            auto *data = static_cast<ZPConcreteMutableData *>(other);
            if (data->_mapper && !(data->_flags & _ZPDataSharedView) && data->_length &&
                data->_mapper->copyMapping_length(data->_bytes, data->_capacity)) {
                data->_flags |= _ZPDataSharedView;
                mapper = data->_mapper;
                length = data->_length;
            }
        }
        if (mapper && length) {
            if (void *view = mapper->newCopyOnWriteMappingOfLength(length)) {
                _mapper = mapper->retain().as<ZPFileMapper>();
                _bytes = view;
                _length = length;
                _capacity = ZPRoundUpToMultipleOfPageSize(length);
                _flags = _ZPDataSharedView | _ZPDataPages;
                return this;
            }
        }
        return ZP_SUPER(ZPConcreteMutableData, initWithData)(other);
    }
    void dealloc() {
        freeStorage(_bytes, _capacity, _flags, _mapper);
        ZP_SUPER(ZPConcreteMutableData, dealloc)();
    }

    // ---- reading and changing ----

    unsigned length() { return _length; }
    const void *bytes() {
        setUpIfNeeded();
        return _bytes;
    }
    void *mutableBytes() {
        setUpIfNeeded();
        return _bytes;
    }
    BOOL _bytesAreVM() { return _flags & _ZPDataPages ? YES : NO; }
    ZPFileMapper *fileMapper() { return _mapper; }
    void setLength(unsigned length) {
        _ZPCheckDataSize(this, "setLength:"_sel, "length", length);
        unsigned old = _length;
        if (length <= old) {
            _length = length;
            return;
        }
        extend(length);
        std::memset(at(old), 0, length - old);
    }
    void increaseLengthBy(unsigned extra) {
        if (extra == 0) return;
        _ZPCheckDataSize(this, "increaseLengthBy:"_sel, "extra length", extra);
        ConcreteMutableData::setLength(_length + extra);
    }
    // Bytes in the receiver's own storage are found again when that has moved.
    void put(unsigned location, const void *bytes, unsigned count) {
        auto *from = static_cast<const unsigned char *>(bytes);
        bool inside = _bytes && from >= at(0) && from < at(_length);
        std::size_t offset = inside ? std::size_t(from - at(0)) : 0;
        if (location + count > _length) extend(location + count);
        std::memmove(at(location), inside ? at(0) + offset : from, count);
    }
    void appendBytes_length(const void *bytes, unsigned count) {
        if (count == 0) return;
        _ZPCheckDataSize(this, "appendBytes:length:"_sel, "length", count);
        _ZPCheckDataSize(this, "appendBytes:length:"_sel, "length", _length + count);
        put(_length, bytes, count);
    }
    void appendData(ZPData *other) {
        ZPDataView view = _ZPViewOfData(other);
        if (view.length) ConcreteMutableData::appendBytes_length(view.bytes, view.length);
    }
    void checkRange(SEL selector, ZPRange range) {
        if (range.location > _length) _ZPRaiseDataLocation(this, selector, range.location, _length);
        _ZPCheckDataSize(this, selector, "length", range.length);
        _ZPCheckDataSize(this, selector, "length", range.location + range.length);
    }
    void replaceBytesInRange_withBytes(ZPRange range, const void *bytes) {
        if (range.length == 0) return;
        checkRange("replaceBytesInRange:withBytes:"_sel, range);
        put(range.location, bytes, range.length);
    }
    void resetBytesInRange(ZPRange range) {
        if (range.length == 0) return;
        checkRange("resetBytesInRange:"_sel, range);
        if (range.location + range.length > _length) extend(range.location + range.length);
        std::memset(at(range.location), 0, range.length);
    }
};

}  // namespace

ZP_IMPLEMENT_WITH(ZPMutableData, MutableDataMethods, initWithCapacity, initWithLength, mutableBytes, setLength,
                  increaseLengthBy, appendBytes_length, appendData, replaceBytesInRange_withBytes, resetBytesInRange,
                  setData, classForCoder,
                  classMethodsOf(MutableDataClassMethods, allocWithZone, dataWithCapacity, dataWithLength));

ZP_IMPLEMENT_WITH(ZPConcreteMutableData, ConcreteMutableData, init, initWithCapacity,
                  initWithBytes_length_copy_freeWhenDone_bytesAreVM, initWithFileMapper_length,
                  initWithContentsOfMappedFile, initWithData, dealloc, length, bytes, mutableBytes, _bytesAreVM,
                  fileMapper, setLength, increaseLengthBy, appendBytes_length, appendData,
                  replaceBytesInRange_withBytes, resetBytesInRange);

ZPMutableData *_ZPNewMutableDataNoCopy(void *bytes, unsigned length, unsigned capacity, ZPZone *zone) {
    ZPConcreteMutableData *data = ZPAllocateObject(ZPConcreteMutableData::class_(), 0, zone);
    data->_bytes = bytes;
    data->_length = length;
    data->_capacity = capacity;
    return data;
}
