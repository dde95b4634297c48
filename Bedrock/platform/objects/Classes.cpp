// SPDX-License-Identifier: MIT
// Class records: libraries, names, realizing, finding methods, classes made at run time, posing.
#include <Bedrock/platform/host/Host.h>
#include <Bedrock/platform/objects/Objects+Internal.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <sys/single_threaded.h>
#include <unordered_map>

/// Takes what a registration lists: the instance methods and the class methods of a class, which are counted before
/// they are entered, or the promises of a protocol.
struct objc_lister {
    Class cls = nullptr;
    Protocol *protocol = nullptr;
    bool counts = false;
    unsigned count[2] = {};
    objc_methodList *lists[2] = {};
};

namespace objc {

unsigned generation = 1;

constinit recursive_mutex runtimeLock;

void *allocatePermanently(std::size_t bytes) {
    constexpr std::size_t grain = 32, line = 64;
    alignas(line) static char first[16384];
    static char *next = first, *end = first + sizeof first;
    bytes = (bytes + grain - 1) & ~(grain - 1);
    if (bytes >= line && reinterpret_cast<std::uintptr_t>(next) % line) next += grain;
    if (end < next || std::size_t(end - next) < bytes) {
        std::size_t chunk = bytes > 16384 ? bytes : 16384;
        char *p = static_cast<char *>(std::calloc(1, chunk + line));
        if (!p) objc_fatal("out of memory for the object runtime");
        next = reinterpret_cast<char *>((reinterpret_cast<std::uintptr_t>(p) + line - 1) & ~std::uintptr_t(line - 1));
        end = next + chunk;
    }
    void *result = next;
    next += bytes;
    return result;
}

void retire(void *table) {
    struct Kept {
        Kept *next;
        void *table;
    };
    static Kept *all;  // leak checkers find the tables here
    if (!table) return;
    if (__libc_single_threaded) return std::free(table);
    auto *kept = static_cast<Kept *>(allocatePermanently(sizeof(Kept)));
    *kept = {all, table};
    all = kept;
}

objc_classState &stateOf(Class cls) {
    if (!cls->state) __atomic_store_n(&cls->state, allocatePermanently(sizeof(objc_classState)), __ATOMIC_RELEASE);
    return *static_cast<objc_classState *>(cls->state);
}

namespace {

// The libraries that were loaded since somebody asked for a name.
objc_library *unnamed ZP_GUARDED_BY(runtimeLock);

struct Names {
    std::unordered_map<std::string_view, Class> classes, posed;
};
Names &names() ZP_REQUIRES(runtimeLock) {
    static Names *all;
    if (!all) all = new Names;
    return *all;
}

// Enters the names of the libraries that were loaded since the last call.
void enterNames() ZP_REQUIRES(runtimeLock) {
    while (objc_library *library = unnamed) {
        unnamed = library->next;
        for (auto *at = library->records; at < library->endOfRecords; ++at) {
            if ((*at)->record->isa == Protocol::class_()) {
                addProtocol(static_cast<Protocol *>((*at)->record));
                continue;
            }
            auto [found, added] = names().classes.emplace((*at)->name, static_cast<Class>((*at)->record));
            if (!added && found->second != (*at)->record) objc_fatal("class %s is implemented twice", (*at)->name);
        }
    }
}

// ---- method indexes ----

const objc_method **slotFor(objc_methodIndex *index, SEL name) {
    unsigned i = hashOf(name) & index->mask;
    while (const objc_method *m = __atomic_load_n(&index->methods[i], __ATOMIC_ACQUIRE)) {
        if (m->name == name) break;
        i = (i + 1) & index->mask;
    }
    return &index->methods[i];
}

objc_methodIndex *makeIndex(unsigned size) {
    auto *index =
        static_cast<objc_methodIndex *>(std::calloc(1, sizeof(objc_methodIndex) + size * sizeof(objc_method *)));
    if (!index) objc_fatal("out of memory for methods");
    index->mask = size - 1;
    return index;
}

void publish(objc_classState &state, objc_methodIndex *index) ZP_REQUIRES(runtimeLock) {
    objc_methodIndex *former = state.index;
    __atomic_store_n(&state.index, index, __ATOMIC_RELEASE);
    retire(former);
}

void growIndex(objc_classState &state, unsigned more) ZP_REQUIRES(runtimeLock) {
    unsigned count = state.index ? state.index->count : 0, size = 8;
    while (size < (count + more) * 2) size *= 2;
    if (state.index && size <= state.index->mask + 1) return;
    objc_methodIndex *larger = makeIndex(size);
    larger->count = count;
    for (unsigned i = 0; count && i <= state.index->mask; ++i)
        if (const objc_method *m = state.index->methods[i]) *slotFor(larger, m->name) = m;
    publish(state, larger);
}

objc_methodIndex *copyOf(const objc_methodIndex *index) {
    if (!index) return nullptr;
    objc_methodIndex *copy = makeIndex(index->mask + 1);
    copy->count = index->count;
    std::memcpy(copy->methods, index->methods, (index->mask + 1) * sizeof(objc_method *));
    return copy;
}

// ---- the tree of classes ----

bool isCountingSelector(const char *name) {
    return !std::strcmp(name, "retain") || !std::strcmp(name, "release") || !std::strcmp(name, "retainCount") ||
           !std::strcmp(name, "autorelease");
}
bool isAllocationSelector(const char *name) {
    return !std::strcmp(name, "alloc") || !std::strcmp(name, "allocWithZone:");
}

void clearInfoBelow(Class cls, unsigned bits) ZP_REQUIRES(runtimeLock) {
    clearInfo(cls, bits);
    for (Class sub = stateOf(cls).firstSubclass; sub; sub = stateOf(sub).nextSibling) clearInfoBelow(sub, bits);
}

void link(Class cls) ZP_REQUIRES(runtimeLock) {
    if (!cls->superclass) return;
    objc_classState &super = stateOf(cls->superclass);
    stateOf(cls).nextSibling = super.firstSubclass;
    super.firstSubclass = cls;
}

void unlink(Class cls) ZP_REQUIRES(runtimeLock) {
    Class *at = &stateOf(cls->superclass).firstSubclass;
    while (*at != cls) at = &stateOf(*at).nextSibling;
    *at = stateOf(cls).nextSibling;
}

// ---- entering what is listed ----

objc_methodList *makeList(unsigned count) ZP_REQUIRES(runtimeLock) {
    if (!count) return nullptr;
    auto *list =
        static_cast<objc_methodList *>(allocatePermanently(sizeof(objc_methodList) + count * sizeof(objc_method)));
    list->count = count;
    return list;
}

void enter(Class cls, const objc_registration *registration) ZP_REQUIRES(runtimeLock) {
    if (!registration) return;
    objc_lister counter{.cls = cls, .counts = true}, lister{.cls = cls};
    registration->list(counter);
    for (int side : {0, 1}) lister.lists[side] = makeList(counter.count[side]);
    registration->list(lister);
    if (lister.lists[0]) addMethods(cls, lister.lists[0]);
    if (lister.lists[1]) addMethods(objc_counterpart(cls), lister.lists[1]);
}

void realizePair(Class cls) ZP_REQUIRES(runtimeLock) {
    if (infoOf(cls) & objc_isRealized) return;
    Class meta = objc_counterpart(cls), superclass = cls->superclass;
    if (superclass) {
        realizePair(superclass);
        unsigned inherited = infoOf(superclass);
        if (!(inherited & objc_countsInHeader)) clearInfo(cls, objc_countsInHeader);
        if (infoOf(cls) & objc_countsInHeader) setInfo(cls, inherited & (objc_defaultCounting | objc_defaultDealloc));
        setInfo(cls, inherited & objc_hasWideAlignment);
        setInfo(meta, infoOf(objc_counterpart(superclass)) & objc_defaultAllocation);
    }
    meta->isa = superclass ? objc_counterpart(superclass)->isa : meta;
    __atomic_store_n(&meta->superclass, superclass ? objc_counterpart(superclass) : cls, __ATOMIC_RELEASE);
    stateOf(cls);
    stateOf(meta);
    link(cls);
    link(meta);
    enter(cls, cls->registration);
    for (auto *category = stateOf(cls).categories; category; category = category->next)
        enter(cls, category->registration);
    setInfo(meta, objc_isRealized);
    setInfo(cls, objc_isRealized);
}

}  // namespace

void addMethods(Class cls, objc_methodList *list) {
    objc_classState &state = stateOf(cls);
    growIndex(state, list->count);
    bool isRoot = infoOf(cls) & objc_isRoot, isMeta = infoOf(cls) & objc_isMetaclass;
    for (unsigned i = 0; i < list->count; ++i) {
        objc_method &m = list->methods[i];
        const objc_method **slot = slotFor(state.index, m.name);
        if (*slot >= list->methods && *slot < list->methods + list->count)
            objc_fatal("%c[%s %s] is registered twice", isMeta ? '+' : '-', cls->name, sel_getName(m.name));
        if (!*slot) ++state.index->count;
        __atomic_store_n(slot, &m, __ATOMIC_RELEASE);
        if (isRoot && !cls->methodLists) continue;  // the root's own counting is the default
        if (isCountingSelector(sel_getName(m.name))) clearInfoBelow(cls, objc_defaultCounting);
        if (!std::strcmp(sel_getName(m.name), "dealloc")) clearInfoBelow(cls, objc_defaultDealloc);
        if (isMeta && isAllocationSelector(sel_getName(m.name))) {
            clearInfoBelow(cls, objc_defaultAllocation);
            clearInfoBelow(objc_counterpart(cls), objc_allocatesPlainly);
        }
    }
    list->next = cls->methodLists;
    __atomic_store_n(&cls->methodLists, list, __ATOMIC_RELEASE);
    __atomic_add_fetch(&generation, 1, __ATOMIC_RELAXED);
    if (infoOf(cls) & objc_isRealized)
        for (unsigned i = 0; i < list->count; ++i) refreshCaches(cls, list->methods[i].name);
    // The class that this one took the place of behaves as it, also in what is added later.
    Class replaced = state.posedAs;
    if (!replaced || stateOf(replaced).poser != cls) return;
    objc_methodList *same = makeList(list->count);
    std::memcpy(same->methods, list->methods, list->count * sizeof(objc_method));
    addMethods(replaced, same);
}

void realizeNow(Class cls) {
    Holding lock(runtimeLock);
    realizePair(infoOf(cls) & objc_isMetaclass ? objc_counterpart(cls) : cls);
}

const objc_method *findMethod(Class cls, SEL selector) {
    for (; cls; cls = superclassOf(cls)) {
        objc_classState *state = knownStateOf(cls);
        objc_methodIndex *index = state ? __atomic_load_n(&state->index, __ATOMIC_ACQUIRE) : nullptr;
        if (!index) continue;
        if (const objc_method *m = __atomic_load_n(slotFor(index, selector), __ATOMIC_ACQUIRE)) return m;
    }
    return nullptr;
}

}  // namespace objc

