// SPDX-License-Identifier: MIT
// The character sets and case mappings of the resource files: against the character data they were made from, and
// what remains of them when files are missing or broken, each case in a process of its own.
#include "ResourceRoot.h"

using namespace strings;
namespace fs = std::filesystem;

namespace {

struct Character {
    std::string category = "Cn";
    bool decomposable = false;
    unsigned upper = 0, lower = 0, title = 0;
};

// The units from U+0100 up, as the installed character data describe them; empty when there are none.
const std::vector<Character> &characters() {
    static const std::vector<Character> all = [] {
        std::vector<Character> made;
        std::ifstream file("/usr/share/unicode/UnicodeData.txt");
        if (!file) return made;
        made.resize(0x10000);
        unsigned first = 0;
        for (std::string line; std::getline(file, line);) {
            std::vector<std::string> field;
            std::stringstream stream(line);
            for (std::string piece; std::getline(stream, piece, ';');) field.push_back(piece);
            field.resize(15);
            unsigned code = unsigned(std::stoul(field[0], nullptr, 16));
            if (code > 0xFFFF) break;
            auto hex = [&](unsigned i) { return field[i].empty() ? 0u : unsigned(std::stoul(field[i], nullptr, 16)); };
            bool ends = field[1].find(", Last>") != std::string::npos;
            for (unsigned u = ends ? first : code; u <= code; ++u) {
                bool hangul = field[1].find("Hangul Syllable,") != std::string::npos;
                made[u] = {field[2], hangul || (!field[5].empty() && field[5][0] != '<'), hex(12), hex(13), hex(14)};
            }
            first = code;
        }
        return made;
    }();
    return all;
}

const std::map<std::string, ZPCharacterSet *(*)()> standardSets = {
    {"Cc Cf", ZPCharacterSet::controlCharacterSet},
    {"Zs", ZPCharacterSet::whitespaceCharacterSet},
    {"Zs Zl Zp", ZPCharacterSet::whitespaceAndNewlineCharacterSet},
    {"Nd", ZPCharacterSet::decimalDigitCharacterSet},
    {"Lu Ll Lt Lm Lo Mn Mc Me Sk", ZPCharacterSet::letterCharacterSet},
    {"Ll", ZPCharacterSet::lowercaseLetterCharacterSet},
    {"Lu Lt", ZPCharacterSet::uppercaseLetterCharacterSet},
    {"Lu Ll Lt Lm Lo Mn Mc Me Sk Nd Nl No", ZPCharacterSet::alphanumericCharacterSet},
    {"Mn Mc Me", ZPCharacterSet::nonBaseCharacterSet},
    {"", ZPCharacterSet::decomposableCharacterSet},
    {"Cn", ZPCharacterSet::illegalCharacterSet},
    {"Pc Pd Ps Pe Pi Pf Po", ZPCharacterSet::punctuationCharacterSet},
};

const char noSets[] = "Unable to load extended character set(s); using builtin.\n";
const char noCases[] = "ZPCharConversion: could not load case conversion table.\n";

std::string littleEndian(std::initializer_list<unsigned> numbers) {
    std::string bytes;
    for (unsigned n : numbers) bytes += {char(n & 0xFF), char(n >> 8)};
    return bytes;
}

std::string bitmapOf(std::initializer_list<unsigned> units) {
    std::string bytes(8192, '\0');
    for (unsigned u : units) bytes[u >> 3] = char(bytes[u >> 3] | 1 << (u & 7));
    return bytes;
}

void writeCases(const ResourceRoot &root, const std::string &name, const std::string &bytes) {
    root.write(name, bytes);
    for (const char *direction : {"Lower", "Upper", "Title"})
        root.write(std::string("hasNonSelf") + direction + "caseMapping.bitmap", std::string(8192, '\xFF'));
}

}  // namespace

TEST(CharacterFiles, standardSetsAreTheirCategories) {
    if (characters().empty()) GTEST_SKIP() << "the character data are not installed";
    for (auto &[categories, set] : standardSets) {
        std::set<std::string> wanted;
        std::stringstream stream(categories);
        for (std::string piece; stream >> piece;) wanted.insert(piece);
        ZPData *bitmap = set()->bitmapRepresentation();
        auto *bits = static_cast<const unsigned char *>(bitmap->bytes());
        for (unsigned u = 0; u < 0x10000; ++u) {
            bool member = set()->characterIsMember(unichar(u));
            ASSERT_EQ(bits[u >> 3] >> (u & 7) & 1, member) << std::hex << u;
            if (u < 0x100) continue;
            bool expected =
                categories.empty() ? characters()[u].decomposable : wanted.count(characters()[u].category) != 0;
            ASSERT_EQ(member, expected) << categories << ' ' << std::hex << u;
        }
        ZPMutableCharacterSet *copy = set()->mutableCopy();
        EXPECT_TRUE(copy->isEqual(set()) && copy->isMutable());
        copy->release();
    }
}

