// SPDX-License-Identifier: MIT
// The root class of objects that stand in for others.
#pragma once

#include <Bedrock/core/ZPObject.h>

/// A minimal root class: it answers for its own memory and identity and receives every other message in
/// `forward::`, also the questions about class, protocol and selectors. Counting is safe from any thread.
struct ZPProxy : objc_object {
    ZP_CLASS(ZPProxy)

    ///@{
    /// As the root class's of these names.
    void dealloc() { objc_msgSend(this, "dealloc"_sel); }
    id retain() { return objc_msgSend<id>(this, "retain"_sel); }
    void release() { objc_msgSend(this, "release"_sel); }
    id autorelease() { return objc_msgSend<id>(this, "autorelease"_sel); }
    unsigned retainCount() { return objc_msgSend<unsigned>(this, "retainCount"_sel); }
    ///@}
    /// The zone of the receiver's memory.
    ZPZone *zone() { return objc_msgSend<ZPZone *>(this, "zone"_sel); }
    /// The proxy's own class.
    Class objectClass() { return objc_msgSend<Class>(this, "class"_sel); }
    /// From the proxy's own address.
    unsigned hash() { return objc_msgSend<unsigned>(this, "hash"_sel); }
    /// Identity with the proxy.
    BOOL isEqual(id other) { return objc_msgSend<BOOL>(this, "isEqual:"_sel, other); }
    /// YES.
    BOOL isProxy() { return objc_msgSend<BOOL>(this, "isProxy"_sel); }
    /// Asks the object behind the proxy, through `forward::`.
    BOOL isKindOfClass(Class cls) { return objc_msgSend<BOOL>(this, "isKindOfClass:"_sel, cls); }
    /// "<Class: 0xaddress>" of the proxy itself.
    ZPString *description() { return objc_msgSend<ZPString *>(this, "description"_sel); }
    /// YES when the receiver's class does not itself respond to the selector.
    BOOL willForwardSelector(SEL selector) { return objc_msgSend<BOOL>(this, "willForwardSelector:"_sel, selector); }
    /// Override: the signature of a message to be forwarded. This one raises ZPInvalidArgumentException.
    ZPMethodSignature *methodSignatureForSelector(SEL selector) {
        return objc_msgSend<ZPMethodSignature *>(this, "methodSignatureForSelector:"_sel, selector);
    }
    /// Override: receives what is forwarded. This one raises ZPInvalidArgumentException.
    void forwardInvocation(ZPInvocation *invocation) { objc_msgSend(this, "forwardInvocation:"_sel, invocation); }
    /// Raises ZPInvalidArgumentException.
    void doesNotRecognizeSelector(SEL selector) { objc_msgSend(this, "doesNotRecognizeSelector:"_sel, selector); }
};
