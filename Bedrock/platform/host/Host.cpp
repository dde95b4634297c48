// SPDX-License-Identifier: MIT
// What the host says of itself: process, user, locale, folders, resources; and what it is told.
#include <Bedrock/platform/host/Host.h>
#include <Bedrock/platform/ASCII.h>
#include <Bedrock/platform/ZPMessage.h>
#include <Bedrock/platform/host/Files.h>
#include <Bedrock/platform/ZPPath.h>
#include <Bedrock/platform/kernel/MakeOnce.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dlfcn.h>
#include <execinfo.h>
#include <fcntl.h>
#include <langinfo.h>
#include <link.h>
#include <locale.h>
#include <pwd.h>
#include <string>
#include <syslog.h>
#include <unistd.h>
#include <vector>
#include <sys/random.h>

const char *ZPHostProcessName() { return program_invocation_short_name ? program_invocation_short_name : ""; }

int ZPHostProcessNumber() { return getpid(); }

BOOL ZPHostIsTraced() {
    int file = open("/proc/self/status", O_RDONLY | O_CLOEXEC);
    if (file < 0) return NO;
    char text[2048];
    ssize_t length = read(file, text, sizeof text - 1);
    close(file);
    if (length <= 0) return NO;
    text[length] = 0;
    const char *line = std::strstr(text, "TracerPid:");
    return line && std::atoi(line + 10) != 0 ? YES : NO;
}

unsigned ZPHostRealMemory() {
    unsigned long long bytes = static_cast<unsigned long long>(sysconf(_SC_PHYS_PAGES)) * sysconf(_SC_PAGESIZE);
    return bytes > 0xFFFFFFFFull ? 0xFFFFFFFFu : static_cast<unsigned>(bytes);
}

BOOL ZPHostWriteStandardError(const char *bytes, std::size_t length) {
    while (length) {
        ssize_t written = write(STDERR_FILENO, bytes, length);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return NO;
        bytes += written;
        length -= written;
    }
    return YES;
}

void ZPHostReportEvent(const char *text, std::size_t length) {
    syslog(LOG_USER | LOG_ERR, "%s[%d] %.*s", ZPHostProcessName(), getpid(), static_cast<int>(length), text);
}

int ZPHostCallStack(void **addresses, int capacity) { return backtrace(addresses, capacity); }

// The name of the character set of the user's locale: what the C library says of it, and of a locale that is not
// installed what stands behind the dot. Empty when there is none.
static std::string characterSetOfLocale() {
    if (locale_t locale = newlocale(LC_CTYPE_MASK, "", nullptr)) {
        std::string set = nl_langinfo_l(CODESET, locale);
        freelocale(locale);
        return set;
    }
    const char *locale = nullptr;
    for (const char *name : {"LC_ALL", "LC_CTYPE", "LANG"})
        if ((locale = std::getenv(name)) && *locale) break;
    const char *set = locale ? std::strchr(locale, '.') : nullptr;
    return set ? std::string(set + 1, std::strcspn(set + 1, "@")) : "";
}

unsigned ZPHostCodePage() {
    // Letters and digits alone: the names are spelt in many ways.
    std::string name;
    for (char c : characterSetOfLocale())
        if (_ZPIsDigit(c) || _ZPIsLetter(c)) name += _ZPInSmallLetters(c);
    for (const char *maker : {"microsoft", "windows", "cp"})
        if (name.compare(0, std::strlen(maker), maker) == 0) name.erase(0, std::strlen(maker));
    static const struct {
        const char *name;
        unsigned page;
    } pages[] = {
        {"1250", 1250},  {"1251", 1251},      {"1252", 1252},    {"1253", 1253},      {"1254", 1254},
        {"sjis", 932},   {"shiftjis", 932},   {"932", 932},      {"31j", 932},        {"eucjp", 51932},
        {"ujis", 51932}, {"iso88591", 28591}, {"latin1", 28591}, {"iso88592", 28592}, {"latin2", 28592},
    };
    for (auto &p : pages)
        if (name == p.name) return p.page;
    return 65001;
}