using namespace objc;

void objc_fatal(const char *format, ...) {
    char text[1024];
    std::va_list list;
    va_start(list, format);
    std::vsnprintf(text, sizeof text, format, list);
    va_end(list);
    std::fprintf(stderr, "Bedrock: %s\n", text);
    std::abort();
}

__attribute__((constructor(101))) static void loadOwnClasses() { objc_loadThisLibrary(); }

void objc_loadLibrary(objc_library &library) {
    // The tables hold on to what a class, a category or a protocol consists of: its library stays. This one is linked
    // to stay.
    if (&library != &objc_thisLibrary) ZPHostKeepLibrary(&library);
    Holding lock(runtimeLock);
    library.next = unnamed;
    unnamed = &library;
    for (auto *categories = library.categories; categories < library.endOfCategories; ++categories) {
        Class cls = static_cast<Class>((*categories)->record);
        if (infoOf(cls) & objc_isRealized) {
            enter(cls, *categories);
            continue;
        }
        auto *waiting = static_cast<objc_waitingCategory *>(allocatePermanently(sizeof(objc_waitingCategory)));
        *waiting = {nullptr, *categories};
        objc_waitingCategory **at = &stateOf(cls).categories;
        while (*at) at = &(*at)->next;
        *at = waiting;
    }
}

