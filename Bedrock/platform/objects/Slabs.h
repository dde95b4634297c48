// SPDX-License-Identifier: MIT
// Instances that are made together: readers of trees cut their many small objects from slabs.
//
//   slab   live | unused | block | block | ...
//
// A block is an instance with its header, whose origin says how far behind the slab's head it lies. `live`
// counts the blocks that have not been freed, and one for the allocator while it cuts from the slab; whoever
// takes it to 0 frees the slab. So one living instance keeps its slab, 8 KiB, alive. Any thread may free.
#pragma once

#include <Bedrock/platform/ZPZone.h>

struct alignas(16) objc_slab {
    static constexpr unsigned size = 8192, largestBlock = 1024;
    unsigned live;

    void drop() {
        if (__libc_single_threaded ? --live == 0 : __atomic_sub_fetch(&live, 1, __ATOMIC_ACQ_REL) == 0) free();
    }

  private:
    void free();
};

/// Cuts instances from slabs, for one thread. They are deallocated as any others.
class objc_slabs {
    objc_slab *_open = nullptr;
    unsigned _used = 0;

    ZP_COLD bool next();

  public:
    objc_slabs() = default;
    objc_slabs(const objc_slabs &) = delete;
    ~objc_slabs() {
        if (_open) _open->drop();
    }
    /// A new instance of a class without C++ fields that counts in the header, with `extraBytes` behind its own;
    /// `isa` is set and nothing else. Null when it is too large, or there is no memory.
    objc_object *allocate(Class cls, std::size_t extraBytes) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
        (void)cls, (void)extraBytes;
        return nullptr;  // the sanitizers see every allocation and free
#else
        std::size_t size = (cls->instanceSize + extraBytes + sizeof(objc_header) + 15) & ~std::size_t(15);
        if (size > objc_slab::largestBlock) [[unlikely]]
            return nullptr;
        if (_used + size > objc_slab::size || !_open) [[unlikely]]
            if (!next()) return nullptr;
        auto *header = reinterpret_cast<objc_header *>(reinterpret_cast<char *>(_open) + _used);
        *header = {0, objc_fromSlab | _used};
        auto *object = reinterpret_cast<objc_object *>(header + 1);
        object->isa = cls;
        _used += unsigned(size);
        if (__libc_single_threaded) ++_open->live;
        else __atomic_add_fetch(&_open->live, 1, __ATOMIC_RELAXED);
        return object;
#endif
    }
};
