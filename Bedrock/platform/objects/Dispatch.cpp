// SPDX-License-Identifier: MIT
// The slow sides of a send: method caches, `+initialize`, forwarding, frames, type checks.
#include <Bedrock/platform/objects/Objects.h>

#include <cstdlib>
#include <sys/single_threaded.h>

using namespace objc;

// No selector has this address; null would match a send of the null selector.
static const SEL noSelector = reinterpret_cast<SEL>(~std::uintptr_t(0));

objc_cache objc_emptyCache = {0, 0, nullptr, {{reinterpret_cast<SEL>(~std::uintptr_t(0)), nullptr}}};

namespace {

pthread_cond_t initialized = PTHREAD_COND_INITIALIZER;

// Null without memory.
objc_cache *makeCache(unsigned buckets) {
    auto *cache = static_cast<objc_cache *>(std::malloc(sizeof(objc_cache) + (buckets - 1) * sizeof(objc_cacheBucket)));
    if (!cache) return nullptr;
    cache->mask = (buckets - 1) * sizeof(objc_cacheBucket);
    cache->count = 0;
    cache->retired = nullptr;
    for (unsigned i = 0; i < buckets; ++i) cache->buckets[i] = {noSelector, nullptr};
    return cache;
}

unsigned bucketsOf(const objc_cache *cache) { return cache->mask / sizeof(objc_cacheBucket) + 1; }

// Answers whether the selector got its first-choice bucket, the only one a send looks at inline.
bool place(objc_cache *cache, SEL selector, IMP implementation) {
    unsigned mask = bucketsOf(cache) - 1, home = hashOf(selector) & mask, i = home;
    while (cache->buckets[i].selector != noSelector) i = (i + 1) & mask;
    __atomic_store_n(&cache->buckets[i].implementation, implementation, __ATOMIC_RELAXED);
    __atomic_store_n(&cache->buckets[i].selector, selector, __ATOMIC_RELEASE);
    ++cache->count;
    return i == home;
}

IMP probe(const objc_cache *cache, SEL selector) {
    unsigned mask = bucketsOf(cache) - 1;
    for (unsigned i = hashOf(selector) & mask, n = 0; n <= mask; i = (i + 1) & mask, ++n) {
        SEL found = __atomic_load_n(&cache->buckets[i].selector, __ATOMIC_ACQUIRE);
        if (found == selector) return __atomic_load_n(&cache->buckets[i].implementation, __ATOMIC_RELAXED);
        if (found == noSelector) return nullptr;
    }
    return nullptr;
}

// A cache is at most half full. While selectors share first choices it is doubled, up to eight
// buckets an entry: a send that misses its first choice costs several times one that hits.
void fill(Class cls, SEL selector, IMP implementation) {
    objc_cache *cache = cls->cache;
    if (cache != &objc_emptyCache && probe(cache, selector)) return;
    unsigned count = cache->count + 1;
    if (cache != &objc_emptyCache && count * 2 <= bucketsOf(cache)) {
        bool free = cache->buckets[hashOf(selector) & (bucketsOf(cache) - 1)].selector == noSelector;
        if (free || bucketsOf(cache) >= count * 8) {
            place(cache, selector, implementation);
            return;
        }
    }
    unsigned buckets = cache == &objc_emptyCache ? 4 : bucketsOf(cache) * 2;
    for (;; buckets *= 2) {
        objc_cache *larger = makeCache(buckets);
        if (!larger) return;  // without memory the method is found again the long way
        bool direct = true;
        for (unsigned i = 0; i < bucketsOf(cache); ++i)
            if (cache->buckets[i].selector != noSelector)
                direct &= place(larger, cache->buckets[i].selector, cache->buckets[i].implementation);
        direct &= place(larger, selector, implementation);
        if (direct || buckets >= count * 8) {
            __atomic_store_n(&cls->cache, larger, __ATOMIC_RELEASE);
            retireCache(cache);
            return;
        }
        std::free(larger);
    }
}

// Runs `+initialize` once, superclass first. Other threads wait; the running thread passes. Answers
// whether the class is initialized now (NO only inside its own `+initialize`). Lock held once.
bool ensureInitialized(Class cls) {
    while (!(infoOf(cls) & objc_isInitialized)) {
        objc_classState &state = stateOf(cls);
        if (infoOf(cls) & objc_isInitializing) {
            if (pthread_equal(state.initializer, pthread_self())) return false;
            pthread_cond_wait(&initialized, &runtimeMutex());
            continue;
        }
        // Waits for another thread; when this one is inside the superclass's own `+initialize`, which uses this
        // class, the class goes ahead.
        if (cls->superclass) ensureInitialized(cls->superclass);
        if (infoOf(cls) & (objc_isInitialized | objc_isInitializing)) continue;
        setInfo(cls, objc_isInitializing);
        state.initializer = pthread_self();
        struct Finish {
            Class cls;
            ~Finish() {
                pthread_mutex_lock(&runtimeMutex());
                setInfo(cls,
                        objc_isInitialized | (infoOf(cls->isa) & objc_defaultAllocation ? objc_allocatesPlainly : 0u));
                clearInfo(cls, objc_isInitializing);
                pthread_cond_broadcast(&initialized);
            }
        };
        objc_method *m = findMethod(cls->isa, "initialize"_sel);
        pthread_mutex_unlock(&runtimeMutex());
        Finish finish{cls};
        if (m) reinterpret_cast<void (*)(objc_object *, SEL)>(m->implementation)(cls, m->name);
    }
    return true;
}

}  // namespace