TEST(CharacterFiles, fullSetsAndTheirForms) {
    Class expanded = objc_getClass("ZPExpandedBuiltinCharacterSet");
    const std::pair<SEL, bool> cases[] = {{"controlCharacterSet"_sel, false},
                                          {"whitespaceCharacterSet"_sel, false},
                                          {"decimalDigitCharacterSet"_sel, false},
                                          {"letterCharacterSet"_sel, true},
                                          {"punctuationCharacterSet"_sel, true}};
    ZPCharacterSet *set = nullptr;
    for (auto [selector, bitmap] : cases) {
        set = objc_msgSend<ZPCharacterSet *>(ZPCharacterSet::class_(), selector);
        ZPCharacterSet *full = objc_msgSend<ZPCharacterSet *>(expanded, selector);
        EXPECT_EQ(objc_msgSend<BOOL>(full, "isCompact"_sel) != NO, bitmap) << sel_getName(selector);
        EXPECT_TRUE(full->isEqual(set) && set->isEqual(full));
        EXPECT_EQ(objc_msgSend<ZPCharacterSet *>(expanded, selector), full) << "loaded once";
    }
    testing::internal::CaptureStderr();
    EXPECT_REASON("ZPBuiltinCharacterSet expandSetWithOffset:: Illegal operation on this class or instance",
                  objc_msgSend<id>(set, "expandSetWithOffset:"_sel, 12));
    EXPECT_HAS(testing::internal::GetCapturedStderr(),
               "ZPExpandedBuiltinCharacterSet: illegal offset 12 encountered.\n");
}

TEST(CharacterFiles, caseMappingsOfThePlane) {
    if (characters().empty()) GTEST_SKIP() << "the character data are not installed";
    Pool pool;
    auto map = [](unsigned (*convert)(unichar, unichar *, unsigned), unsigned u) {
        unichar output[3];
        unsigned n = convert(unichar(u), output, 0);
        return std::u16string(output, output + n);
    };
    std::u16string all, upper, lower;
    for (unsigned u = 0; u < 0x10000; ++u) {
        const Character &c = characters()[u];
        auto simple = [u](unsigned to) { return std::u16string(1, char16_t(to && to < 0x10000 ? to : u)); };
        std::u16string up = simple(c.upper), down = simple(c.lower), title = simple(c.title ? c.title : c.upper);
        const char16_t *ligatures[] = {u"FF", u"FI", u"FL", u"FFI", u"FFL", u"ST", u"ST"};
        if (u == 0xB5) up = simple(0);
        if (u == 0xDF) up = u"SS", title = u"Ss";
        if (u >= 0xFB00 && u <= 0xFB06) {
            up = title = ligatures[u - 0xFB00];
            for (char16_t &unit : title) unit = &unit == title.data() ? unit : char16_t(unit | 0x20);
        }
        ASSERT_EQ(map(ZPConvertToUpper, u), up) << std::hex << u;
        ASSERT_EQ(map(ZPConvertToLower, u), down) << std::hex << u;
        ASSERT_EQ(map(ZPConvertToTitle, u), title) << std::hex << u;
        all += char16_t(u), upper += up, lower += down;
    }
    inEveryForm(all, [&](const Form &, ZPString *text) {
        EXPECT_TRUE(textOf(text->uppercaseString()) == upper);
        EXPECT_TRUE(textOf(text->lowercaseString()) == lower);
    });
    EXPECT_EQ(textOf(make(u"istanbul III")->_capitalizedStringWithFlags(1)), u"\u0130stanbul I\u0131\u0131");
}

TEST(CharacterFiles, withoutAnyFile) {
    IN_A_ROOT([](const ResourceRoot &) {
        testing::internal::CaptureStderr();
        ZPCharacterSet *letters = ZPCharacterSet::letterCharacterSet(),
                       *illegal = ZPCharacterSet::illegalCharacterSet();
        EXPECT_TRUE(letters->characterIsMember('a') && letters->characterIsMember(0xE9));
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << "nothing was needed so far";
        testing::internal::CaptureStderr();
        EXPECT_FALSE(letters->characterIsMember(0x416));
        EXPECT_FALSE(ZPCharacterSet::nonBaseCharacterSet()->characterIsMember(0x301));
        EXPECT_TRUE(illegal->characterIsMember(0xFFFF));
        EXPECT_FALSE(illegal->characterIsMember(0xFFFE));
        EXPECT_EQ(letters->count(), 128u - 5) << "the members below U+0100";
        std::string log = testing::internal::GetCapturedStderr();
        EXPECT_EQ(countOf(log, noSets), 1u) << log;

        testing::internal::CaptureStderr();
        EXPECT_EQ(textOf(make(u"a\u00e9\u0142\u0153\u0436\u00ff")->uppercaseString()),
                  u"A\u00c9\u0141\u0152\u0436\u0178");
        EXPECT_EQ(textOf(make(u"A\u00c9\u0141\u0152\u0416\u0178")->lowercaseString()),
                  u"a\u00e9\u0142\u0153\u0416\u00ff");
        EXPECT_EQ(textOf(make(u"\u00e9a \u00dfx bc")->capitalizedString()), u"\u00e9a Ssx Bc");
        EXPECT_EQ(make(u"\u0416")->rangeOfString_options(make(u"\u0436"), ZPCaseInsensitiveSearch).length, 0u);
        log = testing::internal::GetCapturedStderr();
        EXPECT_EQ(countOf(log, noCases), 1u) << log;
    });
}

