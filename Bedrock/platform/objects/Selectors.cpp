// SPDX-License-Identifier: MIT
// The selector table: every selector's text is kept once, aligned to 32 bytes, so that selectors
// registered one after another have neighbouring hashes.
#include <Bedrock/platform/objects/Objects+Internal.h>

#include <cstdlib>

namespace {

struct Table {
    const char **names;
    unsigned mask, count;
};
const char *firstNames[512];
constinit Table table ZP_GUARDED_BY(objc::runtimeLock){firstNames, 511, 0};

unsigned hashText(const char *s, std::size_t &length) {
    unsigned h = 2166136261u;
    const char *p = s;
    for (; *p; ++p) h = (h ^ static_cast<unsigned char>(*p)) * 16777619u;
    length = p - s;
    return h;
}

void place(Table &t, const char *name, unsigned hash) {
    unsigned i = hash & t.mask;
    while (t.names[i]) i = (i + 1) & t.mask;
    t.names[i] = name;
}

void grow() ZP_REQUIRES(objc::runtimeLock) {
    Table larger{nullptr, table.mask * 2 + 1, table.count};
    larger.names = static_cast<const char **>(std::calloc(larger.mask + 1, sizeof(char *)));
    if (!larger.names) objc_fatal("out of memory for selectors");
    for (unsigned i = 0; i <= table.mask; ++i)
        if (table.names[i]) {
            std::size_t length;
            place(larger, table.names[i], hashText(table.names[i], length));
        }
    if (table.names != firstNames) std::free(table.names);
    table = larger;
}

}  // namespace

SEL sel_registerName(const char *name) {
    if (!name) return nullptr;
    std::size_t length;
    unsigned hash = hashText(name, length);
    objc::Holding lock(objc::runtimeLock);
    if (table.count * 2 > table.mask) grow();
    unsigned i = hash & table.mask;
    for (; table.names[i]; i = (i + 1) & table.mask)
        if (std::strcmp(table.names[i], name) == 0) return reinterpret_cast<SEL>(table.names[i]);
    char *copy = static_cast<char *>(objc::allocatePermanently(length + 1));
    std::memcpy(copy, name, length + 1);
    table.names[i] = copy;
    ++table.count;
    return reinterpret_cast<SEL>(copy);
}

SEL objc::selectorOfName(const char *name, unsigned arguments) {
    char text[256], *to = text, *end = text + sizeof text - 2;
    const char *from = name;
    for (; *from == '_'; ++from) {
        if (to < end) *to++ = '_';
    }
    for (; *from && to < end; ++from) {
        if (*from != '_') *to++ = *from;
        else if (arguments && from[1]) *to++ = ':';
    }
    if (*from) objc_fatal("the name %s is too long for a selector", name);
    if (arguments) *to++ = ':';
    *to = 0;
    return sel_registerName(text);
}

SEL objc_registerFront(SEL *slot, const char *name, unsigned arguments) {
    SEL selector = objc::selectorOfName(name, arguments);
    __atomic_store_n(slot, selector, __ATOMIC_RELEASE);
    return selector;
}

SEL sel_getUid(const char *name) { return sel_registerName(name); }

SEL objc_registerSelector(SEL *slot, const char *name) {
    SEL selector = sel_registerName(name);
    __atomic_store_n(slot, selector, __ATOMIC_RELEASE);
    return selector;
}