void objc_enterMethod(objc_lister &lister, const char *name, unsigned long bits, const char *types, IMP implementation,
                      objc_frameInvoker invoker) {
    bool ofClass = bits & objc_listsClassMethod;
    unsigned at = lister.count[ofClass]++;
    if (lister.counts) return;
    Holding lock(runtimeLock);
    SEL selector =
        bits & objc_listsSelector ? sel_registerName(name) : selectorOfName(name, (bits >> objc_listsArguments) & 0xFF);
    if (lister.protocol) {
        auto *m = static_cast<objc_protocolMethod *>(allocatePermanently(sizeof(objc_protocolMethod)));
        *m = {lister.protocol->_methods, {selector, types}, ofClass};
        lister.protocol->_methods = m;
        return;
    }
    lister.lists[ofClass]->methods[at] = {selector, types, implementation, invoker, unsigned(bits >> objc_listsFrame)};
}

void objc_enterProtocol(objc_lister &lister, Protocol *protocol) {
    if (lister.counts) return;
    Holding lock(runtimeLock);
    auto *list = static_cast<objc_protocolList *>(allocatePermanently(sizeof(objc_protocolList)));
    const objc_protocolList *&all = lister.protocol ? lister.protocol->_parents : lister.cls->protocols;
    *list = {all, protocol};
    __atomic_store_n(&all, list, __ATOMIC_RELEASE);
}

