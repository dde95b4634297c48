// SPDX-License-Identifier: MIT
// expect: temporary whose address is used as value of local variable 's' will be destroyed
#include <Bedrock/bridge/ZPMemory.h>
unsigned take(ZPObject *object) { return object->hash(); }
int main() {
    unsigned hash = take(ZPAdopt(ZPObject::new_()));  // right: the reference lives to the end of the statement
    ZPObject *s = ZPAdopt(ZPObject::new_());
    return s->hash() == hash;
}
