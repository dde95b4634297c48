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

/// A check that runs with resource files of its own.
inline std::function<void()> rooted(std::function<void(const ResourceRoot &)> check) {
    return [=] { check(ResourceRoot()); };
}

#define IN_A_ROOT(...) IN_A_PROCESS(strings::rooted(__VA_ARGS__))

inline unsigned countOf(const std::string &text, const std::string &piece) {
    unsigned n = 0;
    for (std::size_t at = text.find(piece); at != std::string::npos; at = text.find(piece, at + 1)) ++n;
    return n;
}

}  // namespace strings
