// SPDX-License-Identifier: MIT
// expect: instances are aligned to 16 bytes at most
#include <Bedrock/core/ZPObject.h>
struct Wide : ZPObject {
    ZP_CLASS(Wide)
    alignas(32) char _bytes[32];
};
ZP_IMPLEMENT(Wide);
