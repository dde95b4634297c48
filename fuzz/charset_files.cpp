// SPDX-License-Identifier: MIT
// Files of character sets: what is read answers alike as a record, as a bitmap and unit by unit, and its dump is read
// back as the same set. The first byte chooses the kind of file.
#include <Bedrock/Bedrock.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <unistd.h>

namespace {

void require(bool holds) {
    if (!holds) std::abort();
}

void check(ZPCharacterSet *set) {
    ZPData *bitmap = set->bitmapRepresentation();
    require(bitmap->length() == 8192);
    auto *bits = static_cast<const unsigned char *>(bitmap->bytes());
    unsigned count = 0;
    for (unsigned u = 0; u < 0x10000; ++u) {
        bool member = set->characterIsMember(unichar(u));
        require(member == (bits[u >> 3] >> (u & 7) & 1));
        count += member;
    }
    require(set->count() == count && (set->isEmpty() != NO) == (count == 0));
    ZPCharacterSetRecord *record = ZPMakeSetStructFromBitmap(bits),
                         *again =
                             ZPMakeSetFromDictionary(ZPCharacterSet::_dumpSetRepresentation(record)->propertyList());
    require(ZPCharacterSet::_dumpSetRepresentation(record)->isEqual(ZPCharacterSet::_dumpSetRepresentation(again)));
    ZPZoneFree(nullptr, record);
    ZPCharacterSet *compact = objc_msgSend<id>(ZPCharacterSet::alloc(), "_initWithSet:"_sel, again);
    compact->autorelease();
    for (unsigned u = 0; u < 0x10000; ++u)
        require((compact->characterIsMember(unichar(u)) != NO) == (bits[u >> 3] >> (u & 7) & 1));
    require(compact->isEqual(set) && compact->hash() == set->hash() && compact->count() == count);
    require(compact->invertedSet()->count() == 0x10000 - count);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size < 1) return 0;
    ZPAutoreleasePoolScope pool;
    std::string path =
        (std::filesystem::temp_directory_path() / ("charset_files." + std::to_string(getpid()))).string() +
        (data[0] & 1 ? ".bitmap" : ".dict");
    std::FILE *file = std::fopen(path.c_str(), "wb");
    require(file && std::fwrite(data + 1, 1, size - 1, file) == size - 1 && std::fclose(file) == 0);
    ZPCharacterSet *set = ZPCharacterSet::characterSetWithContentsOfFile(ZPString::stringWithCString(path.c_str()));
    std::remove(path.c_str());
    if (set) check(set);
    else require(!(data[0] & 1));
    return 0;
}
