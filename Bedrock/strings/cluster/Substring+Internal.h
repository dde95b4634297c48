// SPDX-License-Identifier: MIT
// What the parts of strings of both storage forms share: each borrows from `_referenceString`, its parent, until it
// gets characters of its own.
#pragma once

#include <Bedrock/strings/cluster/Cluster.h>

template <class S> struct ZPSubstringMethods : S {
    ZPString *initWithCStringNoCopy_length_freeWhenDone(char *, unsigned, BOOL) {
        return refuse("initWithCStringNoCopy:length:freeWhenDone:"_sel);
    }
    ZPString *initWithCharactersNoCopy_length_freeWhenDone(unichar *, unsigned, BOOL) {
        return refuse("initWithCharactersNoCopy:length:freeWhenDone:"_sel);
    }
    [[noreturn]] ZPString *refuse(SEL selector) {
        ZPException::raise_format(ZPInvalidArgumentException, "Can't call %s in %s"_zp, sel_getName(selector),
                                  this->isa->name);
    }
    bool borrows() const { return __atomic_load_n(&this->_referenceString, __ATOMIC_ACQUIRE); }
    /// The parent that was parted from: another thread may still be reading what was borrowed.
    static void letGo(ZPString *parent) {
        if (__libc_single_threaded) parent->release();
        else parent->autorelease();
    }
    void dealloc() {
        if (this->_referenceString) {
            this->_flags.freeWhenDone = 0;
            this->_referenceString->release();
        }
        objc_super<S>(this).template send<>("dealloc"_sel);
    }
};
