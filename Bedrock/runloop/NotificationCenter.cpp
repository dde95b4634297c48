// SPDX-License-Identifier: MIT
// Notification centers. The observers are records in one array; two indexes name them by their place in it:
//
//   _registry    the records, in order of registration until a removal moves the last ones into the gaps
//   _observers   their observers once more, side by side, which a removal looks through
//   _niltable    places of records for any name, ended by at least one -1
//   _hashtable   places of records for one name, from slot (hash of the name & mask) upward, without wrapping:
//                2^k slots and ten to spare at the end, -1 where empty; _hashtable_count is the mask
//   deleted      0x40000000 in either index; a new record does not take its slot, the next rebuild drops it
//
// A rebuild comes with a registration, when more than 25 slots are deleted or a third of the mask is passed.
//
// The lock guards all of it and is held only while the tables are read or changed, never while an observer runs: a
// post copies what it will call, then calls. It exists from the first use after the process got a second thread, or
// from the step to many threads. The lock of the default centers is taken before a center's own.
#include <Bedrock/runloop/ZPNotificationCenter.h>
#include <Bedrock/core/ZPRef.h>

#include <Bedrock/collections/ZPDictionary.h>
#include <Bedrock/core/Fronts.h>
#include <Bedrock/core/Memory.h>
#include <Bedrock/core/ZPAutoreleasePool.h>
#include <Bedrock/core/ZPException.h>
#include <Bedrock/core/ZPLog.h>
#include <Bedrock/core/ZPNames.h>
#include <Bedrock/platform/kernel/Fork.h>
#include <Bedrock/platform/kernel/MakeOnce.h>
#include <Bedrock/strings/ZPMutableString.h>
#include <Bedrock/threads/ZPLock.h>

#include <cstring>
#include <cxxabi.h>
#include <exception>
#include <vector>

struct ZPObserverRecord {
    ZPString *name;  // the center's copy, or null for any
    unsigned hash;
    id object;
    id observer;
    SEL selector;
    IMP implementation;
};

extern "C" {
ZP_STRING_CONSTANT(ZPBundleDidLoadNotification, "ZPBundleDidLoadNotification");
char ZPKeepNotificationStatistics;
void ZPRecordNotificationEvent(int, ...) { __asm__ volatile(""); }
}

namespace {

constexpr int empty = -1, deleted = 0x40000000;
constexpr unsigned mostDeleted = 25;  // slots, before a rebuild

ZPNotificationCenter *centerOfAll;
bool centerIsSet;  // by somebody: it may be exchanged again
// What the locks guard, for clang's analysis: it cannot follow locks that are made late.
struct ZP_LOCKABLE Guarded {
} tables, defaults;

ZPMutableDictionary *centersOfSubclasses ZP_GUARDED_BY(defaults);
ZPLock *defaultCenterLock;

// Every center's lock: what a fork takes.
constinit mutex locksMutex;
std::vector<ZPLock *> *locks ZP_GUARDED_BY(locksMutex);

ZPLock *lockIn(ZPLock *&slot) {
    if (ZPLock *made = __atomic_load_n(&slot, __ATOMIC_ACQUIRE)) return made;
    ZPHolding hold(locksMutex);
    if (!slot) {
        ZPRef<ZPLock> made = ZPAdopt(ZPLock::new_());
        if (!locks) locks = new std::vector<ZPLock *>;
        if (&slot != &defaultCenterLock) locks->push_back(made.get());
        __atomic_store_n(&slot, made.detach(), __ATOMIC_RELEASE);
    }
    return slot;
}
void forget(ZPLock *lock) {
    ZPHolding hold(locksMutex);
    if (locks) std::erase(*locks, lock);
}

ZP_AT_FORK(
    centers,
    []() ZP_UNCHECKED_LOCKING {
        if (!__libc_single_threaded || __atomic_load_n(&defaultCenterLock, __ATOMIC_ACQUIRE))
            lockIn(defaultCenterLock)->lock();
        locksMutex.lock();
        if (locks)
            for (ZPLock *lock : *locks) lock->lock();
    },
    [](bool) ZP_UNCHECKED_LOCKING {
        if (locks)
            for (ZPLock *lock : *locks) lock->unlock();
        locksMutex.unlock();
        if (defaultCenterLock) defaultCenterLock->unlock();
    });

/// Holds the lock in a slot to the end of the block; none while the process has one thread and no lock was made.
class ZP_SCOPED_LOCK Locked {
    ZPLock *_lock;

