// SPDX-License-Identifier: MIT
// expect: init answers an object
#include <Bedrock/core/ZPObject.h>
struct Scale : ZPObject {
    ZP_CLASS(Scale)
};
struct ScaleMethods : Scale {
    int init() { return 1; }
};
ZP_IMPLEMENT_WITH(Scale, ScaleMethods, init);
