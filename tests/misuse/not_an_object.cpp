// SPDX-License-Identifier: MIT
// expect: error
#include <Bedrock/collections/ZPArray.h>
int main() { return ZPArray::arrayWithObjects("text", 5) != nullptr; }