  public:
    Locked(ZPLock *&slot, [[maybe_unused]] Guarded &what) ZP_ACQUIRES(what)
        : _lock(__atomic_load_n(&slot, __ATOMIC_ACQUIRE)) {
        if (!_lock && !__libc_single_threaded) _lock = lockIn(slot);
        if (_lock) _lock->lock();
    }
    ~Locked() ZP_RELEASES() {
        if (_lock) _lock->unlock();
    }
    Locked(const Locked &) = delete;
};

template <class T> void resize(T *&block, unsigned count) {
    block = _ZPReallocate(block, count, nullptr, "a notification center");
}

void sendNotification(objc_object *observer, SEL selector, ZPNotification *notification) {
    objc_msgSend<void>(id(observer), selector, notification);
}

// The method itself, of a class that is initialized by now; what the observer has none for is sent as a message, and
// so forwarded.
IMP implementationFor(id observer, SEL selector) {
    IMP found = objc_lookUpForSend(observer.pointer(), selector);
    return found ? found : reinterpret_cast<IMP>(&sendNotification);
}

/// Whom a post calls. The first sixteen need no memory of their own.
struct Snapshot {
    struct Call {
        objc_object *observer;
        SEL selector;
        IMP implementation;
    };
    Call inPlace[16];
    Call *calls = inPlace;
    unsigned count = 0;

    Snapshot() {}  // leaves the calls as they are
    Snapshot(const Snapshot &) = delete;
    ~Snapshot() {
        if (calls != inPlace) ZPZoneFree(nullptr, calls);
    }
    void add(const ZPObserverRecord &r, unsigned most) {
        if (count == 16 && calls == inPlace) {
            Call *larger = nullptr;
            resize(larger, most);
            std::memcpy(larger, inPlace, sizeof inPlace);
            calls = larger;
        }
        calls[count++] = {r.observer.pointer(), r.selector, r.implementation};
    }
};

struct CenterMethods : ZPNotificationCenter {
    // ---- the tables

    void insert(unsigned place) ZP_REQUIRES(tables) {
        const ZPObserverRecord &r = _registry[place];
        if (!r.name) {
            if (_niltable_size <= _niltable_count + 1) {
                resize(_niltable, _niltable_size + 4);
                for (unsigned i = 0; i < 4; ++i) _niltable[_niltable_size++] = empty;
            }
            _niltable[_niltable_count++] = int(place);
            return;
        }
        unsigned slot = r.hash & _hashtable_count;
        while (_hashtable[slot] >= 0) {
            if (++slot + 1 >= _hashtable_size) {
                resize(_hashtable, _hashtable_size + 10);
                for (unsigned i = 0; i < 10; ++i) _hashtable[_hashtable_size++] = empty;
            }
        }
        _hashtable[slot] = int(place);
    }

    void rebuild() ZP_REQUIRES(tables) {
        unsigned slots = 128;
        while (slots < 4 * (_registry_count + 16)) slots *= 2;
        resize(_hashtable, slots + 10);
        _deleted_count = 0;
        for (unsigned i = 0; i < _niltable_size; ++i) _niltable[i] = empty;
        _niltable_count = 0;
        _hashtable_count = slots - 1;
        _hashtable_size = slots + 10;
        for (unsigned i = 0; i < _hashtable_size; ++i) _hashtable[i] = empty;
        for (unsigned i = 0; i < _registry_count; ++i) insert(i);
    }

    // Writes another value over the record's own entry in its index.
    void mark(unsigned place, int value) ZP_REQUIRES(tables) {
        const ZPObserverRecord &r = _registry[place];
        int *entry = r.name ? _hashtable + (r.hash & _hashtable_count) : _niltable;
        while (*entry != int(place)) {
            if (*entry == empty) return;
            ++entry;
        }
        *entry = value;
        if (value == deleted) ++_deleted_count;
    }

    static bool isNamed(const ZPObserverRecord &r, ZPString *name) {
        return r.name == name || (r.name && r.name->isEqualToString(name));
    }

    // ---- adding and removing

