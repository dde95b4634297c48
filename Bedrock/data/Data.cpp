// SPDX-License-Identifier: MIT
// What every data object does on the primitives.
#include <Bedrock/data/Data+Internal.h>
#include <Bedrock/core/ZPRef.h>

#include <Bedrock/platform/ASCII.h>
#include <Bedrock/core/Fronts.h>

#include <cerrno>

namespace {

struct DataMethods : ZPData {
    // ---- initialisers ----

    id init() { return self()->initWithBytes_length_copy_freeWhenDone_bytesAreVM(nullptr, 0, NO, NO, NO); }
    ZPData *initWithBytes_length_copy_freeWhenDone_bytesAreVM(void *, unsigned, BOOL, BOOL, BOOL) {
        ZPRequestConcreteImplementation(this, "initWithBytes:length:copy:freeWhenDone:bytesAreVM:"_sel,
                                        ZPData::class_());
    }
    ZPData *initWithBytes_length(const void *bytes, unsigned length) {
        return self()->initWithBytes_length_copy_freeWhenDone_bytesAreVM(const_cast<void *>(bytes), length, YES, NO,
                                                                         NO);
    }
    ZPData *initWithBytesNoCopy_length(void *bytes, unsigned length) {
        return self()->initWithBytes_length_copy_freeWhenDone_bytesAreVM(bytes, length, NO, YES, NO);
    }
    ZPData *initWithData(ZPData *other) {
        ZPDataView view = _ZPViewOfData(other);
        if (view.length == 0) return DataMethods::init();
        return self()->initWithBytes_length_copy_freeWhenDone_bytesAreVM(const_cast<unsigned char *>(view.bytes),
                                                                         view.length, YES, NO, other->_bytesAreVM());
    }
    ZPData *initWithContentsOfFile(ZPString *path) {
        char own[4096];
        void *bytes;
        unsigned length;
        ZPZone *zone = self()->zone();
        bool isPath = path && path->getFileSystemRepresentation_maxLength(own, sizeof own);
        if (!isPath) errno = ENOENT;
        if (!isPath || !_ZPReadBytesFromFile(own, &bytes, &length, zone)) {
            self()->release();
            return nullptr;
        }
        return self()->initWithBytes_length_copy_freeWhenDone_bytesAreVM(length ? bytes : nullptr, length, NO, YES, NO);
    }
    ZPData *initWithContentsOfMappedFile(ZPString *path) { return self()->initWithContentsOfFile(path); }

    // ---- reading ----