TEST(CharacterFiles, caseMappingsAreTriedAgain) {
    IN_A_ROOT([](const ResourceRoot &root) {
        EXPECT_EQ(textOf(make(u"\u0436")->uppercaseString()), u"\u0436");
        // One mapping each; the bitmap leaves U+0437 out, and a target of 0 is none.
        std::string tables =
            littleEndian({9, 1, 3, 1, 0x416, 0x436, 0x436, 0x416, 0x437, 0x417, 0x438, 0, 0x1C6, 0x1C5});
        writeCases(root, "CaseMapping", tables);
        root.write("hasNonSelfUppercaseMapping.bitmap", bitmapOf({0x436, 0x438}));
        EXPECT_EQ(textOf(make(u"\u0436\u0437\u0438")->uppercaseString()), u"\u0416\u0437\u0438");
        EXPECT_EQ(textOf(make(u"\u0416\u0417")->lowercaseString()), u"\u0436\u0417");
        EXPECT_EQ(textOf(make(u"\u01c6")->capitalizedString()), u"\u01c5");
        EXPECT_EQ(textOf(make(u"\u0142\u0153")->uppercaseString()), u"\u0141\u0152") << "these are fixed";
        fs::remove(root.folder() / "CaseMapping");
        EXPECT_EQ(textOf(make(u"\u0436")->uppercaseString()), u"\u0416") << "once read, it stays";
    });
}

TEST(CharacterFiles, brokenCaseMappings) {
    std::string tables = littleEndian({1, 1, 1, 1, 0x416, 0x436, 0x436, 0x416, 0x436, 0x416});
    std::string broken[] = {"", "abc", tables.substr(0, 7), tables.substr(0, tables.size() - 1),
                            littleEndian({1, 0xFFFF, 0xFFFF, 0xFFFF}) + tables};
    for (const std::string &bytes : broken)
        IN_A_ROOT([&](const ResourceRoot &root) {
            writeCases(root, "CaseMapping-L.data", bytes);
            testing::internal::CaptureStderr();
            EXPECT_EQ(textOf(make(u"a\u0436\u0436")->uppercaseString()), u"A\u0436\u0436");
            EXPECT_EQ(textOf(make(u"A\u0416")->lowercaseString()), u"a\u0416");
            EXPECT_EQ(countOf(testing::internal::GetCapturedStderr(), noCases), 1u);
            writeCases(root, "CaseMapping-L.data", tables);
            fs::resize_file(root.folder() / "hasNonSelfUppercaseMapping.bitmap", 0x436 / 8);
            EXPECT_EQ(textOf(make(u"\u0436")->uppercaseString()), u"\u0436") << "what the bitmap lacks counts as zero";
            EXPECT_EQ(textOf(make(u"\u0416")->lowercaseString()), u"\u0436");
        });
}

