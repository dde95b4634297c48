// SPDX-License-Identifier: MIT
// expect: the named arguments of the method and the front's member differ
#include <Bedrock/core/ZPObject.h>
struct Shelf : ZPObject {
    ZP_CLASS(Shelf)
    template <class... A> void fill(unsigned count, A... rest) ZP_TELLS_WITH(rest, count);
};
struct ShelfMethods : Shelf {
    void fill(int, std::va_list) {}
};
ZP_IMPLEMENT_WITH(Shelf, ShelfMethods, variadic(fill));
