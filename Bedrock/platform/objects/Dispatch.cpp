// SPDX-License-Identifier: MIT
// The slow sides of a send: method caches, `+initialize`, forwarding, frames, type checks.
#include <Bedrock/platform/kernel/Fork.h>
#include <Bedrock/platform/objects/Objects+Internal.h>

#include <cstdlib>
#include <cstring>
#include <optional>
#include <utility>
#include <sys/single_threaded.h>

using namespace objc;

namespace {

pthread_cond_t initialized = PTHREAD_COND_INITIALIZER;

std::uintptr_t wordOf(SEL selector) { return reinterpret_cast<std::uintptr_t>(selector); }
SEL selectorOf(std::uintptr_t word) { return reinterpret_cast<SEL>(word & ~std::uintptr_t(1)); }

// A selector that a class has no method for is remembered in the table with this bit set, where no send finds it.
constexpr std::uintptr_t absent = 1;
// No more selectors than this are remembered as absent: whoever asks for names that come from outside must not make
// the table grow for ever.
constexpr unsigned mostAbsent = 512;

unsigned bucketsOf(Class cls) { return cls->mask ? unsigned(cls->mask / sizeof(objc_bucket)) + 1 : 0; }

// Null without memory.
objc_bucket *makeBuckets(unsigned count) {
    auto *buckets = static_cast<objc_bucket *>(std::aligned_alloc(64, count * sizeof(objc_bucket)));
    for (unsigned i = 0; buckets && i < count; ++i) buckets[i] = {};
    return buckets;
}

void write(objc_bucket &bucket, std::uintptr_t word, IMP implementation) {
    __atomic_store_n(&bucket.implementation, implementation, __ATOMIC_RELAXED);
    __atomic_store_n(&bucket.selector, word, __ATOMIC_RELEASE);
}

// Answers whether the selector got its first-choice bucket, the only one of the table that a send looks at inline.
bool place(objc_bucket *buckets, unsigned count, std::uintptr_t word, IMP implementation) {
    unsigned home = hashOf(selectorOf(word)) & (count - 1), i = home;
    while (buckets[i].selector != objc_noSelector) i = (i + 1) & (count - 1);
    write(buckets[i], word, implementation);
    return i == home || word & absent;
}

enum class Found { unknown, method, nothing };

// What the class's buckets know of a selector.
Found probe(Class cls, SEL selector, IMP &implementation) {
    std::uintptr_t word = wordOf(selector);
    const objc_bucket *first = objc_recordBucket(cls, word);
    if (__atomic_load_n(&first->selector, __ATOMIC_ACQUIRE) == word) {
        implementation = __atomic_load_n(&first->implementation, __ATOMIC_RELAXED);
        return Found::method;
    }
    auto mask = unsigned(__atomic_load_n(&cls->mask, __ATOMIC_ACQUIRE) / sizeof(objc_bucket));  // before the buckets
    const objc_bucket *buckets = __atomic_load_n(&cls->buckets, __ATOMIC_ACQUIRE);
    for (unsigned i = hashOf(selector) & mask, n = 0; n <= mask; i = (i + 1) & mask, ++n) {
        std::uintptr_t found = __atomic_load_n(&buckets[i].selector, __ATOMIC_ACQUIRE);
        if (found == word) {
            implementation = __atomic_load_n(&buckets[i].implementation, __ATOMIC_RELAXED);
            return Found::method;
        }
        if (found == (word | absent)) return Found::nothing;
        if (found == objc_noSelector) break;
    }
    return Found::unknown;
}

void growTable(Class cls, std::uintptr_t word, IMP implementation) ZP_REQUIRES(runtimeLock) {
    unsigned count = cls->cached + 1, old = bucketsOf(cls);
    for (unsigned size = old ? old * 2 : 4;; size *= 2) {
        objc_bucket *larger = makeBuckets(size);
        if (!larger) return;  // without memory the method is found again the long way
        bool direct = true;
        for (unsigned i = 0; i < old; ++i)
            if (cls->buckets[i].selector != objc_noSelector)
                direct &= place(larger, size, cls->buckets[i].selector, cls->buckets[i].implementation);
        direct &= place(larger, size, word, implementation);
        if (!direct && size < count * 8) {
            std::free(larger);
            continue;
        }
        objc_bucket *former = cls->buckets;
        __atomic_store_n(&cls->buckets, larger, __ATOMIC_RELEASE);  // before the mask
        __atomic_store_n(&cls->mask, (size - 1) * sizeof(objc_bucket), __ATOMIC_RELEASE);
        cls->cached = count;
        if (old) retire(former);
        return;
    }
}

// An object is made and ended once: the buckets of the record are for what it is sent between.
bool isSentOften(SEL selector) {
    const char *name = sel_getName(selector);
    return std::strncmp(name, "init", 4) != 0 && std::strcmp(name, "dealloc") != 0;
}

// Remembers what a selector leads to: a method's implementation, or null for none. The table is at most half full.
// While selectors share first choices it is doubled, up to eight buckets an entry: a send that misses its first choice
// costs several times one that hits.
void remember(Class cls, SEL selector, IMP implementation) ZP_REQUIRES(runtimeLock) {
    IMP known;
    if (probe(cls, selector, known) != Found::unknown) return;
    std::uintptr_t word = wordOf(selector) | (implementation ? 0 : absent);
    if (!implementation && cls->cached >= mostAbsent) return;
    if (implementation) {
        // What comes later is sent more often: first an object is made and filled, then it is asked. A bucket may
        // change its selector only while nobody else can be between the two loads of a send.
        auto *first = const_cast<objc_bucket *>(objc_recordBucket(cls, word));
        objc_bucket former = *first;
        bool alone = __libc_single_threaded, isFree = former.selector == objc_noSelector;
        if (isFree ? alone || isSentOften(selector) : alone && isSentOften(selector)) {
            write(*first, word, implementation);
            if (isFree) return;
            word = former.selector;
            implementation = former.implementation;
        }
    }
    unsigned size = bucketsOf(cls), count = cls->cached + 1;
    if (count * 2 > size) return growTable(cls, word, implementation);
    bool direct = cls->buckets[hashOf(selectorOf(word)) & (size - 1)].selector == objc_noSelector;
    if (!direct && implementation && size < count * 8) return growTable(cls, word, implementation);
    place(cls->buckets, size, word, implementation);
    cls->cached = count;
}

void refresh(Class cls, objc_bucket &bucket, std::uintptr_t only) ZP_REQUIRES(runtimeLock) {
    if (bucket.selector == objc_noSelector || (only && (bucket.selector & ~absent) != only)) return;
    if (const objc_method *m = findMethod(cls, selectorOf(bucket.selector)))
        write(bucket, wordOf(m->name), m->implementation);
}

void refreshBelow(Class cls, std::uintptr_t only) ZP_REQUIRES(runtimeLock) {
    for (objc_bucket &bucket : cls->first) refresh(cls, bucket, only);
    for (unsigned i = 0; i < bucketsOf(cls); ++i) refresh(cls, cls->buckets[i], only);
    for (Class sub = stateOf(cls).firstSubclass; sub; sub = stateOf(sub).nextSibling) refreshBelow(sub, only);
}

// A thread that runs or waits for a class's `+initialize`, as long as it does.
struct Busy {
    pthread_t thread = pthread_self();
    Class cls;
    Busy *&list, *next = list;