void objc::retireCache(objc_cache *cache) {
    // A reader in another thread may still be looking at it; sizes double, so little is kept.
    static objc_cache *kept;
    if (cache == &objc_emptyCache) return;
    if (__libc_single_threaded) {
        std::free(cache);
        return;
    }
    cache->retired = kept;
    kept = cache;
}

IMP objc_lookUpForSend(objc_object *receiver, SEL selector) {
    Class cls = receiver->isa;
    if (IMP found = probe(__atomic_load_n(&cls->cache, __ATOMIC_ACQUIRE), selector)) return found;
    if (!selector) return nullptr;
    Lock lock;
    realize(cls);
    bool isMeta = infoOf(cls) & objc_isMetaclass;
    bool cacheable = ensureInitialized(isMeta ? reinterpret_cast<Class>(receiver) : cls);
    objc_method *m = findMethod(cls, selector);
    if (!m) return nullptr;
    if (cacheable) fill(cls, selector, m->implementation);
    return m->implementation;
}

IMP objc_lookUpForSuper(Class superclass, SEL selector) {
    if (!superclass || !selector) return nullptr;
    if (IMP found = probe(__atomic_load_n(&superclass->cache, __ATOMIC_ACQUIRE), selector)) return found;
    Lock lock;
    realize(superclass);
    objc_method *m = findMethod(superclass, selector);
    if (m &&
        (infoOf(infoOf(superclass) & objc_isMetaclass ? superclass->counterpart : superclass) & objc_isInitialized))
        fill(superclass, selector, m->implementation);
    return m ? m->implementation : nullptr;
}

void objc_forwardFrame(objc_object *receiver, SEL selector, objc_frame *frame) {
    if (selector == "forward::"_sel || !class_getInstanceMethod(receiver->isa, "forward::"_sel))
        objc_fatal("%s does not implement %s and does not forward", receiver->isa->name,
                   selector ? sel_getName(selector) : "the null selector");
    objc_msgSendUnchecked<void>(receiver, "forward::"_sel, selector, frame);
}

