// SPDX-License-Identifier: MIT
// Mappings of files and of anonymous pages.
#pragma once

#include <Bedrock/core/ZPObject.h>

ZP_FORWARD(ZPString);

/// Owns a mapping and gives out views of its first bytes, which whoever asked for them removes; a view may outlive
/// the mapper. `init` answers null. Any thread.
struct ZPFileMapper : ZPObject {
    ZP_CLASS(ZPFileMapper)
    int _mapping;
    unsigned _length;

    /// A mapper of the whole of a file that can be read, autoreleased; null, with the reason in `errno`, when there
    /// is none.
    static ZPFileMapper *fileMapperForPath(ZPString *path) ZP_CLASS_ASKS(path);
    /// A mapper of anonymous, zero-filled pages, autoreleased; null when there can be none.
    static ZPFileMapper *emptyFileMapperWithLength(unsigned length) ZP_CLASS_ASKS(length);
    /// A mapper of an open file, at least `length` bytes long, or of anonymous pages for the handle -1; null, with
    /// the reason in `errno`, when there can be none. With `releaseHandle` the handle is closed.
    ZPFileMapper *initWithNativeFileHandle_length_releaseHandle(int handle, unsigned length, BOOL releaseHandle)
        ZP_ASKS(handle, length, releaseHandle);
    /// The bytes that can be viewed.
    unsigned length() ZP_ASKS();
    // Views; null for a length of 0 or beyond the mapper's.
    /// A view that cannot be written to. Null for a length of 0 or beyond the mapper's, as for all views.
    void *newReadOnlyMappingOfLength(unsigned length) ZP_ASKS(length);
    /// A view of which what is written shows in the mapper's other views.
    void *newReadWriteMappingOfLength(unsigned length) ZP_ASKS(length);
    /// A view of which what is written stays in it.
    void *newCopyOnWriteMappingOfLength(unsigned length) ZP_ASKS(length);
    /// Turns an existing view into a copy-on-write one at the same address; NO when that fails.
    BOOL copyMapping_length(void *view, unsigned length) ZP_ASKS(view, length);
    /// Takes a view of that length away; nobody may use it any more.
    void removeMapping_length(void *view, unsigned length) ZP_TELLS(view, length);
};