    Busy(Busy *&l, Class c) ZP_REQUIRES(runtimeLock) : cls(c), list(l) { list = this; }
    ~Busy() ZP_REQUIRES(runtimeLock) {
        Busy **at = &list;
        while (*at != this) at = &(*at)->next;
        *at = next;
    }
};
Busy *waiting ZP_GUARDED_BY(runtimeLock), *running ZP_GUARDED_BY(runtimeLock);

// Whether the `+initialize` that is running for a class is this thread's, or waits, by way of others, for one of this
// thread's.
bool waitsForThisThread(Class cls) ZP_REQUIRES(runtimeLock) {
    while (infoOf(cls) & objc_isInitializing) {
        if (stateOf(cls).waitsForSuper) {
            cls = cls->superclass;
            continue;
        }
        pthread_t runner = stateOf(cls).initializer;
        if (pthread_equal(runner, pthread_self())) return true;
        const Busy *w = waiting;
        while (w && !pthread_equal(w->thread, runner)) w = w->next;
        if (!w) return false;
        cls = w->cls;
    }
    return false;
}

// A class whose `+initialize` has run inside its superclass's is initialized, for other threads, with that.
void finishInitializing(Class cls) ZP_REQUIRES(runtimeLock) {
    objc_classState &state = stateOf(cls);
    if (cls->superclass && !(infoOf(cls->superclass) & objc_isInitialized)) {
        objc_classState &super = stateOf(cls->superclass);
        state.waitsForSuper = true;
        state.nextWaiting = super.waitsForThis;
        super.waitsForThis = cls;
        return;
    }
    state.waitsForSuper = false;
    setInfo(cls, objc_isInitialized | (infoOf(cls->isa) & objc_defaultAllocation ? objc_allocatesPlainly : 0u));
    clearInfo(cls, objc_isInitializing);
    for (Class sub = std::exchange(state.waitsForThis, nullptr), next; sub; sub = next) {
        next = stateOf(sub).nextWaiting;
        finishInitializing(sub);
    }
}

// Runs `+initialize` once, superclass first. Other threads wait; the running thread passes, and so does one without
// which the running thread could not go on. Answers whether the class is initialized now. The lock is held once.
bool ensureInitialized(Class cls) ZP_REQUIRES(runtimeLock) {
    while (!(infoOf(cls) & objc_isInitialized)) {
        objc_classState &state = stateOf(cls);
        if (infoOf(cls) & objc_isInitializing) {
            if (waitsForThisThread(cls)) return false;
            Busy self(waiting, cls);
            runtimeLock.wait(initialized);
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
            std::optional<Busy> self;
            Finish(Class c) ZP_REQUIRES(runtimeLock) : cls(c) { self.emplace(running, c); }
            ~Finish() ZP_ACQUIRES(runtimeLock) {
                runtimeLock.lock();
                self.reset();
                finishInitializing(cls);
                pthread_cond_broadcast(&initialized);
            }
        };
        const objc_method *m = findMethod(objc_counterpart(cls), "initialize"_sel);
        Finish finish(cls);
        runtimeLock.unlock();
        if (m) reinterpret_cast<void (*)(objc_object *, SEL)>(m->implementation)(cls, m->name);
    }
    return true;
}

void beginAnew(Class cls) ZP_REQUIRES(runtimeLock) {
    objc_classState &state = stateOf(cls);
    state.waitsForSuper = false;
    clearInfo(cls, objc_isInitializing);
    for (Class sub = std::exchange(state.waitsForThis, nullptr); sub; sub = stateOf(sub).nextWaiting) beginAnew(sub);
}

// In a child, what other threads were doing has ended in the middle: who uses their classes begins anew.
void forgetOthers() ZP_REQUIRES(runtimeLock) {
    initialized = PTHREAD_COND_INITIALIZER;
    waiting = nullptr;
    for (Busy **at = &running; *at;) {
        if (pthread_equal((*at)->thread, pthread_self())) at = &(*at)->next;
        else {
            beginAnew((*at)->cls);
            *at = (*at)->next;
        }
    }
}

ZP_AT_FORK(
    runtime, []() ZP_UNCHECKED_LOCKING { runtimeLock.lock(); },
    [](bool isChild) ZP_UNCHECKED_LOCKING {
        if (isChild) forgetOthers();
        runtimeLock.unlock();
    });

}  // namespace

