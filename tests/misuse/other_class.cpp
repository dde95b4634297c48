// SPDX-License-Identifier: MIT
// expect: the method's C++ types are not those of the front's member
#include <Bedrock/Bedrock.h>
struct Shelf : ZPObject {
    ZP_CLASS(Shelf)
    ZPString *label() ZP_ASKS();
};
struct ShelfMethods : Shelf {
    ZPArray *label() { return nullptr; }
};
ZP_IMPLEMENT_WITH(Shelf, ShelfMethods, label);