    unsigned length() { ZPRequestConcreteImplementation(this, "length"_sel, ZPData::class_()); }
    const void *bytes() { ZPRequestConcreteImplementation(this, "bytes"_sel, ZPData::class_()); }
    void getBytes(void *buffer) {
        ZPDataView view = _ZPViewOfData(this);
        if (view.length) std::memmove(buffer, view.bytes, view.length);
    }
    void getBytes_length(void *buffer, unsigned length) {
        ZPDataView view = _ZPViewOfData(this);
        if (unsigned n = std::min(length, view.length)) std::memmove(buffer, view.bytes, n);
    }
    void getBytes_range(void *buffer, ZPRange range) {
        if (range.length == 0) return;
        ZPDataView view = _ZPViewOfData(this);
        if (range.location >= view.length)
            _ZPRaiseDataLocation(this, "getBytes:range:"_sel, range.location, view.length);
        std::memmove(buffer, view.bytes + range.location, std::min(range.length, view.length - range.location));
    }
    ZPData *subdataWithRange(ZPRange range) {
        constexpr unsigned worthSharing = 64, worthSharingAnywhere = 32768;
        ZPZone *zone = self()->zone();
        if (range.length == 0) return _ZPNewImmutableData(nullptr, 0, zone)->autorelease();
        bool concrete = isa == ZPConcreteData::class_();
        unsigned length = concrete ? id(this).unchecked<ZPConcreteData>()->_length : self()->length();
        if (range.location > length || range.length > length - range.location)
            _ZPRaiseDataRange(this, "subdataWithRange:"_sel, range, length);
        if (range.length == length) return self()->copyWithZone(nullptr)->autorelease();
        if (range.length >= (concrete ? worthSharing : worthSharingAnywhere)) {
            auto part = ZPAdopt<ZPSubrangeData>(ZPAllocateObject(ZPSubrangeData::class_(), 0, zone));
            // A part of a part looks at the whole, so that parts of parts of parts do not make a chain.
            auto *outer = isa == ZPSubrangeData::class_() ? id(this).unchecked<ZPSubrangeData>() : nullptr;
            part->_data = outer ? outer->_data->retain().as<ZPData>() : self()->copyWithZone(nullptr).as<ZPData>();
            part->_location = range.location + (outer ? outer->_location : 0);
            part->_length = range.length;
            return std::move(part).autoreleased();
        }
        return _ZPNewImmutableData(_ZPViewOfData(this).bytes + range.location, range.length, zone)->autorelease();
    }
    BOOL isEqualToData(ZPData *other) {
        if (other == this) return YES;
        if (!other) return NO;
        ZPDataView a = _ZPViewOfData(this), b = _ZPViewOfData(other);
        return a.length == b.length && (a.length == 0 || std::memcmp(a.bytes, b.bytes, a.length) == 0);
    }
    BOOL isEqual(id other) {
        if (other == this) return YES;
        if (!other || !other->isKindOfClass(ZPData::class_())) return NO;
        return self()->isEqualToData(other);
    }
    unsigned hash() {
        ZPDataView view = _ZPViewOfData(this);
        unsigned h = 0;
        for (unsigned i = std::min(view.length, 16u); i-- > 0;) {
            h = (h << 4) + view.bytes[i];
            if (unsigned g = h & 0xF0000000) h = (h ^ g >> 24) & ~g;
        }
        return h;
    }
    ZPString *description() {
        ZPDataView view = _ZPViewOfData(this);
        std::uint64_t room = 2 * std::uint64_t(view.length) + view.length / 4 + 2;
        char *text = room < 0x7FFFFFFF ? _ZPTryAllocate<char>(room) : nullptr;
        if (!text) _ZPRaiseDataMemory(unsigned(room));
        char *at = text;
        *at++ = '<';
        for (unsigned i = 0; i < view.length; ++i) {
            at = _ZPPutHexByte(at, view.bytes[i]);
            if (i % 4 == 3) *at++ = ' ';
        }
        *at++ = '>';
        return ZPString::alloc()
            ->initWithCStringNoCopy_length_freeWhenDone(text, unsigned(at - text), YES)
            ->autorelease();
    }
    BOOL writeToFile_atomically(ZPString *path, BOOL atomically) {
        ZPDataView view = _ZPViewOfData(this);
        return _ZPWriteBytesToFile(path, view.bytes, view.length, atomically);
    }
    BOOL _bytesAreVM() { return NO; }
    ZPFileMapper *fileMapper() { return nullptr; }

    id copyWithZone(ZPZone *zone) {
        return ZPAllocateObject(ZPConcreteData::class_(), 0, zone).as<ZPData>()->initWithData(this);
    }
    id mutableCopyWithZone(ZPZone *zone) {
        return ZPAllocateObject(ZPConcreteMutableData::class_(), 0, zone).as<ZPData>()->initWithData(this);
    }
    Class classForCoder() { return ZPData::class_(); }
    id replacementObjectForPortCoder(id) { return this; }
    void encodeWithCoder(ZPCoder *coder) { _ZPAbove(coder)->encodeDataObject(this); }
    id initWithCoder(ZPCoder *coder) {
        self()->release();
        ZPData *data = _ZPAbove(coder)->decodeDataObject();
        return data ? data->retain() : id();
    }
};

struct DataClassMethods {
    static ZPData *made(Class self) { return ZPData::allocFrom(self); }
    static ZPData *autoreleased(ZPData *data) { return data ? data->autorelease().as<ZPData>() : nullptr; }

