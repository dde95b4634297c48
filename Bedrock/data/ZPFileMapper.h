// SPDX-License-Identifier: MIT
// Mappings of files and of anonymous pages.
#pragma once

#include <Bedrock/core/ZPObject.h>

ZP_FORWARD(ZPString);

/// Owns a mapping and gives out views of its first bytes, which whoever asked for them removes. Any thread.
struct ZPFileMapper : ZPObject {
    ZP_CLASS(ZPFileMapper)
    int _mapping;
    unsigned _length;

    /// The whole of a file that can be read; null, with the reason in `errno`, when there is none.
    static ZPFileMapper *fileMapperForPath(ZPString *path) { return objc_msgSend<ZPFileMapper *>(class_(), "fileMapperForPath:"_sel, path); }
    /// Anonymous, zero-filled pages.
    static ZPFileMapper *emptyFileMapperWithLength(unsigned length) {
        return objc_msgSend<ZPFileMapper *>(class_(), "emptyFileMapperWithLength:"_sel, length);
    }
    /// Of an open file, at least `length` bytes long, or of anonymous pages for -1. With `releaseHandle` the
    /// handle is closed.
    ZPFileMapper *initWithNativeFileHandle_length_releaseHandle(int handle, unsigned length, BOOL releaseHandle) {
        return objc_msgSend<ZPFileMapper *>(this, "initWithNativeFileHandle:length:releaseHandle:"_sel, handle, length, releaseHandle);
    }
    unsigned length() { return objc_msgSend<unsigned>(this, "length"_sel); }
    // Views; null for a length of 0 or beyond the mapper's.
    void *newReadOnlyMappingOfLength(unsigned length) { return objc_msgSend<void *>(this, "newReadOnlyMappingOfLength:"_sel, length); }
    /// What is written shows in the mapper's other views.
    void *newReadWriteMappingOfLength(unsigned length) { return objc_msgSend<void *>(this, "newReadWriteMappingOfLength:"_sel, length); }
    /// What is written stays in the view.
    void *newCopyOnWriteMappingOfLength(unsigned length) { return objc_msgSend<void *>(this, "newCopyOnWriteMappingOfLength:"_sel, length); }
    /// Turns an existing view into a copy-on-write one at the same address.
    BOOL copyMapping_length(void *view, unsigned length) { return objc_msgSend<BOOL>(this, "copyMapping:length:"_sel, view, length); }
    void removeMapping_length(void *view, unsigned length) { objc_msgSend(this, "removeMapping:length:"_sel, view, length); }
};
