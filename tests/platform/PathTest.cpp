// SPDX-License-Identifier: MIT
// The mapping between the library's paths and the host's.
#include <support/Objects.h>

namespace {

template <auto Map> std::string mapped(const std::string &path, unsigned size = 64) {
    char buffer[65];
    std::fill(buffer, buffer + 65, '#');
    BOOL done = Map(path.c_str(), buffer, size);
    EXPECT_TRUE(done || size == 0 || buffer[0] == 0);
    EXPECT_EQ(buffer[size], '#') << "past the buffer";
    return done ? buffer : "<none>";
}
constexpr auto toHost = mapped<ZPHostPathFromPath>;
constexpr auto fromHost = mapped<ZPPathFromHostPath>;

}  // namespace

TEST(PathMapping, TakesDriveCAndSingleSeparatorsFromTheRoot) {
    for (auto &[path, host] : rows("C:\\home\\me -> /home/me", "c:/home\\me -> /home/me", "/etc/hosts -> /etc/hosts",
                                   "\\etc -> /etc", "C:\\ -> /", "C: -> .", "C:x\\y -> x/y", "a\\..\\b -> a/../b"))
        EXPECT_EQ(toHost(path, 64), host);
    for (const char *none : {"", "D:\\x", "D:", "\\\\server\\share"}) EXPECT_EQ(toHost(none, 64), "<none>") << none;
}

TEST(PathMapping, GoesBack) {
    for (const char *host : {"/", "/home/me", "relative/name", "./c:name", "./~name", "/~name", "/a b/\xC3\xA9"}) {
        std::string own = fromHost(host, 64);
        EXPECT_EQ(toHost(own, 64), host) << own;
    }
    EXPECT_EQ(fromHost("/home", 64), "C:\\home");
    EXPECT_EQ(toHost(fromHost("c:name", 64), 64), "./c:name") << "a relative name is not taken for a drive";
    EXPECT_EQ(fromHost("~name/x", 64), ".\\~name\\x") << "nor for a home directory";
    EXPECT_EQ(fromHost("/a\\b", 64), "<none>");
    EXPECT_EQ(fromHost("", 64), "<none>");
}

TEST(PathMapping, NeverWritesPastTheBuffer) {
    EXPECT_EQ(toHost("/abc", 5), "/abc");
    EXPECT_EQ(toHost("/abc", 4), "<none>");
    EXPECT_EQ(fromHost("/abc", 7), "C:\\abc");
    EXPECT_EQ(fromHost("/abc", 6), "<none>");
    EXPECT_EQ(toHost("/abc", 0), "<none>");
}