    void enter(const ZPObserverRecord &r) {
        Locked hold(_lock, tables);
        if (_registry_count == _registry_size) {
            resize(_observers, _registry_size + 64);
            resize(_registry, _registry_size + 64);
            _registry_size += 64;
        }
        new (&_registry[_registry_count]) ZPObserverRecord(r);
        _observers[_registry_count] = r.observer.pointer();
        setCount(_registry_count + 1);
        try {
            if (_deleted_count <= mostDeleted && (_registry_count + _deleted_count) * 3 <= _hashtable_count)
                insert(_registry_count - 1);
            else rebuild();
        } catch (...) {
            // Without memory the record is not there, and the indexes are made anew next time.
            setCount(_registry_count - 1);
            _deleted_count = mostDeleted + 1;
            throw;
        }
    }

    void addObserver_selector_name_object(id observer, SEL selector, ZPString *name, id object) {
        if (!observer) return;
        // Copying, hashing and looking up may run a client's code: not under the lock.
        ZPRef<ZPString> own = ZPAdopt<ZPString>(name->copyWithZone(nullptr));
        enter({own, own->hash(), object, observer, selector, implementationFor(observer, selector)});
        (void)own.detach();  // the record's now
        if (ZPKeepNotificationStatistics)
            ZPRecordNotificationEvent(1, observer.pointer(), selector, name, object.pointer());
    }

    // The observer's next record; past `high` when there is none.
    long placeOf(const objc_object *observer, long low, long high) const ZP_REQUIRES(tables) {
        constexpr int stride = 16;
        for (; low + stride <= high + 1; low += stride) {
            unsigned found = 0;
            for (int i = 0; i < stride; ++i) found |= _observers[low + i] == observer;
            if (found) break;
        }
        while (low <= high && _observers[low] != observer) ++low;
        return low;
    }

    void removeObserver(id observer) { self()->removeObserver_name_object(observer, nullptr, nullptr); }

    void removeObserver_name_object(id observer, ZPString *name, id object) {
        if (!observer) return;
        std::vector<ZPString *> names;  // released when the lock is free: a release may run a client's code
        {
            Locked hold(_lock, tables);
            if (!_registry_count) return;
            auto matches = [&](long place) {
                if (_observers[place] != observer.pointer()) return false;
                const ZPObserverRecord &r = _registry[place];
                return (!object || r.object == object) && (!name || (r.name && isNamed(r, name)));
            };
            auto remove = [&](unsigned place) ZP_REQUIRES(tables) {
                mark(place, deleted);
                if (_registry[place].name) names.push_back(_registry[place].name);
                setCount(_registry_count - 1);
            };
            for (long low = 0, high = long(_registry_count) - 1; low <= high;) {
                low = placeOf(observer.pointer(), low, high);
                if (low > high) break;
                if (!matches(low)) {
                    ++low;
                    continue;
                }
                for (; high >= low && matches(high); --high) remove(unsigned(high));
                if (high < low) break;
                remove(unsigned(low));
                mark(unsigned(high), int(low));
                _observers[low] = _observers[high];
                _registry[low++] = _registry[high--];
            }
        }
        for (ZPString *n : names) n->release();
        if (ZPKeepNotificationStatistics) ZPRecordNotificationEvent(2, observer.pointer(), name, object.pointer());
    }

    // ---- posting

    void collect(Snapshot &calls, ZPString *name, id object) {
        unsigned hash = name ? name->hash() : 0;
        Locked hold(_lock, tables);
        if (!_registry_count) return;
        for (unsigned i = 0; i < _niltable_count; ++i) {
            if (_niltable[i] == deleted) continue;
            const ZPObserverRecord &r = _registry[_niltable[i]];
            if (!r.object || r.object == object) calls.add(r, _registry_count);
        }
        if (!name) return;
        for (int *entry = _hashtable + (hash & _hashtable_count); *entry != empty; ++entry) {
            if (*entry == deleted) continue;
            const ZPObserverRecord &r = _registry[*entry];
            if (r.hash == hash && (!r.object || r.object == object) &&
                (r.name == name || name->isEqualToString(r.name)))
                calls.add(r, _registry_count);
        }
    }