    static id allocWithZone(Class self, ZPZone *zone) {
        return ZPAllocateObject(self == ZPData::class_() ? ZPConcreteData::class_() : self, 0, zone);
    }
    static id alloc(Class self) { return made(self); }
    static ZPData *data(Class self) { return autoreleased(made(self)->init()); }
    static ZPData *dataWithBytes_length(Class self, const void *bytes, unsigned length) {
        if (self == ZPData::class_()) return autoreleased(_ZPNewImmutableData(bytes, length, nullptr));
        return autoreleased(made(self)->initWithBytes_length(bytes, length));
    }
    static ZPData *dataWithBytesNoCopy_length(Class self, void *bytes, unsigned length) {
        return autoreleased(made(self)->initWithBytesNoCopy_length(bytes, length));
    }
    static ZPData *dataWithData(Class self, ZPData *other) { return autoreleased(made(self)->initWithData(other)); }
    static ZPData *dataWithContentsOfFile(Class self, ZPString *path) {
        return autoreleased(made(self)->initWithContentsOfFile(path));
    }
    static ZPData *dataWithContentsOfMappedFile(Class self, ZPString *path) {
        return autoreleased(made(self)->initWithContentsOfMappedFile(path));
    }
};

struct SubrangeMethods : ZPSubrangeData {
    id init() {
        ZPString *proem = _ZPMethodExceptionProem(this, "init"_sel);
        self()->release();
        ZPException::raise_format(ZPGenericException, "%@: should never be called"_zp, proem);
    }
    ZPData *initWithData_range(ZPData *data, ZPRange range) {
        SEL selector = "initWithData:range:"_sel;
        unsigned length = data ? data->length() : 0;
        bool outside = range.location > length || range.length > length - range.location;
        if (outside) self()->autorelease();
        if (range.length == 0 && outside) _ZPRaiseDataLocation(this, selector, range.location, length);
        if (outside) _ZPRaiseDataRange(this, selector, range, length);
        _data = id(data)->copyWithZone(nullptr).as<ZPData>();
        _location = range.location;
        _length = range.length;
        return this;
    }
    unsigned length() { return _length; }
    const void *bytes() { return _ZPViewOfData(_data).bytes + _location; }
    BOOL _bytesAreVM() { return _data->_bytesAreVM(); }
    id copyWithZone(ZPZone *) { return self()->retain(); }
    void dealloc() {
        if (_data) _data->release();
        ZP_SUPER(ZPSubrangeData, dealloc)();
    }
};

}  // namespace

ZP_IMPLEMENT_WITH(ZPData, DataMethods, adopts(ZPCopying, ZPMutableCopying), init,
                  initWithBytes_length_copy_freeWhenDone_bytesAreVM, initWithBytes_length, initWithBytesNoCopy_length,
                  initWithData, initWithContentsOfFile, initWithContentsOfMappedFile, length, bytes, getBytes,
                  getBytes_length, getBytes_range, subdataWithRange, isEqualToData, isEqual, hash, description,
                  writeToFile_atomically, _bytesAreVM, fileMapper, copyWithZone, mutableCopyWithZone, classForCoder,
                  replacementObjectForPortCoder, encodeWithCoder, initWithCoder,
                  classMethodsOf(DataClassMethods, alloc, allocWithZone, data, dataWithBytes_length,
                                 dataWithBytesNoCopy_length, dataWithData, dataWithContentsOfFile,
                                 dataWithContentsOfMappedFile));

ZP_IMPLEMENT_WITH(ZPSubrangeData, SubrangeMethods, init, initWithData_range, length, bytes, _bytesAreVM, copyWithZone,
                  dealloc);

void _ZPRaiseDataSize(ZPData *receiver, SEL selector, const char *what, unsigned value, bool releases) {
    ZPString *proem = _ZPMethodExceptionProem(receiver, selector);
    if (releases) receiver->release();
    ZPException::raise_format(ZPInvalidArgumentException, "%@: absurd %s: %d"_zp, proem, what, int(value));
}

void _ZPRaiseDataLocation(id receiver, SEL selector, unsigned location, unsigned length) {
    ZPException::raise_format(ZPRangeException, "%@: location %u exceeds data length %u"_zp,
                              _ZPMethodExceptionProem(receiver, selector), location, length);
}

void _ZPRaiseDataRange(id receiver, SEL selector, ZPRange range, unsigned length) {
    ZPException::raise_format(ZPRangeException, "%@: range {location = %d; length = %d} exceeds data length %u"_zp,
                              _ZPMethodExceptionProem(receiver, selector), int(range.location), int(range.length),
                              length);
}

void _ZPRaiseDataMemory(unsigned bytes) { _ZPRaiseOutOfMemory("%u bytes of data", bytes); }
