// SPDX-License-Identifier: MIT
// expect: the name is a sending member of the front and no method
#include <Bedrock/core/ZPObject.h>
struct Scale : ZPObject {
    ZP_CLASS(Scale)
    double weigh(unsigned pieces) ZP_ASKS(pieces);
};
ZP_IMPLEMENT(Scale, weigh);
