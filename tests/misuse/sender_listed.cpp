// SPDX-License-Identifier: MIT
// expect: the_name_is_a_sending_member_of_the_front_and_no_method
#include <Bedrock/core/ZPObject.h>
struct Scale : ZPObject {
    ZP_CLASS(Scale)
    double weigh(unsigned pieces) ZP_ASKS(pieces);
};
struct ScaleMethods : Scale {};
ZP_IMPLEMENT_WITH(Scale, ScaleMethods, weigh);