    static void deliver(const Snapshot &snapshot, ZPNotification *notification) {
        std::exception_ptr first;
        ZPException *raised = nullptr;
        for (unsigned i = 0; i < snapshot.count; ++i) {
            const Snapshot::Call &call = snapshot.calls[i];
            try {
                reinterpret_cast<void (*)(objc_object *, SEL, ZPNotification *)>(
                    call.implementation)(call.observer, call.selector, notification);
            } catch (ZPException *e) {
                if (!first && !raised) (raised = e)->retain();
            } catch (abi::__forced_unwind &) {
                throw;  // the thread ends here
            } catch (...) {
                if (!first && !raised) first = std::current_exception();
            }
        }
        if (ZPKeepNotificationStatistics) ZPRecordNotificationEvent(0, notification, snapshot.count);
        if (raised) {
            raised->autorelease();
            raised->raise();
        }
        if (first) std::rethrow_exception(first);
    }

    // A post to a center without observers looks at the count alone.
    void setCount(unsigned count) ZP_REQUIRES(tables) { __atomic_store_n(&_registry_count, count, __ATOMIC_RELAXED); }
    BOOL hasObservers() { return __atomic_load_n(&_registry_count, __ATOMIC_RELAXED) != 0; }

    void postNotification(ZPNotification *notification) {
        if (!hasObservers()) return;
        Snapshot calls;
        collect(calls, notification->name(), notification->object());
        if (calls.count) deliver(calls, notification);
    }

    void postNotificationName_object(ZPString *name, id object) {
        self()->postNotificationName_object_userInfo(name, object, nullptr);
    }

    void postNotificationName_object_userInfo(ZPString *name, id object, ZPDictionary *userInfo) {
        if (!hasObservers()) return;
        Snapshot calls;
        collect(calls, name, object);
        if (!calls.count) return;
        ZPRef<ZPNotification> made = ZPAdopt<ZPNotification>(
            ZPNotification::allocWithZone(nullptr)->initWithName_object_userInfo(name, object, userInfo));
        deliver(calls, made);
    }

    // ---- default centers

    void watchBundles() {
        self()->addObserver_selector_name_object(this, "_bundleLoaded:"_sel, ZPBundleDidLoadNotification, nullptr);
    }
    static void ignoreBundles(ZPNotificationCenter *center) {
        center->removeObserver_name_object(center, ZPBundleDidLoadNotification, nullptr);
    }
    static void watchBundles(ZPNotificationCenter *center) { static_cast<CenterMethods *>(center)->watchBundles(); }

    static ZPNotificationCenter *defaultCenter(Class self) {
        bool isFront = self == ZPNotificationCenter::class_();
        if (isFront)
            if (!__atomic_load_n(&centerIsSet, __ATOMIC_ACQUIRE))
                if (ZPNotificationCenter *center = __atomic_load_n(&centerOfAll, __ATOMIC_ACQUIRE)) return center;
        Locked hold(defaultCenterLock, defaults);
        // What may be exchanged is the reader's until its pool goes.
        if (isFront) {
            if (centerOfAll) return centerIsSet ? ZPRef<ZPNotificationCenter>(centerOfAll).autoreleased() : centerOfAll;
        } else if (centersOfSubclasses) {
            if (id center = centersOfSubclasses->objectForKey(id(self)))
                return center->retain()->autorelease().as<ZPNotificationCenter>();
        }
        ZPNotificationCenter *made = ZPNotificationCenter::allocFrom(self)->init();
        ZPRef<ZPNotificationCenter> center = ZPAdopt(made);
        if (!center) return nullptr;
        if (!isFront) {
            if (!centersOfSubclasses) centersOfSubclasses = ZPMutableDictionary::alloc()->initWithCapacity(2);
            centersOfSubclasses->setObject_forKey(center, id(self));
        }
        watchBundles(center);
        if (!isFront) return std::move(center).autoreleased();
        __atomic_store_n(&centerOfAll, center.get(), __ATOMIC_RELEASE);
        return center.detach();
    }

