// SPDX-License-Identifier: MIT
// Processes of their own, with resource files of their own.
#pragma once

#include "StringForms.h"

namespace strings {

/// A directory in which a test's own resource files are looked for, for as long as it lives.
class ResourceRoot {
    Directory _root;

  public:
    ResourceRoot() {
        std::filesystem::create_directories(folder());
        setenv("CORVID_ROOT", _root.path.c_str(), 1);
    }
    std::filesystem::path folder() const {
        return _root.path / "CorvidLibrary/Frameworks/Bedrock.framework/Resources/CharacterSets";
    }
    void write(const std::string &name, const std::string &bytes) const {
        std::ofstream(folder() / name, std::ios::binary) << bytes;
    }
};

/// Ends the process, which has loaded nothing yet, by what a check says.
[[noreturn]] inline void end(std::function<void(const ResourceRoot &)> check) {
    {
        ResourceRoot root;
        Pool pool;
        check(root);
    }
    std::exit(testing::Test::HasFailure());
}

#define IN_A_PROCESS(...)                                                       \
    do {                                                                        \
        GTEST_FLAG_SET(death_test_style, "threadsafe");                         \
        EXPECT_EXIT(strings::end(__VA_ARGS__), testing::ExitedWithCode(0), ""); \
    } while (0)

inline unsigned countOf(const std::string &text, const std::string &piece) {
    unsigned n = 0;
    for (std::size_t at = text.find(piece); at != std::string::npos; at = text.find(piece, at + 1)) ++n;
    return n;
}

}  // namespace strings
