// SPDX-License-Identifier: MIT
// The limits of docs/architecture.md, at the limit and one past it; those of collections, data and nested lists are
// with the tests of these. Where the limit itself would take gigabytes, what is asked for is the room alone. Not here,
// for they touch gigabytes or go to the host: full dictionaries, sets and simple tables, the longest string, the width
// in a string's format, a log event.
#include <support/Objects.h>

#include <pthread.h>
#include <sys/mman.h>

namespace {

ZPString *zp(const std::string &s) { return ZPString::stringWithCString(s.c_str()); }

}  // namespace

TEST(Limits, TextsBeyond32Bits) {
    // A text of 4 GiB and 5 bytes whose pages are all the same.
    constexpr std::size_t part = std::size_t(1) << 24, parts = 256, size = part * parts + 4096;
    int file = memfd_create("text", 0);
    ASSERT_EQ(ftruncate(file, part), 0);
    char *start = static_cast<char *>(
        mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0));
    ASSERT_NE(start, MAP_FAILED);
    for (std::size_t i = 0; i < parts; ++i)
        ASSERT_NE(mmap(start + i * part, part, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_FIXED, file, 0), MAP_FAILED);
    std::memset(start, 'x', part);
    std::memcpy(start + part * parts, "xxxxx", 6);
    std::string_view text(start, part * parts + 5);
    std::function<void()> makers[] = {
        [&] { ZPString::stringWithCString(start); },
        [&] { ZPMutableString::stringWithCString(start); },
        [&] { ZPRef<ZPString> made = ZPAdopt(ZPString::alloc()->initWithCString(start)); },
        [&] { ZPMakeString(text); },
        [&] { ZPMakeString(std::u16string_view(reinterpret_cast<char16_t *>(start), text.size() / 2)); },
    };
    for (auto &make : makers) {
        std::string said = raised(make);
        EXPECT_TRUE(has(said, "ZPMallocException: *** a string of ") && has(said, " characters is too long")) << said;
    }
    munmap(start, size);
    close(file);
}

TEST(Limits, FormatsOfDates) {
    ZPDictionary *locale = ZPDictionary::dictionaryWithObject_forKey("x"_zp, ZPTimeDateFormatString);
    auto shown = [&](const std::string &format) {
        return text(ZPCalendarDate::calendarDate()->descriptionWithCalendarFormat_locale(zp(format), locale));
    };
    for (const char *format : {"%1000d", "%1001d"}) EXPECT_EQ(shown(format).size(), 1000u);
    std::string expansions;
    for (int i = 0; i < 16; ++i) expansions += "%c";
    EXPECT_EQ(shown(expansions), std::string(16, 'x'));
    EXPECT_EQ(shown(expansions + "%c"), std::string(16, 'x') + "?");
}

TEST(Limits, ResourceFiles) {
    // The names of encodings, in a root of the test's own: read at the limit, missing one past it.
    for (unsigned past : {0, 1})
        IN_A_PROCESS([=] {
            Directory root;
            auto folder = root.path / "CorvidLibrary/Frameworks/Bedrock.framework/Resources/English.lproj";
            std::filesystem::create_directories(folder);
            std::string names = "\"ASCII\" = \"plain\"; /*";
            names.resize((16u << 20) - 2 + past, ' ');
            std::ofstream(folder / "EncodingNames.strings", std::ios::binary) << names << "*/";
            setenv("CORVID_ROOT", root.path.c_str(), 1);
            EXPECT_EQ(text(ZPString::localizedNameOfStringEncoding(ZPASCIIStringEncoding)), past ? "ASCII" : "plain");
        });
}

TEST(Limits, ZoneFilesAndNames) {
    // One kind of time, an hour east; its characters fill the file.
    auto file = [](std::size_t size) {
        std::string bytes = "TZif";
        bytes.resize(44);
        auto put = [&](int at, unsigned n) {
            for (int i = 0; i < 4; ++i) bytes[std::size_t(at + i)] = char(n >> (24 - 8 * i));
        };
        put(36, 1);
        put(40, unsigned(size - 50));
        bytes += std::string("\0\0\x0e\x10\0\0XYZ", 9);
        bytes.resize(size);
        return bytes;
    };
    auto check = [&](std::size_t size, std::size_t length, const char *abbreviation, unsigned nameLength) {
        IN_A_PROCESS([=] {
            Directory dir;
            dir.write("zone", file(size));
            std::string name = dir.path / "zone";
            while (name.size() + 2 <= length) name.insert(0, "/.");
            if (name.size() < length) name.insert(0, "/");
            setenv("TZ", (":" + name).c_str(), 1);
            ZPTimeZoneDetail *detail = ZPTimeZone::defaultTimeZone()->timeZoneDetailForDate(ZPDate::date());
            EXPECT_EQ(text(detail->timeZoneAbbreviation()), abbreviation);
            EXPECT_EQ(detail->timeZoneName()->length(), nameLength);
        });
    };
    check(1 << 17, 254, "XYZ", 254);
    check((1 << 17) + 1, 254, "GMT", 3);
    check(100, 255, "XYZ", 255);
    check(100, 256, "XYZ", 3);
}

TEST(Limits, RulesOfAParser) {
    ZPDictionary *grammar = ZPParser::parsedGrammarForString("Nest = '(' Nest ')' | 'x';"_zp);
    auto nested = [&](unsigned rules) {
        ZPRef<ZPParser> parser = ZPAdopt(ZPParser::alloc()->initWithGrammar(grammar));
        parser->setString(zp(std::string(rules - 1, '(') + "x" + std::string(rules - 1, ')')));
        return raised([&] { parser->expect("Nest"_zp); });
    };
    // On a stack that also holds the frames of the address sanitizer.
    std::function<void()> run = [&] {
        ZPAutoreleasePoolScope own;
        EXPECT_EQ(nested(3003), "");
        EXPECT_TRUE(has(nested(3004), "Nesting too deep"));
    };
    pthread_attr_t large;
    pthread_attr_init(&large);
    pthread_attr_setstacksize(&large, 64 << 20);
    pthread_t thread;
    ASSERT_EQ(pthread_create(
                  &thread, &large,
                  [](void *f) -> void * { return (*static_cast<std::function<void()> *>(f))(), nullptr; }, &run),
              0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&large);
}

struct Long {
    char bytes[8];
};
struct Aligned : ZPObject {
    ZP_CLASS(Aligned)
    alignas(16) char _bytes[16];
};
ZP_IMPLEMENT(Aligned);
template <> struct objc_structEncoding<Long> {
    static constexpr auto all = [] {
        std::array<char, 253> a{};
        for (std::size_t i = 0; i < 252; ++i) a[i] = 'c';
        return a;
    }();
    static constexpr const char *text = all.data();
};

TEST(Limits, ClassesAndMethods) {
    EXPECT_EQ(std::strlen(objc_methodTypes<void, Long>()), 255u);
    ZPRef<Aligned> aligned = ZPAdopt(static_cast<Aligned *>(Aligned::new_()));
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(aligned->_bytes) % 16, 0u);
}