TEST(CharacterFiles, brokenSets) {
    IN_A_ROOT([](const ResourceRoot &root) {
        root.write("letterCharacterSet.bitmap", bitmapOf({'0', 0x416, 0xFFFF}).substr(0, 0x420 / 8));
        root.write("decimalDigitCharacterSet.dict",
                   "{ nsingles = 1; singles = ( 0x661 ); nranges = 7; ranges = ( 1776, 1785, 9 ); ");
        root.write("whitespaceCharacterSet.dict", "\xFF\xFEgarbage\x80");
        root.write("controlCharacterSet.dict", "( a, b )");
        root.write("SystemCharacterSetAux.dict",
                   "{ decimalDigitCharacterSet = { ranges = ( 0x6F0, 0x6F9 ); }; whitespaceCharacterSet = { characters "
                   "= ( 0x3000, 32 ); }; few = { characters = ( 0x41, 66, 70000 ); }; odd = x; nested = { singles = ( "
                   "( 1 ), 5 ); }; }");
        // A short bitmap is used as far as it goes, and below U+0100 the library knows better. What cannot be parsed
        // counts as missing; the auxiliary file steps in.
        const std::tuple<ZPCharacterSet *(*)(), unichar, bool, unsigned> cases[] = {
            {ZPCharacterSet::letterCharacterSet, 0x416, true, 0},
            {ZPCharacterSet::letterCharacterSet, 0x436, false, 0},
            {ZPCharacterSet::decimalDigitCharacterSet, 0x6F5, true, 0},
            {ZPCharacterSet::decimalDigitCharacterSet, 0x661, false, 0},
            {ZPCharacterSet::whitespaceCharacterSet, 0x3000, true, 0},
            {ZPCharacterSet::controlCharacterSet, 0x200E, false, 1},
            {ZPCharacterSet::punctuationCharacterSet, 0x2014, false, 0},
        };
        for (auto &[set, unit, member, complaints] : cases) {
            testing::internal::CaptureStderr();
            EXPECT_EQ(set()->characterIsMember(unit) != NO, member) << unsigned(unit);
            EXPECT_EQ(countOf(testing::internal::GetCapturedStderr(), noSets), complaints) << unsigned(unit);
        }
        EXPECT_EQ(ZPCharacterSet::letterCharacterSet()->count(), 128u - 5 + 1);

        EXPECT_EQ(ZPCharacterSet::characterSetWithContentsOfFile("/anywhere/few.builtin"_zp)->count(), 2u);
        EXPECT_EQ(ZPCharacterSet::characterSetWithContentsOfFile("nested.builtin"_zp)->count(), 1u);
        for (ZPString *none : {"odd.builtin"_zp, "none.builtin"_zp})
            EXPECT_EQ(ZPCharacterSet::characterSetWithContentsOfFile(none), nullptr);
        auto named = [](ZPString *name) {
            return objc_msgSend<ZPCharacterSet *>(objc_getClass("ZPConcreteMutableCharacterSet"),
                                                  "characterSetWithName:"_sel, name);
        };
        EXPECT_EQ(named("few"_zp)->count(), 2u);
        EXPECT_EQ(named("few"_zp), named("few"_zp));
        EXPECT_TRUE(named("none"_zp)->isEmpty());
        EXPECT_TRUE(named("../CharacterSets/letterCharacterSet"_zp)->isEmpty()) << "a name is no path";
    });
}

TEST(CharacterFiles, setsOfClients) {
    IN_A_ROOT([](const ResourceRoot &root) {
        auto at = [&](const char *name) { return ZPString::stringWithCString((root.folder() / name).c_str()); };
        root.write(
            "mine.dict",
            "{ nsingles = 2; nranges = 1; singmin = 1; singmax = 9; singles = ( 1, 9 ); ranges = ( 0x20, 0x2F ); }");
        root.write("short.bitmap", "\x03");
        root.write("long.bitmap", bitmapOf({7}) + "more");
        root.write("wrong.dict", "{ a = ");
        root.write("other.txt", "abc");
        for (auto [name, count] : {std::pair{"mine.dict", 18u}, {"short.bitmap", 2u}, {"long.bitmap", 1u}}) {
            ZPCharacterSet *set = ZPCharacterSet::characterSetWithContentsOfFile(at(name));
            EXPECT_EQ(set->count(), count) << name;
            EXPECT_FALSE(set->isMutable()) << name;
        }
        for (const char *name : {"wrong.dict", "other.txt", "missing.bitmap", "missing.dict"}) {
            EXPECT_EQ(ZPCharacterSet::characterSetWithContentsOfFile(at(name)), nullptr) << name;
            ZPCharacterSet *empty = ZPMutableCharacterSet::alloc()->initWithContentsOfFile(at(name))->autorelease();
            EXPECT_TRUE(empty->isEmpty() && empty->isMutable()) << name;
        }
        EXPECT_EQ(ZPCharacterSet::characterSetWithContentsOfFile(nullptr), nullptr);
    });
}

TEST(CharacterFiles, manyThreadsAskFirst) {
    IN_A_ROOT([](const ResourceRoot &) {
        unsetenv("CORVID_ROOT");
        std::atomic<unsigned> wrong{0}, ready{0};
        onThreads(8, [&](int t) {
            ++ready;
            while (ready < 8) {}
            for (int i = 0; i < 12; ++i) {
                auto entry = std::next(standardSets.begin(), (i + t) % 12);
                ZPCharacterSet *set = entry->second();
                wrong += set->characterIsMember(0x4E00) != has(entry->first, "Lo");
                wrong += set->bitmapRepresentation()->length() != 8192;
            }
            wrong += make(u"\u0436")->uppercaseString()->characterAtIndex(0) != 0x416;
        });
        EXPECT_EQ(wrong, 0u);
    });
}
