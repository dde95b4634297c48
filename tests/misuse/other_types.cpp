// SPDX-License-Identifier: MIT
// expect: the_method_has_other_types_than_the_front
#include <Bedrock/core/ZPObject.h>
struct Scale : ZPObject {
    ZP_CLASS(Scale)
    double weigh(unsigned pieces) ZP_ASKS(pieces);
};
struct ScaleMethods : Scale {
    double weigh(int pieces) { return pieces; }
};
ZP_IMPLEMENT_WITH(Scale, ScaleMethods, weigh);
