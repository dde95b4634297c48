// SPDX-License-Identifier: MIT
// Protocol objects. Their class is a root of its own, below every class of the library.
#include <Bedrock/platform/objects/Objects+Internal.h>

#include <string_view>
#include <unordered_map>

using namespace objc;

namespace {

struct ProtocolMethods : Protocol {
    const char *name() { return _name; }
    BOOL conformsTo(Protocol *other) {
        if (!other) return NO;
        if (other == this || std::strcmp(other->_name, _name) == 0) return YES;
        listPromises(this);
        for (auto *p = _parents; p; p = p->next)
            if (p->protocol->conformsTo(other)) return YES;
        return NO;
    }
    const objc_methodDescription *describe(SEL name, BOOL isClassMethod) {
        listPromises(this);
        for (auto *m = _methods; m; m = m->next)
            if (m->isClassMethod == isClassMethod && m->description.name == name) return &m->description;
        for (auto *p = _parents; p; p = p->next)
            if (auto *d = static_cast<ProtocolMethods *>(p->protocol)->describe(name, isClassMethod)) return d;
        return nullptr;
    }
    const objc_methodDescription *descriptionForInstanceMethod(SEL name) { return describe(name, NO); }
    const objc_methodDescription *descriptionForClassMethod(SEL name) { return describe(name, YES); }
};

using Protocols = std::unordered_map<std::string_view, Protocol *>;
Protocols &protocols() ZP_REQUIRES(runtimeLock) {
    static Protocols *all;
    if (!all) all = new Protocols;
    return *all;
}

OBJC_REGISTER(static, "zp_records", OfProtocols, "Protocol", &objc_protocolClass.cls, Protocol, ProtocolMethods, name,
              conformsTo, descriptionForInstanceMethod, descriptionForClassMethod, immortal());

}  // namespace

constinit objc_classPair objc_protocolClass = objc_unrealizedPair(
    objc_protocolClass, nullptr, objc_isRoot, objc_isRoot, "Protocol", sizeof(Protocol), &objc_registrationOfProtocols);

void objc::addProtocol(Protocol *protocol) { protocols().emplace(protocol->_name, protocol); }

Protocol *objc::findProtocol(const char *name) {
    auto at = protocols().find(name);
    return at == protocols().end() ? nullptr : at->second;
}
