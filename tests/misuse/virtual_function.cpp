// SPDX-License-Identifier: MIT
// expect: a class has no virtual functions
#include <Bedrock/core/ZPObject.h>
struct Shape : ZPObject {
    ZP_CLASS(Shape)
    virtual void draw() {}
};
ZP_IMPLEMENT(Shape);
int main() {}
