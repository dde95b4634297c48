// SPDX-License-Identifier: MIT
// expect: the_method_has_other_types_than_the_front
#include <Bedrock/core/ZPObject.h>
struct ScaleCode : ZPObject {
    bool isEqual(id other) { return other.pointer() == this; }
};
ZP_MAKE_CLASS(Scale, ScaleCode, isEqual);
