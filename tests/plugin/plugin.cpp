// SPDX-License-Identifier: MIT
// A library that is opened and closed while the program runs. It uses nothing but what it defines.
#include <Bedrock/core/ZPObject.h>

namespace {

struct PluggedIn : ZPObject {
    ZP_CLASS(PluggedIn)
    int answer() { return 42; }
};
ZP_IMPLEMENT(PluggedIn, answer);

struct Taught : ZPObject {
    unsigned taughtByPlugin() { return self()->retainCount(); }
};
ZP_CATEGORY(ZPObject, Taught, taughtByPlugin);

}  // namespace
