// SPDX-License-Identifier: MIT
// expect: a class that is only declared cannot be told from an object class here
#include <Bedrock/core/ZPObject.h>
struct Unseen;
Unseen *take(id object) { return object; }
int main() { return take(nullptr) != nullptr; }
