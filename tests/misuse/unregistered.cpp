// SPDX-License-Identifier: MIT
// expect: classRecord_that_ZP_IMPLEMENT_defines
#include <Bedrock/core/ZPObject.h>
struct Forgotten : ZPObject {
    ZP_CLASS(Forgotten)
};
int main() { Forgotten::new_()->release(); }
