// SPDX-License-Identifier: MIT
// Runs of bytes: immutable and mutable data objects, whole files, bit vectors. Other rooms of the library see the bytes
// by DataView.h; how they are stored is the folder's own. Read this first, then Data.cpp.
#pragma once

#include <Bedrock/core/ZPObject.h>

ZP_FORWARD(ZPFileMapper);
ZP_FORWARD(ZPMutableData);
ZP_FORWARD(ZPString);

/// An immutable run of bytes, the front of a class cluster. A subclass supplies `length` and `bytes`. Lengths,
/// locations and ranges count bytes. A length above 1,073,741,823 raises ZPInvalidArgumentException. Data objects
/// that are answered are autoreleased. May be read from any thread.
struct ZPData : ZPObject {
    ZP_CLASS(ZPData)

    // ---- making data: autoreleased ----

    /// Autoreleased data without bytes.
    static ZPData *data() ZP_CLASS_ASKS();
    /// Copies the bytes. Without memory for them it answers null, or raises ZPMallocException for less than a page.
    static ZPData *dataWithBytes_length(const void *bytes, unsigned length) ZP_CLASS_ASKS(bytes, length);
    /// Takes over a zone's block, which is freed with the data.
    static ZPData *dataWithBytesNoCopy_length(void *bytes, unsigned length) ZP_CLASS_ASKS(bytes, length);
    /// A copy of the bytes of another data object (null: none).
    static ZPData *dataWithData(ZPData *other) ZP_CLASS_ASKS(other);
    /// A regular file read whole; null, with the reason in `errno`, when it cannot be read.
    static ZPData *dataWithContentsOfFile(ZPString *path) ZP_CLASS_ASKS(path);
    /// A regular file's bytes without reading them first; null, with the reason in `errno`, when it cannot be
    /// mapped. The file must not become shorter while the data lives.
    static ZPData *dataWithContentsOfMappedFile(ZPString *path) ZP_CLASS_ASKS(path);

    // ---- initialisers: each may answer another object than the receiver ----

    /// As the class message: copies the bytes.
    ZPData *initWithBytes_length(const void *bytes, unsigned length) ZP_ASKS(bytes, length);
    /// As the class message: takes over a zone's block.
    ZPData *initWithBytesNoCopy_length(void *bytes, unsigned length) ZP_ASKS(bytes, length);
    /// As the class message.
    ZPData *initWithData(ZPData *other) ZP_ASKS(other);
    /// As the class message, null when the file cannot be read.
    ZPData *initWithContentsOfFile(ZPString *path) ZP_ASKS(path);
    /// As the class message, null when the file cannot be mapped.
    ZPData *initWithContentsOfMappedFile(ZPString *path) ZP_ASKS(path);
    /// The others end here. Bytes that are not copied outlive the object, or with `freeWhenDone` are its own: a
    /// zone's block, or whole pages when `bytesAreVM`.
    ZPData *initWithBytes_length_copy_freeWhenDone_bytesAreVM(void *bytes, unsigned length, BOOL copy,
                                                              BOOL freeWhenDone, BOOL bytesAreVM)
        ZP_ASKS(bytes, length, copy, freeWhenDone, bytesAreVM);
    /// A view of the mapper's first `length` bytes. Null when there can be none.
    ZPData *initWithFileMapper_length(ZPFileMapper *mapper, unsigned length) ZP_ASKS(mapper, length);

    // ---- reading ----

    /// The number of bytes.
    unsigned length() ZP_ASKS();
    /// Valid while the receiver lives and its length does not change; may be null when it is empty.
    const void *bytes() ZP_ASKS();
    /// Copies all bytes; the buffer holds `length()` of them.
    void getBytes(void *buffer) ZP_TELLS(buffer);
    /// Copies the first `length` bytes, or all when there are fewer.
    void getBytes_length(void *buffer, unsigned length) ZP_TELLS(buffer, length);
    /// Copies what exists of the range; one that is not empty and begins at or past the end raises
    /// ZPRangeException.
    void getBytes_range(void *buffer, ZPRange range) ZP_TELLS(buffer, range);
    /// The bytes of a range, shared with the receiver where they are many. A range that is not empty and reaches
    /// past the end raises ZPRangeException.
    ZPData *subdataWithRange(ZPRange range) ZP_ASKS(range);
    /// Whether both have the same bytes; NO for null.
    BOOL isEqualToData(ZPData *other) ZP_ASKS(other);
    /// Written to a file, through a temporary one beside it when `atomically`. NO, with the reason in `errno`,
    /// and an existing file unchanged in the atomic case, when that fails.
    BOOL writeToFile_atomically(ZPString *path, BOOL atomically) ZP_ASKS(path, atomically);
    /// Whether the bytes are whole pages.
    BOOL _bytesAreVM() ZP_ASKS();
    /// The mapper whose view the bytes are, or null.
    ZPFileMapper *fileMapper() ZP_ASKS();
    /// The class that archives name: ZPData.
    Class classForCoder() ZP_ASKS();

    // ---- bit vectors: byte 0 first; bytes behind the end count as zero ----

