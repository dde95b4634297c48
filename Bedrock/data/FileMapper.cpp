// SPDX-License-Identifier: MIT
// Files mapped to memory.
#include <Bedrock/data/Data+Internal.h>
#include <Bedrock/platform/host/Files.h>

#include <cerrno>

namespace {

struct FileMapperMethods : ZPFileMapper {
    id init() {
        _mapping = -1;
        self()->release();
        return nullptr;
    }
    ZPFileMapper *initWithNativeFileHandle_length_releaseHandle(int handle, unsigned length, BOOL releaseHandle) {
        _mapping = handle < 0 ? ZPHostMakeAnonymousFile(length) : ZPHostDuplicateFile(handle);
        _length = length;
        ZPHostStatus status;
        bool usable = _mapping >= 0;
        if (usable && length == 0xFFFFFFFF) usable = false, errno = EFBIG;
        if (usable && handle >= 0) {
            usable = ZPHostFileStatus(handle, &status);
            if (usable && status.size < length) usable = false, errno = EINVAL;
        }
        if (!usable) {
            self()->release();
            return nullptr;
        }
        if (handle >= 0 && releaseHandle) ZPHostCloseFile(handle);
        return this;
    }
    unsigned length() { return _length; }
    void *view(unsigned length, ZPHostView kind, void *at = nullptr) {
        return length == 0 || length > _length ? nullptr : ZPHostMapView(_mapping, length, kind, at);
    }
    void *newReadOnlyMappingOfLength(unsigned length) { return view(length, ZPHostViewReadOnly); }
    void *newReadWriteMappingOfLength(unsigned length) { return view(length, ZPHostViewReadWrite); }
    void *newCopyOnWriteMappingOfLength(unsigned length) { return view(length, ZPHostViewCopyOnWrite); }
    BOOL copyMapping_length(void *mapped, unsigned length) {
        return view(length, ZPHostViewCopyOnWrite, mapped) ? YES : NO;
    }
    void removeMapping_length(void *mapped, unsigned length) { ZPHostUnmapView(mapped, length); }
    void dealloc() {
        if (_mapping >= 0) ZPHostCloseFile(_mapping);
        ZP_SUPER(ZPFileMapper, dealloc)();
    }

    static ZPFileMapper *fileMapperForPath(Class, ZPString *path) {
        char host[4096];
        if (!_ZPHostPathOfString(path, host, sizeof host)) return nullptr;
        int file = ZPHostOpenFile(host, ZPHostOpenToRead, 0);
        if (file < 0) return nullptr;
        ZPHostStatus status;
        ZPFileMapper *mapper = nullptr;
        if (ZPHostFileStatus(file, &status)) {
            if (!status.isRegular) errno = EACCES;
            else {
                unsigned length = status.size > 0xFFFFFFFF ? 0xFFFFFFFF : unsigned(status.size);
                mapper = ZPFileMapper::alloc()->initWithNativeFileHandle_length_releaseHandle(file, length, YES);
                if (mapper) return mapper->autorelease();
            }
        }
        ZPHostCloseFile(file);
        return nullptr;
    }
    static ZPFileMapper *emptyFileMapperWithLength(Class, unsigned length) {
        ZPFileMapper *mapper = ZPFileMapper::alloc()->initWithNativeFileHandle_length_releaseHandle(-1, length, NO);
        return mapper ? mapper->autorelease().as<ZPFileMapper>() : nullptr;
    }
};

}  // namespace

ZP_IMPLEMENT_WITH(ZPFileMapper, FileMapperMethods, init, initWithNativeFileHandle_length_releaseHandle, length,
                  newReadOnlyMappingOfLength, newReadWriteMappingOfLength, newCopyOnWriteMappingOfLength,
                  copyMapping_length, removeMapping_length, dealloc,
                  classMethods(fileMapperForPath, emptyFileMapperWithLength));
