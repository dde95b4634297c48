// SPDX-License-Identifier: MIT
// expect: the type string of this method is too long
#include <Bedrock/core/ZPObject.h>
#include <array>
struct Long {
    char bytes[8];
};
// With the receiver and the selector one more than there is room for.
template <> struct objc_structEncoding<Long> {
    static constexpr auto all = [] {
        std::array<char, 254> a{};
        for (int i = 0; i < 253; ++i) a[i] = 'c';
        return a;
    }();
    static constexpr const char *text = all.data();
};
struct Wrong : ZPObject {
    ZP_CLASS(Wrong)
    void take(Long) {}
};
ZP_IMPLEMENT(Wrong, take);