    /// Whether the same bits are set in both.
    BOOL isEqualToBitVector(ZPData *other) ZP_ASKS(other);
    /// Whether any bit is set in both.
    BOOL intersectsBitVector(ZPData *other) ZP_ASKS(other);
    /// The bits that are set in both; ends with the last byte that is not zero.
    ZPData *intersectionWithBitVector(ZPData *other) ZP_ASKS(other);
    /// The bits that are set in either, as long as the longer one.
    ZPData *unionWithBitVector(ZPData *other) ZP_ASKS(other);
    /// The number of set bits.
    unsigned numberOfSetBits() ZP_ASKS();
    // Compressed vectors, which end in a zero byte as a plain one does not; long runs of zeros are taken out.
    /// The vector in compressed form where it has runs of six zero bytes or more, else as it is; without zero bytes at
    /// its end.
    ZPData *_compressIfNeeded() ZP_ASKS();
    /// The plain form of a vector in either.
    ZPData *_decompressIfNeeded() ZP_ASKS();
    /// Whether any bit is set in both, of which each may be compressed.
    BOOL _intersectsBitVectorMaybeCompressed(ZPData *other) ZP_ASKS(other);
};

/// Bytes that can be changed. A subclass supplies `mutableBytes` and `setLength:` beside the primitives of ZPData.
/// Growing raises ZPMallocException when there is no memory. One thread at a time.
struct ZPMutableData : ZPData {
    ZP_CLASS(ZPMutableData)

    /// A new data object without bytes.
    static ZPMutableData *data() ZP_CLASS_ASKS();
    /// Copies the bytes.
    static ZPMutableData *dataWithBytes_length(const void *bytes, unsigned length) ZP_CLASS_ASKS(bytes, length);
    /// The bytes of another data object (null: none), shared where they are many until they are changed.
    static ZPMutableData *dataWithData(ZPData *other) ZP_CLASS_ASKS(other);
    /// A regular file read whole; null, with the reason in `errno`, when it cannot be read.
    static ZPMutableData *dataWithContentsOfFile(ZPString *path) ZP_CLASS_ASKS(path);
    /// A regular file's bytes without reading them first; null, with the reason in `errno`, when it cannot be
    /// mapped. Changes stay in memory: the file keeps its bytes.
    static ZPMutableData *dataWithContentsOfMappedFile(ZPString *path) ZP_CLASS_ASKS(path);
    /// Empty, with room for `capacity` bytes.
    static ZPMutableData *dataWithCapacity(unsigned capacity) ZP_CLASS_ASKS(capacity);
    /// `length` zero bytes.
    static ZPMutableData *dataWithLength(unsigned length) ZP_CLASS_ASKS(length);
    /// Empty, with room for `capacity` bytes.
    ZPMutableData *initWithCapacity(unsigned capacity) ZP_ASKS(capacity);
    /// `length` zero bytes.
    ZPMutableData *initWithLength(unsigned length) ZP_ASKS(length);

    /// The bytes, to be changed in place; valid until the length changes.
    void *mutableBytes() ZP_ASKS();
    /// Cuts off, or adds zero bytes.
    void setLength(unsigned length) ZP_TELLS(length);
    /// Adds zero bytes.
    void increaseLengthBy(unsigned extra) ZP_TELLS(extra);
    /// Copies bytes to the end; they may lie in the receiver.
    void appendBytes_length(const void *bytes, unsigned length) ZP_TELLS(bytes, length);
    /// Adds the bytes of another data object, also of the receiver, at the end.
    void appendData(ZPData *other) ZP_TELLS(other);
    /// Overwrites the range, which may reach past the end but not begin there, with as many bytes; a location past
    /// the end raises ZPRangeException. What lies behind stays in its place.
    void replaceBytesInRange_withBytes(ZPRange range, const void *bytes) ZP_TELLS(range, bytes);
    /// Overwrites the range with zeros, by the same rules.
    void resetBytesInRange(ZPRange range) ZP_TELLS(range);
    /// Takes the bytes of another data object in the place of its own.
    void setData(ZPData *other) ZP_TELLS(other);

    /// Keeps the bits that are set in both, and at most the other's length.
    void intersectBitVector(ZPData *other) ZP_TELLS(other);
    /// Sets the bits of the other vector too, growing to its length.
    void unionBitVector(ZPData *other) ZP_TELLS(other);
    /// The same with a vector that may be compressed.
    void _unionBitVectorMaybeCompressed(ZPData *other) ZP_TELLS(other);
};

extern "C" {
/// Data with a copy of the bytes, which the caller owns. A null zone means the default zone, here and below.
ZP_EXPORT ZPData *_ZPNewImmutableData(const void *bytes, unsigned length, ZPZone *zone);
/// Data that takes over a zone's block; the caller owns it.
ZP_EXPORT ZPData *_ZPNewImmutableDataNoCopy(void *bytes, unsigned length, ZPZone *zone);

/// Mutable data that takes over a block of the zone with room for `capacity` bytes, `length` of them in use; the
/// caller owns it.
ZP_EXPORT ZPMutableData *_ZPNewMutableDataNoCopy(void *bytes, unsigned length, unsigned capacity, ZPZone *zone);

// Whole files. Failure answers NO (or -1) with the reason in `errno`. Paths as C strings are in the form that
// `fileSystemRepresentation` answers.

/// Reads a regular file into a new block of the zone, which the caller frees unless the length is 0.
ZP_EXPORT BOOL _ZPReadBytesFromFile(const char *path, void **bytes, unsigned *length, ZPZone *zone);
/// Writes a whole file, through a temporary one beside it when `atomically`; the file keeps its permissions.
ZP_EXPORT BOOL _ZPWriteBytesToFile(ZPString *path, const void *bytes, unsigned length, BOOL atomically);
/// Creates a file of an unused name in a directory (empty: the current one). The buffer gets the file's path
/// and has room for 14 bytes behind the directory; at most four characters of the prefix are used.
ZP_EXPORT int _ZPmkstemp83(char *directory, const char *prefix, int *descriptor);
/// Moves a file, which replaces an existing destination in one step. 0, or -1.
ZP_EXPORT int _ZPMoveFile(const char *from, const char *to);
}
