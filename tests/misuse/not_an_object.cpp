// SPDX-License-Identifier: MIT
// expect: every element of the list must be an object
#include <Bedrock/collections/ZPArray.h>
int main() { return ZPArray::arrayWithObjects("text", 5) != nullptr; }