void objc::refreshCaches(Class cls) { refreshBelow(cls, 0); }
void objc::refreshCaches(Class cls, SEL selector) { refreshBelow(cls, wordOf(selector)); }

IMP objc_lookUpForSend(objc_object *receiver, SEL selector) {
    Class cls = receiver->isa;
    IMP implementation = nullptr;
    switch (probe(cls, selector, implementation)) {
    case Found::method: return implementation;
    case Found::nothing: return nullptr;
    case Found::unknown: break;
    }
    if (!selector) return nullptr;
    Holding lock(runtimeLock);
    realize(cls);
    Class uses = infoOf(cls) & objc_isMetaclass ? reinterpret_cast<Class>(receiver) : cls;
    if (infoOf(uses) & objc_isMetaclass) uses = objc_counterpart(uses);  // a message to a metaclass
    bool remembers = ensureInitialized(uses);
    if (const objc_method *m = findMethod(cls, selector)) implementation = m->implementation;
    if (remembers) remember(cls, selector, implementation);
    return implementation;
}

// Finds what instances of a class do for a selector; a class that is not initialized remembers nothing.
static IMP lookUp(Class cls, SEL selector) {
    IMP implementation = nullptr;
    switch (probe(cls, selector, implementation)) {
    case Found::method: return implementation;
    case Found::nothing: return nullptr;
    case Found::unknown: break;
    }
    Holding lock(runtimeLock);
    realize(cls);
    if (const objc_method *m = findMethod(cls, selector)) implementation = m->implementation;
    Class plain = infoOf(cls) & objc_isMetaclass ? objc_counterpart(cls) : cls;
    if (infoOf(plain) & objc_isInitialized) remember(cls, selector, implementation);
    return implementation;
}

