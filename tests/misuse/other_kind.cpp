// SPDX-License-Identifier: MIT
// expect: one is a method of instances and one of the class
#include <Bedrock/core/ZPObject.h>
struct Shelf : ZPObject {
    ZP_CLASS(Shelf)
    static unsigned built() ZP_CLASS_ASKS();
};
struct ShelfMethods : Shelf {
    unsigned built() { return 3; }
};
ZP_IMPLEMENT_WITH(Shelf, ShelfMethods, built);
