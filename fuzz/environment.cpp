// SPDX-License-Identifier: MIT
// The environment: lines of NAME=VALUE for the variables that the library asks for. Whatever they say, there are an
// encoding, a user, places and a zone, and they make sense.
#include "child.h"

#include <sstream>

namespace {

const char *const variables[] = {"LC_ALL",
                                 "LC_CTYPE",
                                 "LANG",
                                 "HOME",
                                 "HOMEDRIVE",
                                 "HOMEPATH",
                                 "USERNAME",
                                 "TMPDIR",
                                 "CORVID_ROOT",
                                 "TZ",
                                 "TZDIR",
                                 "ZPAutoreleaseHighWaterMark",
                                 "ZPAutoreleaseHighWaterResolution"};

void checkEncoding(ZPStringEncoding encoding) {
    const ZPStringEncoding *known = ZPString::availableStringEncodings();
    while (*known && *known != encoding) ++known;
    require(*known);
}

void checkPlace(ZPString *path) {
    require(path->length() && path->stringByStandardizingPath()->isEqualToString(path));
    path->stringByAppendingPathComponent("x"_zp)->stringByExpandingTildeInPath();
}

void check() {
    checkEncoding(_ZPDefaultCStringEncoding());
    checkEncoding(_ZPDefaultFileSystemEncoding());
    require(!std::strcmp(ZPString::stringWithCString("plain text")->cString(), "plain text"));
    ZPString *user = ZPUserName();
    require(!user || (user->length() && ZPUserName() == user));
    if (ZPString *home = ZPHomeDirectory()) {
        checkPlace(home);
        require(home->characterAtIndex(0) != '~' && ZPHomeDirectory() == home);
        require("~"_zp->stringByExpandingTildeInPath()->isEqualToString(home));
    }
    require(ZPTemporaryDirectory());
    checkPlace(ZPTemporaryDirectory());
    require(ZPTemporaryDirectory()->isAbsolutePath());
    checkPlace(ZPLodestarRootDirectory());
    require(ZPStandardLibraryPaths()->count() == 3 && ZPStandardApplicationPaths()->count() == 6);
    require(ZPCharacterSet::letterCharacterSet()->characterIsMember('a') && "\xC3\x84"_zp->length() != 0);
    require(ZPCalendarDate::calendarDate()->description()->length() >= 25);
    ZPAutoreleasePoolScope pool;
    for (int i = 0; i < 100; ++i) ZPObject::new_()->autorelease();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size > 1 << 16) return 0;
    std::istringstream lines(std::string(reinterpret_cast<const char *>(data), size));
    std::vector<std::pair<const char *, std::string>> settings;
    for (std::string line; std::getline(lines, line);) {
        std::size_t equals = line.find('=');
        for (const char *name : variables)
            if (equals != line.npos && line.compare(0, equals, name) == 0)
                settings.emplace_back(name, line.substr(equals + 1));
    }
    runInChild([&] {
        for (const char *name : variables) unsetenv(name);
        for (auto &[name, value] : settings) setenv(name, value.c_str(), 1);
        check();
    });
    return 0;
}
