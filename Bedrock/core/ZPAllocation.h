// SPDX-License-Identifier: MIT
// Instances, reference counts, zones and pages as plain functions.
#pragma once

#include <Bedrock/platform/ZPZone.h>

ZP_FORWARD(ZPString);

// Debug switches, read once at start-up from environment variables of the same names; a value that
// begins with "Y" or "y" turns a switch on.
extern "C" {
/// Freed objects become traps that report every message they get.
ZP_EXPORT extern BOOL ZPZombieEnabled;
/// With ZPZombieEnabled: the memory of freed objects is given back all the same.
ZP_EXPORT extern BOOL ZPDeallocateZombies;
ZP_EXPORT extern BOOL ZPDebugEnabled;
ZP_EXPORT extern BOOL ZPKeepAllocationStatistics;
ZP_EXPORT extern BOOL ZPKeepZoneStatistics;

/// Guards the counts that concrete classes keep inside their instances; null until the process is
/// multithreaded.
ZP_EXPORT extern objc_object *_ZPGlobalRetainLock;

// Reference counting; safe from any thread.

/// Adds an extra reference; null is ignored. At 0xFFFFFFFF the count stays, which is logged.
ZP_EXPORT void ZPIncrementExtraRefCount(id object);
/// Takes an extra reference away; YES when there was none, NO for null.
ZP_EXPORT BOOL ZPDecrementExtraRefCountWasZero(id object);
/// The extra references: 0 for null.
ZP_EXPORT unsigned ZPExtraRefCount(id object);

// Counts in a word of the instance: the bits of `mask` hold the count, the side count takes over when
// they are full. `lock` (may be null) is sent lock and unlock around the change. Without a lock changes of
// a word that is not full are atomic; where threads may fill a word, they need the lock.
ZP_EXPORT void _ZPIncrementInternalRefCount(id object, unsigned *counter, unsigned mask, id lock);
ZP_EXPORT BOOL _ZPDecrementInternalRefCountWasZero(id object, unsigned *counter, unsigned mask, id lock);
ZP_EXPORT unsigned _ZPInternalRefCount(id object, unsigned counter, unsigned mask);

// Instances.

/// Frees an instance, or turns it into a zombie.
ZP_EXPORT void ZPDeallocateObject(id object);
/// YES when copying an immutable object into the zone may retain it instead.
ZP_EXPORT BOOL ZPShouldRetainWithZone(id object, ZPZone *zone);

// Zones; a null zone means the default zone. Sizes are in bytes.

ZP_EXPORT ZPZone *ZPDefaultMallocZone();
/// A child zone; 0 for a size selects the page size.
ZP_EXPORT ZPZone *ZPCreateZone(unsigned startSize, unsigned granularity, BOOL canFree);
/// Hands the zone's blocks to the default zone. Null and the default zone are left alone.
ZP_EXPORT void ZPRecycleZone(ZPZone *zone);
ZP_EXPORT void ZPSetZoneName(ZPZone *zone, ZPString *name);
/// The zone's name; the empty string when it has none.
ZP_EXPORT ZPString *ZPZoneName(ZPZone *zone);
ZP_EXPORT void *ZPZoneMalloc(ZPZone *zone, std::size_t size);
/// Zero-filled; null when count x size does not fit a size.
ZP_EXPORT void *ZPZoneCalloc(ZPZone *zone, std::size_t count, std::size_t size);
ZP_EXPORT void *ZPZoneRealloc(ZPZone *zone, void *pointer, std::size_t size);
ZP_EXPORT void ZPZoneFree(ZPZone *zone, void *pointer);
ZP_EXPORT ZPZone *ZPZoneFromPointer(const void *pointer);

// Pages.

ZP_EXPORT unsigned ZPPageSize();
ZP_EXPORT unsigned ZPLogPageSize();
ZP_EXPORT unsigned ZPRoundUpToMultipleOfPageSize(unsigned bytes);
ZP_EXPORT unsigned ZPRoundDownToMultipleOfPageSize(unsigned bytes);
/// Zero-filled pages; failure raises ZPInvalidArgumentException.
ZP_EXPORT void *ZPAllocateMemoryPages(unsigned bytes);
ZP_EXPORT void ZPDeallocateMemoryPages(void *pages, unsigned bytes);
/// Copies bytes; the runs may overlap.
ZP_EXPORT void ZPCopyMemoryPages(const void *source, void *destination, unsigned bytes);
/// The machine's memory in bytes, at most 0xFFFFFFFF.
ZP_EXPORT unsigned ZPRealMemoryAvailable();
/// floor(log2 n); 0 for 0 and 1.
ZP_EXPORT int ZPLog2(unsigned n);
}

/// A new instance, zero-filled, `isa` set, with `extraBytes` behind its fields. The caller owns it.
ZP_EXPORT id ZPAllocateObject(Class cls, unsigned extraBytes, ZPZone *zone);
/// A copy with the same extra bytes; null for null.
ZP_EXPORT id ZPCopyObject(id object, unsigned extraBytes, ZPZone *zone);
