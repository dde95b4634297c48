// SPDX-License-Identifier: MIT
// The files of the resource directory, which the environment can put anywhere: the first byte chooses one, the rest
// takes its place. The library keeps to its promises with what the file says, and without it where it says nonsense.
#include "child.h"

#include <array>
#include <filesystem>

namespace {

namespace fs = std::filesystem;

const char *const names[] = {
    "CharacterSets/CaseMapping-L.data",
    "CharacterSets/EUCToUnicode-L.data",
    "CharacterSets/UnicodeToEUC-L.data",
    "CharacterSets/NonHangulDecomp.data",
    "CharacterSets/SystemCharacterSetAux.dict",
    "CharacterSets/letterCharacterSet.bitmap",
    "CharacterSets/decimalDigitCharacterSet.dict",
    "English.lproj/EncodingNames.strings",
    "CStringEncoding",
    "FileSystemEncoding",
    "CharacterSets/decomposableCharacterSet.bitmap",
    "CharacterSets/hasNonSelfUppercaseMapping.bitmap",
};
constexpr unsigned places = std::size(names);
constexpr int inputFile = 200;  // the descriptor that stands for it in every tree

// For each file an installation in which it is the input.
class Trees {
    fs::path _folder;

  public:
    Trees() {
        std::string name = (fs::temp_directory_path() / "resources.XXXXXX").string();
        require(mkdtemp(name.data()));
        _folder = name;
        for (unsigned i = 0; i < places; ++i) {
            fs::path resources = path(i) / "CorvidLibrary/Frameworks/Bedrock.framework/Resources";
            for (const char *folder : {"CharacterSets", "English.lproj"}) {
                fs::create_directories(resources / folder);
                for (auto &entry : fs::directory_iterator(fs::path(RESOURCES) / folder)) {
                    // The set's own file is looked at before the one for many.
                    if (i == 4 && entry.path().filename() == "decimalDigitCharacterSet.dict") continue;
                    if (fs::path(folder) / entry.path().filename() != names[i])
                        fs::create_symlink(entry.path(), resources / folder / entry.path().filename());
                }
            }
            fs::create_symlink("/proc/self/fd/" + std::to_string(inputFile), resources / names[i]);
        }
    }
    ~Trees() {
        std::error_code ignored;
        fs::remove_all(_folder, ignored);
    }
    fs::path path(unsigned i) const { return _folder / std::to_string(i); }
};

// All units of the scripts that have cases and marks, then some of the rest.
constexpr unsigned firstSome = 0x600, some = 13;

ZPString *manyUnits() {
    std::vector<unichar> units;
    for (unsigned u = 0; u < 0x10000; u += u < firstSome ? 1 : some) units.push_back(unichar(u));
    return ZPString::stringWithCharacters_length(units.data(), unsigned(units.size()));
}

void checkCase() {
    ZPString *all = manyUnits();
    require(all->lowercaseString()->isEqualToString(all->lowercaseString()) &&
            all->uppercaseString()->isEqualToString(all->uppercaseString()));
    all->capitalizedString();
    require("AbZ[`\\{z1"_zp->lowercaseString()->isEqualToString("abz[`\\{z1"_zp) &&
            "AbZ[`\\{z1"_zp->uppercaseString()->isEqualToString("ABZ[`\\{Z1"_zp));
    unichar latin[] = {0xC4, 0xE4, 0x100};
    require(ZPString::stringWithCharacters_length(latin, 3)->lowercaseString()->characterAtIndex(0) == 0xE4);
    require(ZPString::stringWithCharacters_length(latin, 3)->uppercaseString()->characterAtIndex(1) == 0xC4);
}

void checkJapanese() {
    std::vector<unsigned char> pairs;
    for (unsigned lead = 0x80; lead < 0x100; ++lead)
        for (unsigned trail = 0x40; trail < 0x100; trail += 3)
            pairs.insert(pairs.end(), {static_cast<unsigned char>(lead), static_cast<unsigned char>(trail), 'x'});
    ZPString *all = manyUnits();
    for (ZPStringEncoding encoding :
         {ZPJapaneseEUCStringEncoding, ZPShiftJISStringEncoding, ZPISO2022JPStringEncoding}) {
        unsigned length = all->length();
        std::vector<unsigned char> bytes(length * 12 + 2);
        unsigned filled = 0;
        ZPRange rest{};
        all->getBytes_maxLength_filledLength_encoding_allowLossyConversion_range_remainingRange(
            bytes.data(), unsigned(bytes.size()), &filled, encoding, YES, {0, length}, &rest);
        require(filled <= bytes.size() && rest.location + rest.length == length);
        if (ZPString *text =
                ZPString::alloc()->initWithBytes_length_encoding(pairs.data(), unsigned(pairs.size()), encoding))
            text->autorelease();
        if (ZPString *text = ZPString::alloc()->initWithBytes_length_encoding(bytes.data(), filled, encoding))
            text->autorelease();
        // Names of files stay what they are, whatever the tables say.
        ZPString *text = _ZPStringFromHostBytes(pairs.data(), unsigned(pairs.size()), encoding);
        std::vector<unsigned char> back(pairs.size());
        require(_ZPHostBytesFromString(text, back.data(), unsigned(back.size()), encoding) == int(pairs.size()) &&
                back == pairs);
    }
}

void checkDecompositions() {
    for (unsigned u = 0; u < 0x10000; u += u < firstSome ? 1 : some) {
        unichar units[ZPLongestDecomposition];
        try {
            unsigned simple = ZPSimplyDecomposeCharacter(unichar(u), units);
            require(simple >= 1 && simple <= ZPLongestDecomposition && (u >= 0xC0 || (simple == 1 && units[0] == u)));
            unsigned n = ZPDecomposeCharacter(unichar(u), units);
            require(n >= 1 && n <= ZPLongestDecomposition);
        } catch (ZPException *) {
            require(u >= 0xC0);
        }
    }
}

void checkSet(ZPCharacterSet *set, unichar member, unichar stranger) {
    require(set && set->characterIsMember(member) && !set->characterIsMember(stranger));
    ZPData *bitmap = set->bitmapRepresentation();
    require(bitmap->length() == 8192);
    auto *bits = static_cast<const unsigned char *>(bitmap->bytes());
    for (unsigned u = 0; u < 0x10000; u += u < firstSome ? 1 : some)
        require((set->characterIsMember(unichar(u)) != NO) == (bits[u >> 3] >> (u & 7) & 1));
    require(set->invertedSet()->characterIsMember(stranger) && !set->invertedSet()->characterIsMember(member));
}

void checkEncodings() {
    const ZPStringEncoding *known = ZPString::availableStringEncodings();
    auto isKnown = [&](ZPStringEncoding encoding) {
        const ZPStringEncoding *e = known;
        while (*e && *e != encoding) ++e;
        return *e != 0;
    };
    require(isKnown(_ZPDefaultCStringEncoding()) && isKnown(_ZPDefaultFileSystemEncoding()));
    for (const ZPStringEncoding *e = known; *e; ++e) {
        ZPString *name = ZPString::localizedNameOfStringEncoding(*e);
        require(name && name->isKindOfClass(ZPString::class_()) &&
                name->isEqualToString(ZPString::localizedNameOfStringEncoding(*e)));
    }
    ZPString *text = ZPString::stringWithCString("plain text");
    require(text->length() == 10 && !std::strcmp(text->cString(), "plain text"));
    char host[64];
    require("C:\\tmp\\x"_zp->getFileSystemRepresentation_maxLength(host, sizeof host));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size < 1 || size > 1 << 20) return 0;
    static Trees trees;
    unsigned place = data[0] % places;
    MemoryFile file(data + 1, size - 1);
    runInChild([&] {
        setenv("CORVID_ROOT", trees.path(place).c_str(), 1);
        require(dup2(file.number(), inputFile) == inputFile);
        switch (place) {
        case 0:
        case 11: checkCase(); break;
        case 1:
        case 2: checkJapanese(); break;
        case 3:
        case 10: checkDecompositions(); break;
        case 4:
        case 6: checkSet(ZPCharacterSet::decimalDigitCharacterSet(), '7', 'a'); break;
        case 5: checkSet(ZPCharacterSet::letterCharacterSet(), 'a', '7'); break;
        default: checkEncodings();
        }
    });
    return 0;
}
