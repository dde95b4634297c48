// SPDX-License-Identifier: MIT
// expect: the_name_must_have_one_word_for_each_argument
#include <Bedrock/core/ZPObject.h>
struct Wrong : ZPObject {
    ZP_CLASS(Wrong)
    static Wrong *make(Class, int, int) { return nullptr; }
};
ZP_IMPLEMENT(Wrong, classMethods(make));
