// SPDX-License-Identifier: MIT
// The limits of docs/architecture.md, at the limit and one past it. Where the limit itself would take gigabytes, what is
// asked for is the room alone.
#include <Bedrock/Bedrock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <unistd.h>

namespace {

/// The name of what is raised, and its reason; empty when nothing is.
std::string raised(const std::function<void()> &work) {
    try {
        work();
        return "";
    } catch (ZPException *e) {
        return std::string(e->name()->cString()) + " " + e->reason()->cString();
    }
}
bool has(const std::string &text, const char *piece) { return text.find(piece) != std::string::npos; }
ZPString *zp(const std::string &s) { return ZPString::stringWithCString(s.c_str()); }

}  // namespace

TEST(Limits, ElementsOfCollections) {
    ZPAutoreleasePoolScope pool;
    constexpr unsigned most = 134217727;
    EXPECT_EQ(raised([] { ZPMutableArray::arrayWithCapacity(most); }), "");
    EXPECT_TRUE(has(raised([] { ZPMutableArray::arrayWithCapacity(most + 1); }), "ZPInvalidArgumentException"));
    EXPECT_TRUE(has(raised([] { ZPMutableDictionary::dictionaryWithCapacity(most + 1); }), "ZPInvalidArgumentException"));
    EXPECT_TRUE(has(raised([] { ZPMutableSet::setWithCapacity(most * 2 + 2); }), "ZPInvalidArgumentException"));
}

TEST(Limits, BytesOfData) {
    ZPAutoreleasePoolScope pool;
    constexpr unsigned most = 1073741823;
    EXPECT_TRUE(has(raised([] { ZPMutableData::dataWithCapacity(most + 1); }), "ZPInvalidArgumentException"));
    EXPECT_TRUE(has(raised([] { ZPMutableData::dataWithLength(most + 1); }), "ZPInvalidArgumentException"));
    ZPMutableData *data = ZPMutableData::dataWithLength(10);
    EXPECT_TRUE(has(raised([&] { data->setLength(most + 1); }), "ZPInvalidArgumentException"));
    EXPECT_TRUE(has(raised([&] { data->increaseLengthBy(most); }), "ZPInvalidArgumentException"));
    EXPECT_EQ(data->length(), 10u);
}

TEST(Limits, NestingOfPropertyLists) {
    ZPAutoreleasePoolScope pool;
    auto nested = [](unsigned levels) { return zp(std::string(levels, '(') + std::string(levels, ')')); };
    EXPECT_EQ(raised([&] { nested(1000)->propertyList(); }), "");
    EXPECT_TRUE(has(raised([&] { nested(1001)->propertyList(); }), "Nesting too deep"));
    ZPMutableArray *outer = ZPMutableArray::array(), *inner = outer;
    for (int i = 1; i < 1000; ++i) {
        ZPMutableArray *next = ZPMutableArray::array();
        inner->addObject(next);
        inner = next;
    }
    EXPECT_EQ(raised([&] { outer->description(); }), "");
    inner->addObject(ZPMutableArray::array());
    EXPECT_TRUE(has(raised([&] { outer->description(); }), "ZPInvalidArgumentException"));
}

TEST(Limits, FormatsOfDates) {
    ZPAutoreleasePoolScope pool;
    ZPCalendarDate *date = ZPCalendarDate::calendarDate();
    auto width = [&](const char *format) { return date->descriptionWithCalendarFormat(zp(format))->length(); };
    EXPECT_EQ(width("%1000d"), 1000u);
    EXPECT_EQ(width("%1001d"), 1000u);
    auto expansions = [&](int count) {
        std::string format;
        for (int i = 0; i < count; ++i) format += "%c";
        return std::string(date->descriptionWithCalendarFormat_locale(zp(format), ZPDictionary::dictionaryWithObject_forKey("x"_zp, ZPTimeDateFormatString))->cString());
    };
    EXPECT_EQ(expansions(16), std::string(16, 'x'));
    EXPECT_EQ(expansions(17), std::string(16, 'x') + "?");
}

TEST(Limits, ResourceFiles) {
    // The names of encodings, in a root of the test's own: read at the limit, missing one past it.
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    auto root = std::filesystem::temp_directory_path() / ("bedrock-limits-" + std::to_string(getpid()));
    auto folder = root / "CorvidLibrary/Frameworks/Bedrock.framework/Resources/English.lproj";
    for (int past : {0, 1}) {
        EXPECT_EXIT(
            {
                std::filesystem::create_directories(folder);
                std::string text = "\"ASCII\" = \"plain\"; /*";
                text.resize((16u << 20) - 2 + unsigned(past), ' ');
                std::ofstream(folder / "EncodingNames.strings", std::ios::binary) << text << "*/";
                setenv("CORVID_ROOT", root.c_str(), 1);
                ZPAutoreleasePoolScope pool;
                std::fprintf(stderr, "<%s>", ZPString::localizedNameOfStringEncoding(ZPASCIIStringEncoding)->cString());
                std::filesystem::remove_all(root);
                std::_Exit(0);
            },
            testing::ExitedWithCode(0), past ? "<ASCII>" : "<plain>");
    }
}