void objc::listPromises(Protocol *protocol) {
    if (__atomic_load_n(&protocol->_isListed, __ATOMIC_ACQUIRE)) return;
    Holding lock(runtimeLock);
    if (protocol->_isListed) return;
    objc_lister lister{.protocol = protocol};
    protocol->_registration->list(lister);
    __atomic_store_n(&protocol->_isListed, YES, __ATOMIC_RELEASE);
}

Class objc_getClass(const char *name) {
    if (!name) return nullptr;
    Holding lock(runtimeLock);
    enterNames();
    auto at = names().classes.find(name);
    return at == names().classes.end() ? nullptr : at->second;
}

Class objc_lookUpClass(const char *name) { return objc_getClass(name); }

Class objc_getOrigClass(const char *name) {
    if (!name) return nullptr;
    Holding lock(runtimeLock);
    auto at = names().posed.find(name);
    return at == names().posed.end() ? objc_getClass(name) : at->second;
}

void objc_addClass(Class cls) {
    Holding lock(runtimeLock);
    enterNames();
    if (!names().classes.emplace(cls->name, cls).second) objc_fatal("class %s is implemented twice", cls->name);
    __atomic_add_fetch(&generation, 1, __ATOMIC_RELAXED);
}

unsigned objc_getClasses(Class *classes, unsigned capacity) {
    Holding lock(runtimeLock);
    enterNames();
    unsigned n = 0;
    for (auto &[name, cls] : names().classes) {
        if (n < capacity) classes[n] = cls;
        ++n;
    }
    return n;
}

Protocol *objc_getProtocol(const char *name) {
    if (!name) return nullptr;
    Holding lock(runtimeLock);
    enterNames();
    return findProtocol(name);
}

static const char *copyName(const char *name) ZP_REQUIRES(runtimeLock) {
    std::size_t size = std::strlen(name) + 1;
    return static_cast<const char *>(std::memcpy(allocatePermanently(size), name, size));
}

Class objc_makeClass(Class superclass, const char *name, unsigned extraBytes) {
    Holding lock(runtimeLock);
    realize(superclass);
    auto *pair = static_cast<objc_classPair *>(allocatePermanently(sizeof(objc_classPair)));
    const char *kept = copyName(name);
    unsigned info = infoOf(superclass) & (objc_countsInHeader | objc_hasWideAlignment);
    *pair = objc_unrealizedPair(*pair, superclass, info, 0, kept, superclass->instanceSize + extraBytes, nullptr);
    pair->cls.fields = superclass->fields;
    return &pair->cls;
}

Class objc_copyClass(Class cls, const char *name) {
    Holding lock(runtimeLock);
    realize(cls);
    auto *pair = static_cast<objc_classPair *>(allocatePermanently(sizeof(objc_classPair)));
    pair->cls = *cls;
    pair->meta = *objc_counterpart(cls);
    const char *kept = copyName(name);
    for (Class copy : {&pair->cls, &pair->meta}) {
        objc_classState former = stateOf(copy);
        copy->state = nullptr;
        stateOf(copy).index = copyOf(former.index);
        stateOf(copy).posedAs = former.posedAs;
        copy->name = kept;
        copy->buckets = &objc_noBuckets;
        copy->mask = copy->cached = 0;
        for (objc_bucket &bucket : copy->first) bucket = {};
        // A copy of a class that is initializing itself right now does not run `+initialize` again.
        if (copy->info & objc_isInitializing) copy->info = (copy->info & ~objc_isInitializing) | objc_isInitialized;
    }
    pair->cls.isa = &pair->meta;
    link(&pair->cls);
    link(&pair->meta);
    return &pair->cls;
}

void class_addMethod(Class cls, SEL name, IMP implementation, const char *types, objc_frameInvoker invoker,
                     unsigned argumentSize) {
    Holding lock(runtimeLock);
    realize(cls);
    objc_methodList *list = makeList(1);
    list->methods[0] = {name, types, implementation, invoker, argumentSize};
    addMethods(cls, list);
}