    static void setDefaultCenter_forClass(Class self, ZPNotificationCenter *center, Class cls) {
        if (cls != ZPNotificationCenter::class_() &&
            !ZPClassObject(cls)->isKindOfClass(ZPNotificationCenter::class_()->isa))
            ZPException::raise_format(ZPInvalidArgumentException,
                                      "%@: class parameter not the ZPNotificationCenter class or subclass"_zp,
                                      _ZPMethodExceptionProem(id(self), "setDefaultCenter:forClass:"_sel));
        ZPRef<ZPNotificationCenter> old;  // released when the lock is free
        {
            Locked hold(defaultCenterLock, defaults);
            if (cls == ZPNotificationCenter::class_()) {
                if (centerOfAll) ignoreBundles(centerOfAll);
                old = ZPAdopt(centerOfAll);
                if (!centerIsSet) old->retain();  // the first one stays: readers have it without a reference
                __atomic_store_n(&centerIsSet, true, __ATOMIC_RELEASE);
                center->retain();
                __atomic_store_n(&centerOfAll, center, __ATOMIC_RELEASE);
                if (center) watchBundles(center);
            } else {
                old = centersOfSubclasses ? centersOfSubclasses->objectForKey(id(cls)).as<ZPNotificationCenter>()
                                          : nullptr;
                if (old == center) return;
                if (old) {
                    ignoreBundles(old);
                    centersOfSubclasses->removeObjectForKey(id(cls));
                }
                if (center) {
                    if (!centersOfSubclasses) centersOfSubclasses = ZPMutableDictionary::alloc()->initWithCapacity(2);
                    centersOfSubclasses->setObject_forKey(center, id(cls));
                }
            }
        }
    }

    // ---- the rest

    void _taskNowMultiThreaded() {
        lockIn(_lock);
        lockIn(defaultCenterLock);
    }

    // A bundle's categories may have replaced methods.
    void _bundleLoaded(ZPNotification *notification) {
        if (notification->userInfo()) return;
        Locked hold(_lock, tables);
        for (unsigned i = 0; i < _registry_count; ++i)
            _registry[i].implementation = implementationFor(_registry[i].observer, _registry[i].selector);
    }

    ZPString *description() {
        struct Copy {
            std::vector<ZPObserverRecord> records;
            ~Copy() {
                for (auto &r : records) r.name->release();
            }
        } copy;
        unsigned capacity;
        {
            Locked hold(_lock, tables);
            copy.records.assign(_registry, _registry + _registry_count);
            capacity = _registry_size;
            for (auto &r : copy.records) r.name->retain();
        }
        auto count = unsigned(copy.records.size());
        ZPMutableString *text = ZPMutableString::stringWithCapacity(count * 160);
        text->appendFormat("%@ %lx {count = %u; max = %u; size = %u; table = (\n"_zp, id(isa),
                           reinterpret_cast<unsigned long>(this), count, capacity,
                           unsigned(capacity * sizeof(ZPObserverRecord)));
        for (unsigned i = 0; i < count; ++i) {
            const ZPObserverRecord &r = copy.records[i];
            text->appendFormat("\t{name = %@; object = %s<%lx>; observer = %@<%lx>; SEL = %s;}"_zp, r.name,
                               r.object ? r.object->objectClass()->name : "",
                               reinterpret_cast<unsigned long>(r.object.pointer()), r.observer,
                               reinterpret_cast<unsigned long>(r.observer.pointer()), sel_getName(r.selector));
            if (i + 1 < count) text->appendString(",\n"_zp);
        }
        text->appendString(");}"_zp);
        return text;
    }

    void dealloc() {
        if (this == __atomic_load_n(&centerOfAll, __ATOMIC_ACQUIRE)) return;
        for (unsigned i = 0; i < _registry_count; ++i) _registry[i].name->release();
        for (void *block : {static_cast<void *>(_registry), static_cast<void *>(_observers),
                            static_cast<void *>(_niltable), static_cast<void *>(_hashtable)})
            if (block) ZPZoneFree(nullptr, block);
        forget(_lock);
        _lock->release();
        ZP_SUPER(ZPNotificationCenter, dealloc)();
    }
};

}  // namespace

ZP_SAME_FRONT(ZPNotificationCenter, _ZPNotificationCenterAbove, defaultCenter, postNotificationName_object);
ZP_IMPLEMENT_WITH(ZPNotificationCenter, CenterMethods, addObserver_selector_name_object, removeObserver,
                  removeObserver_name_object, postNotification, postNotificationName_object,
                  postNotificationName_object_userInfo, _taskNowMultiThreaded, _bundleLoaded, description, dealloc,
                  classMethods(defaultCenter, setDefaultCenter_forClass));
