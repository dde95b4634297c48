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
    void dealloc() ZP_TELLS();
    id retain() ZP_ASKS();
    void release() ZP_TELLS();
    id autorelease() ZP_ASKS();
    unsigned retainCount() ZP_ASKS();
    ///@}
    /// The zone of the receiver's memory.
    ZPZone *zone() ZP_ASKS();
    /// The proxy's own class.
    Class objectClass() ZP_ASKS_AS("class");
    /// From the proxy's own address.
    unsigned hash() ZP_ASKS();
    /// Identity with the proxy.
    BOOL isEqual(id other) ZP_ASKS(other);
    /// YES.
    BOOL isProxy() ZP_ASKS();
    /// Asks the object behind the proxy, through `forward::`.
    BOOL isKindOfClass(Class cls) ZP_ASKS(cls);
    /// "<Class: 0xaddress>" of the proxy itself.
    ZPString *description() ZP_ASKS();
    /// YES when the receiver's class does not itself respond to the selector.
    BOOL willForwardSelector(SEL selector) ZP_ASKS(selector);
    /// Override: the signature of a message to be forwarded. This one raises ZPInvalidArgumentException.
    ZPMethodSignature *methodSignatureForSelector(SEL selector) ZP_ASKS(selector);
    /// Override: receives what is forwarded. This one raises ZPInvalidArgumentException.
    void forwardInvocation(ZPInvocation *invocation) ZP_TELLS(invocation);
    /// Raises ZPInvalidArgumentException.
    void doesNotRecognizeSelector(SEL selector) ZP_TELLS(selector);
};
