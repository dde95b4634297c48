// SPDX-License-Identifier: MIT
// expect: the_name_must_have_one_word_for_each_argument
#include <Bedrock/core/ZPObject.h>
struct Wrong : ZPObject {
    ZP_CLASS(Wrong)
    void add_twice(int) {}
};
ZP_IMPLEMENT(Wrong, add_twice);