IMP objc_lookUpForSuper(Class superclass, SEL selector) {
    return superclass && selector ? lookUp(superclass, selector) : nullptr;
}

IMP class_lookupMethod(Class cls, SEL name) {
    IMP found = cls && name ? lookUp(cls, name) : nullptr;
    return found ? found : &_objc_msgForward;
}

BOOL class_respondsToMethod(Class cls, SEL name) { return cls && name && lookUp(cls, name) ? YES : NO; }

void objc_forwardFrame(objc_object *receiver, SEL selector, objc_frame *frame) {
    SEL forward = "forward::"_sel;
    IMP implementation = selector == forward ? nullptr : objc_lookUpForSend(receiver, forward);
    if (!implementation)
        objc_fatal("%s does not implement %s and does not forward", receiver->isa->name,
                   selector ? sel_getName(selector) : "the null selector");
    reinterpret_cast<void (*)(objc_object *, SEL, SEL, objc_frame *)>(implementation)(receiver, forward, selector,
                                                                                      frame);
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
    // What was found right, as one number of everything that it depends on, so that threads can share the table.
    static std::uint64_t checked[1024];
    std::uint64_t what = __atomic_load_n(&generation, __ATOMIC_RELAXED);
    for (const void *part :
         {static_cast<const void *>(cls), static_cast<const void *>(selector), static_cast<const void *>(types)}) {
        what = (what ^ reinterpret_cast<std::uintptr_t>(part)) * 0x9E3779B97F4A7C15;
        what ^= what >> 32;
    }
    std::uint64_t &entry = checked[what & 1023];
    if (__atomic_load_n(&entry, __ATOMIC_RELAXED) == what) return;
    const objc_method *m = class_getInstanceMethod(cls, selector);
    if (m && !objc_typesMatch(types, m->types))
        objc_fatal("%c[%s %s] has the type \"%s\" and was sent with the C++ types \"%s\"",
                   infoOf(cls) & objc_isMetaclass ? '+' : '-', cls->name, sel_getName(selector), m->types, types);
    __atomic_store_n(&entry, what, __ATOMIC_RELAXED);
}

void objc_conversionFailed(objc_object *object, Class wanted) {
    objc_fatal("an object of class %s at %p was converted to %s *", object->isa->name, static_cast<void *>(object),
               wanted->name);
}
