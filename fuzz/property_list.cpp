// SPDX-License-Identifier: MIT
// Property-list text: what is read is written and read back to an equal tree.
#include <Bedrock/Bedrock.h>

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    ZPAutoreleasePoolScope pool;
    ZPString *text = ZPString::alloc()->initWithData_encoding(ZPData::dataWithBytes_length(data, unsigned(size)),
                                                              ZPUTF8StringEncoding);
    if (!text) return 0;
    text->autorelease();
    id tree = nullptr;
    try {
        tree = text->propertyList();
    } catch (ZPException *) {
        return 0;
    }
    if (!tree) return 0;
    // A string's description is the string itself.
    ZPString *written = tree->isKindOfClass(ZPString::class_()) ? ((ZPString *)tree)->quotedStringRepresentation()
                                                                : ((ZPObject *)tree)->description();
    id again = written->propertyList();
    if (!again || !((ZPObject *)again)->isEqual(tree)) std::abort();
    return 0;
}