const objc_method *class_getInstanceMethod(Class cls, SEL name) {
    if (!cls || !name) return nullptr;
    realize(cls);
    return findMethod(cls, name);
}

const objc_method *class_getClassMethod(Class cls, SEL name) {
    return cls ? class_getInstanceMethod(cls->isa, name) : nullptr;
}

const objc_methodList *class_nextMethodList(Class cls, const void **iterator) {
    realize(cls);
    auto *list = *iterator ? static_cast<const objc_methodList *>(*iterator)->next
                           : __atomic_load_n(&cls->methodLists, __ATOMIC_ACQUIRE);
    *iterator = list;
    return list;
}

unsigned method_getSizeOfArguments(const objc_method *method) { return method ? method->argumentSize : 0; }

void _objc_msgForward() { objc_fatal("the forwarding entry was called as a function; send the message instead"); }

namespace {

// Makes `original`'s record behave as `impostor`, whose superclass is `hidden`, a copy of what `original` is. Readers
// without the lock find every method at each step: the copy comes into the chain before the index gives way to the
// impostor's.
void pose(Class impostor, Class original, Class hidden) ZP_REQUIRES(runtimeLock) {
    if (Class replaced = stateOf(original).posedAs; replaced && stateOf(replaced).poser == original)
        stateOf(replaced).poser = hidden;
    stateOf(original).poser = impostor;
    stateOf(impostor).posedAs = original;
    setInfo(impostor, objc_isPosing);
    unlink(impostor);
    __atomic_store_n(&impostor->superclass, hidden, __ATOMIC_RELEASE);
    link(impostor);
    if (original->superclass) unlink(original);
    __atomic_store_n(&original->superclass, hidden, __ATOMIC_RELEASE);
    link(original);
    setInfo(original, objc_isReplaced);
    publish(stateOf(original), copyOf(stateOf(impostor).index));
    original->methodLists = impostor->methodLists;
    clearInfoBelow(original, ~impostor->info & (objc_defaultCounting | objc_defaultDealloc | objc_defaultAllocation));
    if ((infoOf(original) & objc_isMetaclass) && !(infoOf(original) & objc_defaultAllocation))
        clearInfoBelow(objc_counterpart(original), objc_allocatesPlainly);
}

}  // namespace

Class class_poseAs(Class impostor, Class original) {
    Holding lock(runtimeLock);
    realize(impostor);
    realize(original);
    if (impostor == original) return impostor;
    if (impostor->superclass != original)
        objc_fatal("class %s cannot pose as %s: it is not its direct subclass", impostor->name, original->name);
    if (impostor->instanceSize != original->instanceSize)
        objc_fatal("class %s cannot pose as %s: it has fields of its own", impostor->name, original->name);
    std::string_view name = original->name;
    char *hiddenName = static_cast<char *>(allocatePermanently(name.size() + 2));
    hiddenName[0] = '%';
    std::memcpy(hiddenName + 1, name.data(), name.size());
    Class hidden = objc_copyClass(original, hiddenName), meta = objc_counterpart(original);
    if (infoOf(original) & objc_isRoot) {
        // The hidden root keeps the metaclass chain: its metaclass inherits from itself as the root's did.
        clearInfo(original, objc_isRoot);
        clearInfo(meta, objc_isRoot);
    }
    pose(objc_counterpart(impostor), meta, objc_counterpart(hidden));
    pose(impostor, original, hidden);
    if (impostor->protocols) __atomic_store_n(&original->protocols, impostor->protocols, __ATOMIC_RELEASE);
    names().posed.emplace(original->name, hidden);  // the first is what was declared
    __atomic_add_fetch(&generation, 1, __ATOMIC_RELAXED);
    refreshCaches(hidden);
    refreshCaches(objc_counterpart(hidden));
    return impostor;
}

BOOL class_inherits(Class cls, Class ancestor) {
    for (Class c = cls; c; c = superclassOf(c))
        if (c == ancestor) return YES;
    for (Class c = cls; c; c = superclassOf(c))
        if ((infoOf(c) & objc_isPosing) && knownStateOf(c)->posedAs == ancestor) return YES;
    return NO;
}

BOOL objc_isKindOf(objc_object *object, Class cls) {
    if (class_inherits(object->isa, cls)) return YES;
    return objc_msgSendUnchecked<BOOL>(object, "isKindOfClass:"_sel, cls);
}