void objc_sendFrame(objc_object *receiver, SEL selector, unsigned length, void *arguments, void *result,
                    unsigned resultSize) {
    if (!receiver) return;
    objc_lookUpForSend(receiver, selector);  // initializes the class
    const objc_method *m = class_getInstanceMethod(receiver->isa, selector);
    // Results that travel in registers; longer ones go where the frame's first word points.
    alignas(64) char answer[64] = {};
    if (!m) {
        // Who handles the message may store a word even when the sender has no use for it.
        bool fits = result && resultSize >= sizeof(void *);
        objc_frame frame{"@@:", arguments, length, fits ? resultSize : unsigned(sizeof(void *)), fits ? result : answer,
                         NO};
        objc_forwardFrame(receiver, selector, &frame);
        if (result && !fits) std::memcpy(result, answer, resultSize);
        return;
    }
    if (!m->invoker) objc_fatal("-[%s %s] cannot be sent with a frame", receiver->isa->name, sel_getName(selector));
    if (length < m->argumentSize)
        objc_fatal("-[%s %s] takes a frame of %u bytes and was sent one of %u", receiver->isa->name,
                   sel_getName(selector), m->argumentSize, length);
    void *at = m->invoker(m->implementation, receiver, selector, arguments,
                          result && resultSize >= sizeof answer ? result : answer);
    if (result && at == answer) std::memcpy(result, answer, resultSize);
}

void objc_setMultithreaded(BOOL) {}

// ---- checks of checked builds ------------------------------------------------------------------

namespace {

const char *skipQualifiers(const char *t) {
    while (*t && std::strchr("rnNoORV", *t)) ++t;
    return t;
}

// The end of one type: a code, or a bracketed group, or what a pointer points to.
const char *skipType(const char *t) {
    t = skipQualifiers(t);
    if (*t == '^') return skipType(t + 1);
    if (*t == '{' || *t == '[' || *t == '(') {
        int depth = 0;
        do {
            if (*t == '{' || *t == '[' || *t == '(') ++depth;
            if (*t == '}' || *t == ']' || *t == ')') --depth;
        } while (*t++ && depth);
        return t;
    }
    return *t ? t + 1 : t;
}

char kindOf(char code) {
    switch (code) {
    case 'C': return 'c';
    case 'S': return 's';
    case 'I': return 'i';
    case 'l':
    case 'L':
    case 'Q': return 'q';
    case '#': return '@';
    case '*':
    case '%': return '^';
    default: return code;
    }
}

}  // namespace

BOOL objc_typesMatch(const char *a, const char *b) {
    while (*a && *b) {
        a = skipQualifiers(a);
        b = skipQualifiers(b);
        const char *endA = skipType(a), *endB = skipType(b);
        char kindA = kindOf(*a), kindB = kindOf(*b);
        bool pointers = std::strchr("@^:", kindA) && std::strchr("@^:", kindB) && kindA && kindB;
        bool wild = (kindA == '^' && a[1] == 'v') || (kindB == '^' && b[1] == 'v');
        if (kindA != kindB && !(pointers && wild)) return NO;
        if (kindA == '{' && (endA - a != endB - b || std::strncmp(a, b, endA - a))) {
            // A structure without a type string of its own is written as bytes, equal in size only.
            if (std::strncmp(a, "{?=[", 4) && std::strncmp(b, "{?=[", 4)) return NO;
        }
        a = endA;
        b = endB;
        while (*a >= '0' && *a <= '9') ++a;
        while (*b >= '0' && *b <= '9') ++b;
    }
    return *a == *b;
}

void objc_checkSend(Class cls, SEL selector, const char *types) {
    struct Entry {
        Class cls;
        SEL selector;
        const char *types;
        unsigned generation;
    };
    static thread_local Entry checked[256];
    Entry &entry = checked[(hashOf(selector) ^ (reinterpret_cast<std::uintptr_t>(cls) >> 6)) & 255];
    unsigned now = __atomic_load_n(&generation, __ATOMIC_RELAXED);
    if (entry.cls == cls && entry.selector == selector && entry.types == types && entry.generation == now) return;
    const objc_method *m = class_getInstanceMethod(cls, selector);
    if (m && !objc_typesMatch(types, m->types))
        objc_fatal("%c[%s %s] has the type \"%s\" and was sent with the C++ types \"%s\"",
                   infoOf(cls) & objc_isMetaclass ? '+' : '-', cls->name, sel_getName(selector), m->types, types);
    entry = {cls, selector, types, now};
}

void objc_conversionFailed(objc_object *object, Class wanted) {
    objc_fatal("an object of class %s at %p was converted to %s *", object->isa->name, static_cast<void *>(object),
               wanted->name);
}
