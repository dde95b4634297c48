// SPDX-License-Identifier: MIT
// Class records: loading, realizing, finding methods, classes made at run time, posing.
#include <Bedrock/platform/objects/Objects.h>
#include <Bedrock/platform/host/Host.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <unordered_map>

namespace objc {

unsigned generation = 1;

pthread_mutex_t &runtimeMutex() {
    static pthread_mutex_t mutex = PTHREAD_RECURSIVE_MUTEX_INITIALIZER_NP;
    return mutex;
}

Lock::Lock() { pthread_mutex_lock(&runtimeMutex()); }
Lock::~Lock() { pthread_mutex_unlock(&runtimeMutex()); }

void *allocatePermanently(std::size_t bytes) {
    static char *next, *end;
    bytes = (bytes + 31) & ~std::size_t(31);
    if (std::size_t(end - next) < bytes) {
        std::size_t chunk = bytes > 16384 ? bytes : 16384;
        char *p = static_cast<char *>(std::calloc(1, chunk + 32));
        if (!p) objc_fatal("out of memory for the object runtime");
        next = reinterpret_cast<char *>((reinterpret_cast<std::uintptr_t>(p) + 31) & ~std::uintptr_t(31));
        end = next + chunk;
    }
    void *result = next;
    next += bytes;
    return result;
}

objc_classState &stateOf(Class cls) {
    if (!cls->state) {
        auto *state = static_cast<objc_classState *>(allocatePermanently(sizeof(objc_classState)));
        state->queueEnd = &state->queue;
        cls->state = state;
    }
    return *static_cast<objc_classState *>(cls->state);
}

namespace {

Class loadedClasses;
unsigned currentList, lastList;

using Names = std::unordered_map<std::string_view, Class>;
Names &names() {
    static Names &map = *new Names;
    return map;
}
Names &posed() {
    static Names &map = *new Names;
    return map;
}

// Enters the classes loaded since the last call into the table of names.
void enterLoadedClasses() {
    for (; loadedClasses; loadedClasses = stateOf(loadedClasses).nextLoaded) {
        auto [at, added] = names().emplace(loadedClasses->name, loadedClasses);
        if (!added && at->second != loadedClasses) objc_fatal("class %s is implemented twice", loadedClasses->name);
    }
}

objc_method **slotFor(objc_classState &state, SEL name) {
    unsigned i = hashOf(name) & state.indexMask;
    while (state.index[i] && state.index[i]->name != name) i = (i + 1) & state.indexMask;
    return &state.index[i];
}

void growIndex(objc_classState &state, unsigned needed) {
    unsigned size = 8;
    while (size < needed * 2) size *= 2;
    if (state.index && size <= state.indexMask + 1) return;
    objc_method **old = state.index;
    unsigned oldSize = old ? state.indexMask + 1 : 0;
    state.index = static_cast<objc_method **>(std::calloc(size, sizeof(objc_method *)));
    if (!state.index) objc_fatal("out of memory for methods");
    state.indexMask = size - 1;
    for (unsigned i = 0; i < oldSize; ++i)
        if (old[i]) *slotFor(state, old[i]->name) = old[i];
    std::free(old);
}

bool isCountingSelector(const char *name) {
    return !std::strcmp(name, "retain") || !std::strcmp(name, "release") || !std::strcmp(name, "retainCount") ||
           !std::strcmp(name, "autorelease");
}
bool isAllocationSelector(const char *name) {
    return !std::strcmp(name, "alloc") || !std::strcmp(name, "allocWithZone:");
}

void clearInfoBelow(Class cls, unsigned bits) {
    clearInfo(cls, bits);
    for (Class sub = stateOf(cls).firstSubclass; sub; sub = stateOf(sub).nextSibling) clearInfoBelow(sub, bits);
}

void link(Class cls) {
    if (!cls->superclass) return;
    objc_classState &super = stateOf(cls->superclass);
    stateOf(cls).nextSibling = super.firstSubclass;
    super.firstSubclass = cls;
}

void unlink(Class cls) {
    Class *at = &stateOf(cls->superclass).firstSubclass;
    while (*at != cls) at = &stateOf(*at).nextSibling;
    *at = stateOf(cls).nextSibling;
}

// Turns queued entries into method lists, the class's own list first, then categories by number.
void buildLists(Class cls) {
    objc_classState &state = stateOf(cls);
    while (state.queue) {
        unsigned number = state.queue->list, count = 0;
        for (auto *q = state.queue; q; q = q->next)
            if (q->list < number) number = q->list;
        for (auto *q = state.queue; q; q = q->next) count += q->list == number;
        auto *list =
            static_cast<objc_methodList *>(allocatePermanently(sizeof(objc_methodList) + count * sizeof(objc_method)));
        objc_method *m = list->methods;
        for (auto **at = &state.queue; *at;) {
            if ((*at)->list != number) {
                at = &(*at)->next;
                continue;
            }
            (*at)->describe(m);
            m->name = sel_registerName((*at)->name);
            ++m;
            *at = (*at)->next;
        }
        list->count = count;
        state.queueEnd = &state.queue;
        while (*state.queueEnd) state.queueEnd = &(*state.queueEnd)->next;
        addMethods(cls, list);
    }
}

void realizeOne(Class cls) {
    if (infoOf(cls) & objc_isRealized) return;
    if (cls->superclass) {
        realizeOne(cls->superclass);
        unsigned inherited = infoOf(cls->superclass);
        if (!(infoOf(cls) & objc_isMetaclass)) {
            if (!(inherited & objc_countsInHeader)) clearInfo(cls, objc_countsInHeader);
            if (infoOf(cls) & objc_countsInHeader)
                setInfo(cls, inherited & (objc_defaultCounting | objc_defaultDealloc));
            setInfo(cls, inherited & objc_hasWideAlignment);
        } else {
            setInfo(cls, inherited & objc_defaultAllocation);
        }
        link(cls);
    }
    stateOf(cls);
    setInfo(cls, objc_isRealized);
    buildLists(cls);
}

}  // namespace

void addMethods(Class cls, objc_methodList *list) {
    objc_classState &state = stateOf(cls);
    growIndex(state, state.indexCount + list->count);
    bool root = infoOf(cls) & objc_isRoot;
    for (unsigned i = 0; i < list->count; ++i) {
        objc_method &m = list->methods[i];
        objc_method **slot = slotFor(state, m.name);
        if (*slot >= list->methods && *slot < list->methods + list->count)
            objc_fatal("%c[%s %s] is registered twice", infoOf(cls) & objc_isMetaclass ? '+' : '-', cls->name,
                       sel_getName(m.name));
        if (!*slot) ++state.indexCount;
        *slot = &m;
        if (root && !cls->methodLists) continue;  // the root's own counting is the default
        if (isCountingSelector(sel_getName(m.name))) clearInfoBelow(cls, objc_defaultCounting);
        if (!std::strcmp(sel_getName(m.name), "dealloc")) clearInfoBelow(cls, objc_defaultDealloc);
        if ((infoOf(cls) & objc_isMetaclass) && isAllocationSelector(sel_getName(m.name))) {
            clearInfoBelow(cls, objc_defaultAllocation);
            clearInfoBelow(cls->counterpart, objc_allocatesPlainly);
        }
    }
    list->next = cls->methodLists;
    cls->methodLists = list;
    __atomic_add_fetch(&generation, 1, __ATOMIC_RELAXED);
    flushCaches(cls);
}

void realize(Class cls) {
    if ((infoOf(cls) & objc_isRealized) && (infoOf(cls->counterpart) & objc_isRealized)) return;
    Class plain = infoOf(cls) & objc_isMetaclass ? cls->counterpart : cls;
    realizeOne(plain);
    realizeOne(plain->counterpart);
}

objc_method *findMethod(Class cls, SEL selector) {
    for (; cls; cls = cls->superclass) {
        objc_classState &state = stateOf(cls);
        if (!state.index) continue;
        if (objc_method *m = *slotFor(state, selector)) return m;
    }
    return nullptr;
}

void flushCaches(Class cls) {
    retireCache(__atomic_exchange_n(&cls->cache, &objc_emptyCache, __ATOMIC_ACQ_REL));
    for (Class sub = stateOf(cls).firstSubclass; sub; sub = stateOf(sub).nextSibling) flushCaches(sub);
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

// The tables hold on to what a class, a category or a protocol consists of: its library stays.
void objc_loadClass(Class cls) {
    ZPHostKeepLibrary(cls);
    Lock lock;
    currentList = 0;
    stateOf(cls).nextLoaded = loadedClasses;
    loadedClasses = cls;
}

void objc_loadCategory(Class, const char *name) {
    ZPHostKeepLibrary(name);
    Lock lock;
    currentList = ++lastList;
}

void objc_loadMethod(Class cls, const char *name, objc_methodDescriber describe) {
    Lock lock;
    if (infoOf(cls) & objc_isRealized) {
        objc_method m{};
        describe(&m);
        class_addMethod(cls, sel_registerName(name), m.implementation, m.types, m.invoker, m.argumentSize);
        return;
    }
    objc_classState &state = stateOf(cls);
    auto *q = static_cast<objc_queuedMethod *>(allocatePermanently(sizeof(objc_queuedMethod)));
    *q = {nullptr, name, describe, currentList};
    *state.queueEnd = q;
    state.queueEnd = &q->next;
}

void objc_loadProtocol(Class cls, Protocol *protocol) {
    Lock lock;
    auto *list = static_cast<objc_protocolList *>(allocatePermanently(sizeof(objc_protocolList)));
    *list = {cls->protocols, protocol};
    cls->protocols = list;
}

Class objc_getClass(const char *name) {
    if (!name) return nullptr;
    Lock lock;
    enterLoadedClasses();
    auto at = names().find(name);
    return at == names().end() ? nullptr : at->second;
}

Class objc_lookUpClass(const char *name) { return objc_getClass(name); }

Class objc_getOrigClass(const char *name) {
    if (!name) return nullptr;
    Lock lock;
    auto at = posed().find(name);
    return at == posed().end() ? objc_getClass(name) : at->second;
}

void objc_addClass(Class cls) {
    Lock lock;
    enterLoadedClasses();
    if (!names().emplace(cls->name, cls).second) objc_fatal("class %s is implemented twice", cls->name);
    __atomic_add_fetch(&generation, 1, __ATOMIC_RELAXED);
}

unsigned objc_getClasses(Class *classes, unsigned capacity) {
    Lock lock;
    enterLoadedClasses();
    unsigned n = 0;
    for (auto &[name, cls] : names()) {
        if (n < capacity) classes[n] = cls;
        ++n;
    }
    return n;
}

static const char *copyName(const char *name) {
    std::size_t size = std::strlen(name) + 1;
    return static_cast<const char *>(std::memcpy(allocatePermanently(size), name, size));
}

Class objc_makeClass(Class superclass, const char *name, unsigned extraBytes) {
    Lock lock;
    realize(superclass);
    auto *pair = static_cast<objc_classPair *>(allocatePermanently(sizeof(objc_classPair)));
    const char *kept = copyName(name);
    Class root = superclass;
    while (root->superclass) root = root->superclass;
    unsigned info = superclass->info & (objc_countsInHeader | objc_hasWideAlignment);
    *pair = {
        {{&pair->meta},
         &objc_emptyCache,
         superclass,
         info,
         0,
         kept,
         superclass->instanceSize + extraBytes,
         0,
         superclass->fields,
         nullptr,
         nullptr,
         &pair->meta,
         nullptr},
        {{root->counterpart},
         &objc_emptyCache,
         superclass->counterpart,
         objc_isMetaclass,
         0,
         kept,
         sizeof(objc_class),
         0,
         nullptr,
         nullptr,
         nullptr,
         &pair->cls,
         nullptr},
    };
    return &pair->cls;
}

Class objc_copyClass(Class cls, const char *name) {
    Lock lock;
    realize(cls);
    auto *pair = static_cast<objc_classPair *>(allocatePermanently(sizeof(objc_classPair)));
    pair->cls = *cls;
    pair->meta = *cls->counterpart;
    const char *kept = copyName(name);
    for (Class copy : {&pair->cls, &pair->meta}) {
        objc_classState &from = stateOf(copy),
                        *to = static_cast<objc_classState *>(allocatePermanently(sizeof(objc_classState)));
        to->queueEnd = &to->queue;
        to->indexMask = from.indexMask;
        to->indexCount = from.indexCount;
        if (from.index) {
            to->index = static_cast<objc_method **>(std::calloc(from.indexMask + 1, sizeof(objc_method *)));
            if (!to->index) objc_fatal("out of memory for methods");
            std::memcpy(to->index, from.index, (from.indexMask + 1) * sizeof(objc_method *));
        }
        copy->state = to;
        copy->name = kept;
        copy->cache = &objc_emptyCache;
        // A copy of a class that is initializing itself right now does not run `+initialize` again.
        if (copy->info & objc_isInitializing) copy->info = (copy->info & ~objc_isInitializing) | objc_isInitialized;
        link(copy);
    }
    pair->cls.isa = pair->cls.counterpart = &pair->meta;
    pair->meta.counterpart = &pair->cls;
    return &pair->cls;
}

void class_addMethod(Class cls, SEL name, IMP implementation, const char *types, objc_frameInvoker invoker,
                     unsigned argumentSize) {
    Lock lock;
    realize(cls);
    auto *list = static_cast<objc_methodList *>(allocatePermanently(sizeof(objc_methodList) + sizeof(objc_method)));
    list->count = 1;
    list->methods[0] = {name, types, implementation, invoker, argumentSize};
    addMethods(cls, list);
}

const objc_method *class_getInstanceMethod(Class cls, SEL name) {
    if (!cls || !name) return nullptr;
    Lock lock;
    realize(cls);
    return findMethod(cls, name);
}

const objc_method *class_getClassMethod(Class cls, SEL name) {
    return cls ? class_getInstanceMethod(cls->isa, name) : nullptr;
}

IMP class_lookupMethod(Class cls, SEL name) {
    const objc_method *m = class_getInstanceMethod(cls, name);
    return m ? m->implementation : &_objc_msgForward;
}

BOOL class_respondsToMethod(Class cls, SEL name) { return class_getInstanceMethod(cls, name) ? YES : NO; }

const objc_methodList *class_nextMethodList(Class cls, const void **iterator) {
    Lock lock;
    realize(cls);
    auto *list = *iterator ? static_cast<const objc_methodList *>(*iterator)->next : cls->methodLists;
    *iterator = list;
    return list;
}

unsigned method_getSizeOfArguments(const objc_method *method) { return method ? method->argumentSize : 0; }

void _objc_msgForward() { objc_fatal("the forwarding entry was called as a function; send the message instead"); }

namespace {

// Moves what `original` is into a hidden copy, and what `impostor` is into `original`'s record.
void pose(Class impostor, Class original, Class hidden) {
    unlink(impostor);
    impostor->superclass = hidden;
    link(impostor);
    objc_classState &from = stateOf(impostor), &to = stateOf(original);
    std::free(to.index);
    to.index = static_cast<objc_method **>(std::calloc(from.indexMask + 1, sizeof(objc_method *)));
    if (!to.index && from.index) objc_fatal("out of memory for methods");
    if (from.index) std::memcpy(to.index, from.index, (from.indexMask + 1) * sizeof(objc_method *));
    else std::free(to.index), to.index = nullptr;
    to.indexMask = from.indexMask;
    to.indexCount = from.indexCount;
    if (original->superclass) unlink(original);
    original->superclass = hidden;
    link(original);
    original->methodLists = impostor->methodLists;
    clearInfoBelow(original, ~impostor->info & (objc_defaultCounting | objc_defaultDealloc | objc_defaultAllocation));
    if ((infoOf(original) & objc_isMetaclass) && !(infoOf(original) & objc_defaultAllocation))
        clearInfoBelow(original->counterpart, objc_allocatesPlainly);
}

}  // namespace

Class class_poseAs(Class impostor, Class original) {
    Lock lock;
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
    Class hidden = objc_copyClass(original, hiddenName);
    if (infoOf(original) & objc_isRoot) {
        // The hidden root keeps the metaclass chain: its metaclass inherits from itself as the root's did.
        clearInfo(original, objc_isRoot);
        clearInfo(original->counterpart, objc_isRoot);
    }
    pose(impostor->counterpart, original->counterpart, hidden->counterpart);
    pose(impostor, original, hidden);
    stateOf(impostor).posedAs = original;
    stateOf(impostor->counterpart).posedAs = original->counterpart;
    setInfo(impostor, objc_isPosing);
    setInfo(impostor->counterpart, objc_isPosing);
    original->protocols = impostor->protocols ? impostor->protocols : original->protocols;
    posed()[original->name] = hidden;
    __atomic_add_fetch(&generation, 1, __ATOMIC_RELAXED);
    flushCaches(hidden);
    flushCaches(hidden->counterpart);
    flushCaches(original);
    flushCaches(original->counterpart);
    flushCaches(impostor);
    flushCaches(impostor->counterpart);
    return impostor;
}

BOOL class_inherits(Class cls, Class ancestor) {
    for (Class c = cls; c; c = c->superclass)
        if (c == ancestor) return YES;
    for (Class c = cls; c; c = c->superclass)
        if ((infoOf(c) & objc_isPosing) && stateOf(c).posedAs == ancestor) return YES;
    return NO;
}

BOOL objc_isKindOf(objc_object *object, Class cls) {
    if (class_inherits(object->isa, cls)) return YES;
    return objc_msgSendUnchecked<BOOL>(object, "isKindOfClass:"_sel, cls);
}
