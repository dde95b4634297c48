// SPDX-License-Identifier: MIT
// expect: objc_sendObjectList
#include <Bedrock/collections/ZPArray.h>
int main() { return ZPArray::arrayWithObjects("text", 5) != nullptr; }
