// SPDX-License-Identifier: MIT
// Who the user is, and the directories that programs ask for. What is kept is found without a lock: threads that look
// for it at once find the same, and the first one's stays.
#include <Bedrock/strings/paths/Paths.h>

#include <Bedrock/collections/ZPArray.h>
#include <Bedrock/platform/host/Host.h>
#include <Bedrock/platform/kernel/MakeOnce.h>

#include <cstdlib>

namespace {

constexpr unsigned longestName = 1040, longestHostPath = 4096;

ZPString *userName, *fullUserName, *homeDirectory;

ZPString *copyOf(ZPString *found) { return found->copyWithZone(nullptr); }

// Names of users are bytes of the host as names of files are.
ZPString *textOfHost(const char *bytes) {
    ZPString *text = _ZPStringFromHostBytes(bytes, unsigned(std::strlen(bytes)), _ZPDefaultCStringEncoding());
    return text->length() ? text : nullptr;
}

// What the environment says, then the host. A home that names itself is none.
ZPString *findHome(ZPString *name) {
    bool current = !name || name->isEqual(ZPUserName());
    ZPString *home = nullptr;
    const char *drive = current ? _ZPGetEnvironmentVariable("HOMEDRIVE") : nullptr,
               *path = current ? _ZPGetEnvironmentVariable("HOMEPATH") : nullptr;
    if (drive && path) {
        ZPString *head = ZPPathStore2::pathStoreWithCString(drive), *tail = ZPPathStore2::pathStoreWithCString(path);
        if (head && tail) home = head->stringByAppendingString(tail);
    }
    if (!home || !home->length()) {
        char login[longestName], host[longestHostPath];
        int length = current ? 0 : _ZPHostBytesFromString(name, login, sizeof login - 1, _ZPDefaultCStringEncoding());
        if (length < 0 || (!current && std::memchr(login, 0, unsigned(length)))) return nullptr;
        login[length] = 0;
        home =
            ZPHostUser(current ? nullptr : login, ZPHostUserHome, host, sizeof host) ? _ZPPathFromHost(host) : nullptr;
    }
    return home && home->length() && home->characterAtIndex(0) != '~' ? home->stringByStandardizingPath() : nullptr;
}

// The root joined with each of the paths, behind a directory of the user's home.
ZPArray *standardPaths(ZPString *own, std::initializer_list<ZPString *> shared) {
    ZPMutableArray *paths = ZPMutableArray::arrayWithCapacity(unsigned(shared.size()) + 1);
    paths->addObject(own->stringByExpandingTildeInPath());
    for (ZPString *path : shared) paths->addObject(ZPLodestarRootDirectory()->stringByAppendingPathComponent(path));
    return paths;
}

}  // namespace

const char *_ZPGetEnvironmentVariable(const char *name) { return std::getenv(name); }

ZPString *ZPUserName() {
    return ZPMakeOnce(userName, [] {
        char name[longestName];
        if (ZPHostUser(nullptr, ZPHostUserLoginName, name, sizeof name)) return copyOf(textOfHost(name));
        const char *named = _ZPGetEnvironmentVariable("USERNAME");
        return named ? copyOf(textOfHost(named)) : nullptr;
    });
}

ZPString *ZPFullUserName() {
    return ZPMakeOnce(fullUserName, [] {
        char name[longestName];
        return ZPHostUser(nullptr, ZPHostUserFullName, name, sizeof name) ? copyOf(textOfHost(name)) : nullptr;
    });
}

ZPString *ZPHomeDirectoryForUser(ZPString *name) {
    ZPString *home = findHome(name);
    return name ? home : ZPKeepFirst(homeDirectory, copyOf(home));
}

ZPString *ZPHomeDirectory() {
    return ZPMakeOnce(homeDirectory, [] { return copyOf(findHome(nullptr)); });
}

ZPString *ZPTemporaryDirectory() {
    char host[longestHostPath];
    ZPString *path = ZPHostTemporaryDirectory(host, sizeof host) ? _ZPPathFromHost(host) : nullptr;
    // What the environment names may be too long, or no path of the library's.
    if (!path) path = _ZPPathFromHost("/tmp");
    ZPString *standard = path->stringByStandardizingPath();
    // "/." leaves a drive alone, which is no place.
    return standard->isAbsolutePath() ? standard : standard->stringByAppendingString("\\"_zp);
}

ZPString *ZPLodestarRootDirectory() {
    const char *root = ZPRootDirectory();
    ZPString *path = root && *root ? _ZPPathFromHost(root) : nullptr;
    return path ? path->stringByStandardizingPath() : "/"_zp;
}

ZPString *ZPCorvidRootDirectory() { return ZPLodestarRootDirectory(); }

ZPArray *ZPStandardApplicationPaths() {
    return standardPaths("~/Apps"_zp, {"LocalApps"_zp, "LocalDeveloper/Apps"_zp, "CorvidDeveloper/Apps"_zp,
                                       "CorvidLibrary/Executables"_zp, "CorvidDemos"_zp});
}

ZPArray *ZPStandardLibraryPaths() { return standardPaths("~/Library"_zp, {"LocalLibrary"_zp, "CorvidLibrary"_zp}); }
