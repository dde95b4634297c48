// SPDX-License-Identifier: MIT
// Protocol objects. Their class is a root of its own, below every class of the library.
#include <Bedrock/platform/ZPProtocol.h>

#include <Bedrock/platform/objects/Objects.h>
#include <Bedrock/platform/host/Host.h>

using namespace objc;

constinit objc_classPair objc_protocolClass = {
    {{&objc_protocolClass.meta},
     &objc_emptyCache,
     nullptr,
     objc_isRoot,
     0,
     "Protocol",
     sizeof(Protocol),
     0,
     nullptr,
     nullptr,
     nullptr,
     &objc_protocolClass.meta,
     nullptr},
    {{&objc_protocolClass.meta},
     &objc_emptyCache,
     &objc_protocolClass.cls,
     objc_isMetaclass | objc_isRoot,
     0,
     "Protocol",
     sizeof(objc_class),
     0,
     nullptr,
     nullptr,
     nullptr,
     &objc_protocolClass.cls,
     nullptr},
};

namespace {

struct Registered {
    Registered *next;
    Protocol *protocol;
};
Registered *registered;

struct ProtocolMethods : Protocol {
    const char *nameOfProtocol() { return _name; }
    BOOL conforms(Protocol *other) {
        if (!other) return NO;
        if (other == this || std::strcmp(other->_name, _name) == 0) return YES;
        for (auto *p = _parents; p; p = p->next)
            if (p->protocol->conformsTo(other)) return YES;
        return NO;
    }
    const objc_methodDescription *describe(SEL name, BOOL isClassMethod) {
        for (auto *m = _methods; m; m = m->next)
            if (m->isClassMethod == isClassMethod && m->description.name == name) return &m->description;
        for (auto *p = _parents; p; p = p->next)
            if (auto *d = static_cast<ProtocolMethods *>(p->protocol)->describe(name, isClassMethod)) return d;
        return nullptr;
    }
    const objc_methodDescription *instanceMethod(SEL name) { return describe(name, NO); }
    const objc_methodDescription *classMethod(SEL name) { return describe(name, YES); }
    BOOL isKind(Class cls) {
        for (Class c = isa; c; c = c->superclass)
            if (c == cls) return YES;
        return NO;
    }
    BOOL identical(id other) { return other.pointer() == this; }
    unsigned addressHash() { return unsigned(reinterpret_cast<std::uintptr_t>(this) >> 2); }
    Class ownClass() { return isa; }
};

[[maybe_unused]] const objc_implementer methods =
    (objc_loadClass(&objc_protocolClass.cls), objc_implementer{&objc_protocolClass.cls})
        .method<&ProtocolMethods::nameOfProtocol>("name")
        .method<&ProtocolMethods::conforms>("conformsTo:")
        .method<&ProtocolMethods::instanceMethod>("descriptionForInstanceMethod:")
        .method<&ProtocolMethods::classMethod>("descriptionForClassMethod:")
        .immortal()
        .method<&ProtocolMethods::isKind>("isKindOfClass:")
        .method<&ProtocolMethods::identical>("isEqual:")
        .method<&ProtocolMethods::addressHash>("hash")
        .method<&ProtocolMethods::ownClass>("class");

}  // namespace

void objc_registerProtocol(Protocol *protocol) {
    ZPHostKeepLibrary(protocol);
    Lock lock;
    auto *r = static_cast<Registered *>(allocatePermanently(sizeof(Registered)));
    *r = {registered, protocol};
    registered = r;
}

void objc_loadProtocolMethod(Protocol *protocol, const char *name, const char *types, BOOL isClassMethod) {
    Lock lock;
    auto *m = static_cast<objc_protocolMethod *>(allocatePermanently(sizeof(objc_protocolMethod)));
    *m = {protocol->_methods, {sel_registerName(name), types}, isClassMethod};
    protocol->_methods = m;
}

void objc_loadProtocolParent(Protocol *protocol, Protocol *parent) {
    Lock lock;
    auto *p = static_cast<objc_protocolList *>(allocatePermanently(sizeof(objc_protocolList)));
    *p = {protocol->_parents, parent};
    protocol->_parents = p;
}

Protocol *objc_getProtocol(const char *name) {
    Lock lock;
    for (auto *r = registered; r; r = r->next)
        if (std::strcmp(r->protocol->_name, name) == 0) return r->protocol;
    return nullptr;
}
