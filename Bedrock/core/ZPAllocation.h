// SPDX-License-Identifier: MIT
// Instances, reference counts, zones and pages as plain functions.
#pragma once

#include <Bedrock/platform/ZPZone.h>

ZP_FORWARD(ZPString);

// Debug switches, read once at start-up from environment variables of the same names; a value that
// begins with "Y" or "y" turns a switch on.
extern "C" {
/// Freed objects become traps that log and raise for every message they get.
ZP_EXPORT extern BOOL ZPZombieEnabled;
/// With ZPZombieEnabled: the memory of freed objects is given back all the same.
ZP_EXPORT extern BOOL ZPDeallocateZombies;
/// Asks for a record of what happens to each object. Kept for its readers: the library itself keeps none yet.
ZP_EXPORT extern BOOL ZPDebugEnabled;
/// Asks for a count of allocations; the library itself keeps none yet.
ZP_EXPORT extern BOOL ZPKeepAllocationStatistics;
/// Asks for a count of zones' blocks; the library itself keeps none yet.
ZP_EXPORT extern BOOL ZPKeepZoneStatistics;

/// Guards the counts that concrete classes keep inside their instances; null until the process is
/// multithreaded.
ZP_EXPORT extern objc_object *_ZPGlobalRetainLock;

// Reference counting; safe from any thread.

/// Adds an extra reference; null is ignored. At 0xFFFFFFFF the count stays there for good, which is logged.
ZP_EXPORT void ZPIncrementExtraRefCount(id object);
/// Takes an extra reference away; YES when there was none, and the caller deallocates. NO for null.
ZP_EXPORT BOOL ZPDecrementExtraRefCountWasZero(id object);
/// The extra references: 0 for null.
ZP_EXPORT unsigned ZPExtraRefCount(id object);

// Counts in a word of the instance: the bits of `mask` hold the count, the side count takes over when
// they are full. `lock` (may be null) is sent lock and unlock around the change. Without a lock changes of
// a word that is not full are atomic; where threads may fill a word, they need the lock.
/// Adds an extra reference.
ZP_EXPORT void _ZPIncrementInternalRefCount(id object, unsigned *counter, unsigned mask, id lock);
/// Takes an extra reference away; YES when there was none, and the caller deallocates.
ZP_EXPORT BOOL _ZPDecrementInternalRefCountWasZero(id object, unsigned *counter, unsigned mask, id lock);
/// The retain count that `counter`, the word's value, stands for: one more than the extra references.
ZP_EXPORT unsigned _ZPInternalRefCount(id object, unsigned counter, unsigned mask);

// Instances.

/// Frees an instance, or turns it into a zombie, whatever its count; null is ignored. What `dealloc` of a root
/// class does.
ZP_EXPORT void ZPDeallocateObject(id object);
/// YES when copying an immutable object into the zone may retain it instead: for null and the default zone, and for
/// the object's own.
ZP_EXPORT BOOL ZPShouldRetainWithZone(id object, ZPZone *zone);

// Zones; a null zone means the default zone. Sizes are in bytes.

/// The zone on the process heap.
ZP_EXPORT ZPZone *ZPDefaultMallocZone();
/// A child zone; 0 for a size selects the page size. `canFree` NO: freed blocks are not reused. Null without
/// memory.
ZP_EXPORT ZPZone *ZPCreateZone(unsigned startSize, unsigned granularity, BOOL canFree);
/// Ends the zone: its blocks live on and belong to the default zone. Null and the default zone are left alone.
ZP_EXPORT void ZPRecycleZone(ZPZone *zone);
/// Names the zone, for people; null takes the name away.
ZP_EXPORT void ZPSetZoneName(ZPZone *zone, ZPString *name);
/// The zone's name, autoreleased; the empty string when it has none.
ZP_EXPORT ZPString *ZPZoneName(ZPZone *zone);
/// A block that the caller frees, aligned to 16, its bytes as they come; null without memory.
ZP_EXPORT void *ZPZoneMalloc(ZPZone *zone, std::size_t size);
/// The same, zero-filled; null also when count x size does not fit a size.
ZP_EXPORT void *ZPZoneCalloc(ZPZone *zone, std::size_t count, std::size_t size);
/// Gives a block of the zone another size, moving it where needed; null for the block makes a new one. Null, and
/// the block stays as it is, without memory.
ZP_EXPORT void *ZPZoneRealloc(ZPZone *zone, void *pointer, std::size_t size);
/// Frees a block of the zone; null is ignored.
ZP_EXPORT void ZPZoneFree(ZPZone *zone, void *pointer);
/// The zone that a block came from: a child zone, else the default zone; null for null.
ZP_EXPORT ZPZone *ZPZoneFromPointer(const void *pointer);

// Pages.

/// The size of a memory page in bytes.
ZP_EXPORT unsigned ZPPageSize();
/// Its binary logarithm: 12 for 4,096.
ZP_EXPORT unsigned ZPLogPageSize();
/// The next multiple of the page size, or the number itself; 0 where that passes 0xFFFFFFFF.
ZP_EXPORT unsigned ZPRoundUpToMultipleOfPageSize(unsigned bytes);
/// The last multiple of the page size, or the number itself.
ZP_EXPORT unsigned ZPRoundDownToMultipleOfPageSize(unsigned bytes);
/// Zero-filled pages, which `ZPDeallocateMemoryPages` gives back; raises ZPInvalidArgumentException when there are
/// none, also for 0 bytes.
ZP_EXPORT void *ZPAllocateMemoryPages(unsigned bytes);
/// Gives pages back; raises ZPInvalidArgumentException when the address is not the beginning of a page.
ZP_EXPORT void ZPDeallocateMemoryPages(void *pages, unsigned bytes);
/// Copies bytes; the runs may overlap.
ZP_EXPORT void ZPCopyMemoryPages(const void *source, void *destination, unsigned bytes);
/// The machine's memory in bytes, at most 0xFFFFFFFF.
ZP_EXPORT unsigned ZPRealMemoryAvailable();
/// floor(log2 n); 0 for 0 and 1.
ZP_EXPORT int ZPLog2(unsigned n);
}

/// A new instance, zero-filled, `isa` set, with `extraBytes` behind its fields, in a zone (null: the default zone).
/// The caller owns it. Raises ZPMallocException when there is no memory.
ZP_EXPORT id ZPAllocateObject(Class cls, unsigned extraBytes, ZPZone *zone);
/// A copy of the fields and `extraBytes` behind them, which the caller owns. Fields with a copy constructor, a `ZPRef`
/// among them, are copied by it; all others as bytes, so what a plain pointer refers to is not retained. One that
/// cannot be copied stops the process. Null for null; raises ZPMallocException when there is no memory.
ZP_EXPORT id ZPCopyObject(id object, unsigned extraBytes, ZPZone *zone);
