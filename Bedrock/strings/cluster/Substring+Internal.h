// SPDX-License-Identifier: MIT
// What the parts of strings of both storage forms share: each borrows from `_referenceString`, its parent, until it is
// first retained; then it gets characters of its own and lets the parent go. Parting frees what a reader may be looking
// at, and in a process with threads nobody knows the readers: there a part keeps its parent until its own end.
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
    bool mayPart() const { return this->_referenceString && __libc_single_threaded; }
    void dealloc() {
        if (this->_referenceString) {
            this->_flags.freeWhenDone = 0;
            this->_referenceString->release();
        }
        ZP_SUPER(S, dealloc)();
    }
};