const char *ZPRootDirectory() {
    static const std::string *root;
    auto find = []() -> std::string {
        const char *named = std::getenv("CORVID_ROOT");
        char mapped[4096];
        std::string path = named && ZPHostPathFromPath(named, mapped, sizeof mapped) ? mapped : "";
        Dl_info library;
        if (path.empty() && dladdr(reinterpret_cast<void *>(&ZPRootDirectory), &library) && library.dli_fname) {
            char *real = realpath(library.dli_fname, nullptr);
            path = real ? real : library.dli_fname;
            std::free(real);
            // The library lies in a directory beside share/bedrock, or one below (lib/<architecture>).
            for (int up = 0; up < 3; ++up) {
                path.erase(path.find_last_of('/') == std::string::npos ? 0 : path.find_last_of('/'));
                if (up && access((path + "/share/bedrock").c_str(), F_OK) == 0) return path + "/share/bedrock";
            }
            path.clear();
        }
        while (path.size() > 1 && path.back() == '/') path.pop_back();
        return path;
    };
    return ZPMakeOnce(root, [&] { return new const std::string(find()); })->c_str();
}

BOOL ZPHostResource::read(const char *name) {
    constexpr unsigned long long mostBytes = 16 << 20;
    std::string path = std::string(ZPRootDirectory()) + "/CorvidLibrary/Frameworks/Bedrock.framework/Resources/" + name;
    int file = ZPHostOpenFile(path.c_str(), ZPHostOpenToRead, 0);
    if (file < 0) return NO;
    ZPHostStatus status;
    long long got = -1;
    if (ZPHostFileStatus(file, &status) && status.isRegular && status.size <= mostBytes &&
        (bytes = static_cast<unsigned char *>(std::malloc(status.size + 1))))
        got = ZPHostReadAt(file, bytes, status.size, 0);
    ZPHostCloseFile(file);
    if (got < 0) {
        std::free(bytes);
        bytes = nullptr;
        return NO;
    }
    bytes[got] = 0;
    length = static_cast<std::size_t>(got);
    return YES;
}

static BOOL put(const std::string &text, char *buffer, std::size_t size) {
    if (text.empty() || text.size() >= size) return NO;
    std::memcpy(buffer, text.c_str(), text.size() + 1);
    return YES;
}

// The absolute path that a variable holds; empty when it holds none.
static std::string pathInEnvironment(const char *name) {
    const char *value = std::getenv(name);
    return value && *value == '/' ? value : "";
}

BOOL ZPHostUser(const char *name, ZPHostUserFact fact, char *buffer, std::size_t size) {
    if (!name && fact == ZPHostUserHome)
        if (std::string home = pathInEnvironment("HOME"); !home.empty()) return put(home, buffer, size);
    std::vector<char> room(1024);
    passwd entry, *found = nullptr;
    for (;;) {
        int error = name ? getpwnam_r(name, &entry, room.data(), room.size(), &found)
                         : getpwuid_r(geteuid(), &entry, room.data(), room.size(), &found);
        if (error == EINTR) continue;
        if (error != ERANGE || room.size() > 1 << 20) break;
        room.resize(room.size() * 2);
    }
    if (!found) return NO;
    if (fact == ZPHostUserLoginName) return put(entry.pw_name, buffer, size);
    if (fact == ZPHostUserHome) return put(entry.pw_dir && *entry.pw_dir == '/' ? entry.pw_dir : "", buffer, size);
    // The first field of the comment, in which "&" stands for the login name with a capital letter.
    std::string full;
    for (const char *p = entry.pw_gecos ? entry.pw_gecos : ""; *p && *p != ','; ++p) {
        if (*p != '&') full += *p;
        else if (*entry.pw_name) {
            full += _ZPInCapitalLetters(entry.pw_name[0]);
            full += entry.pw_name + 1;
        }
    }
    return put(full, buffer, size);
}

BOOL ZPHostTemporaryDirectory(char *buffer, std::size_t size) {
    std::string path = pathInEnvironment("TMPDIR");
    return put(path.empty() ? "/tmp" : path, buffer, size);
}

void ZPHostCrash() { std::abort(); }

static link_map *libraryOf(const void *address) {
    dl_find_object found;
    return _dl_find_object(const_cast<void *>(address), &found) ? nullptr : found.dlfo_link_map;
}

void ZPHostKeepLibrary(const void *address) {
    // A library's classes come one after another; this library itself is linked to stay.
    static link_map *last;
    link_map *library = libraryOf(address);
    if (!library || __atomic_exchange_n(&last, library, __ATOMIC_RELAXED) == library) return;
    if (library != libraryOf(reinterpret_cast<const void *>(&ZPHostKeepLibrary)) && *library->l_name)
        dlopen(library->l_name, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
}

void ZPHostRandomBytes(void *bytes, unsigned length) {
    for (unsigned done = 0; done < length;) {
        ssize_t n = getrandom(static_cast<char *>(bytes) + done, length - done, 0);
        if (n > 0) done += unsigned(n);
        else if (errno != EINTR) objc_fatal("the host gives no random bytes");
    }
}
