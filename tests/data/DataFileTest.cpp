// SPDX-License-Identifier: MIT
// Files: reading, mapping, atomic writing, and what goes wrong with each.
#include "DataForms.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

using namespace data;
namespace fs = std::filesystem;

namespace {

struct DataFile : testing::Test {
    Directory dir;
    unsigned modeOf(const char *name) {
        struct stat s;
        return stat((dir.path / name).c_str(), &s) == 0 ? s.st_mode & 07777 : 0;
    }
    template <class F> int errorOf(F f) {
        errno = 0;
        EXPECT_FALSE(f());
        return errno;
    }
};

ZPData *(*const readers[])(ZPString *) = {
    [](ZPString *p) { return ZPData::dataWithContentsOfFile(p); },
    [](ZPString *p) { return ZPData::dataWithContentsOfMappedFile(p); },
    [](ZPString *p) -> ZPData * { return ZPMutableData::dataWithContentsOfFile(p); },
    [](ZPString *p) -> ZPData * { return ZPMutableData::dataWithContentsOfMappedFile(p); },
};

}  // namespace

TEST_F(DataFile, IsReadAndMapped) {
    for (unsigned length : {0u, 1u, 4096u, 100001u}) {
        std::string bytes(length, 'x');
        if (length) bytes.back() = 'y';
        dir.write("file", bytes);
        for (auto *read : readers) EXPECT_EQ(textOf(read(dir / "file")), bytes);
    }
    ZPMutableData *mapped = ZPMutableData::dataWithContentsOfMappedFile(dir / "file");
    ZPData *other = ZPData::dataWithContentsOfMappedFile(dir / "file");
    ZPMutableData *copy = static_cast<ZPMutableData *>(other->mutableCopy()->autorelease());
    EXPECT_EQ(copy->fileMapper(), other->fileMapper());
    static_cast<char *>(mapped->mutableBytes())[0] = 'm';
    static_cast<char *>(copy->mutableBytes())[1] = 'c';
    mapped->appendBytes_length("more", 4);
    EXPECT_EQ(dir.read("file")[0], 'x') << "the file keeps its bytes";
    EXPECT_EQ(textOf(other).substr(0, 2), "xx");
    EXPECT_EQ(mapped->length(), 100005u);
}

TEST_F(DataFile, ReadingReportsWhyItFails) {
    fs::create_directory(dir.path / "directory");
    dir.write("secret", "x");
    fs::permissions(dir.path / "secret", fs::perms::none);
    ASSERT_EQ(mkfifo((dir.path / "fifo").c_str(), 0600), 0);
    for (auto *read : readers) {
        const std::pair<ZPString *, int> cases[] = {{dir / "missing", ENOENT},
                                                    {dir / std::string(5000, 'x').c_str(), ENOENT},
                                                    {nullptr, ENOENT},
                                                    {dir / "directory", EACCES},
                                                    {dir / "fifo", EACCES}};  // and does not wait for a writer
        for (auto &[path, error] : cases) EXPECT_EQ(errorOf([&, &path = path] { return read(path); }), error);
        EXPECT_TRUE(geteuid() == 0 || errorOf([&] { return read(dir / "secret"); }) == EACCES);
        for (ZPString *none : {"D:\\elsewhere"_zp, ""_zp}) EXPECT_EQ(read(none), nullptr);
    }
    fs::permissions(dir.path / "secret", fs::perms::owner_read | fs::perms::owner_write);
    for (std::uintmax_t size : {0x40000000ull, 0x80000001ull, 0xFFFFFFFFull, 0x140000000ull}) {
        fs::resize_file(dir.path / "secret", size);
        for (auto *read : readers) EXPECT_EQ(errorOf([&] { return read(dir / "secret"); }), EFBIG) << size;
    }
}

TEST_F(DataFile, ThatShrinksMeanwhileGivesWhatThereIs) {
    std::string full(1 << 20, 'f');
    dir.write("file", full);
    std::jthread changer([&](std::stop_token stop) {
        while (!stop.stop_requested())
            for (unsigned size : {100, 1 << 20}) fs::resize_file(dir.path / "file", size);
    });
    for (int i = 0; i < 200; ++i) {
        Pool inner;
        ZPData *d = ZPData::dataWithContentsOfFile(dir / "file");
        ASSERT_TRUE(d && d->length() <= full.size());
        EXPECT_EQ(textOf(d).find_first_not_of(std::string("f\0", 2)), std::string::npos);
    }
}

TEST_F(DataFile, IsWrittenAtomicallyAndNot) {
    mode_t mask = umask(022);
    for (BOOL atomically : {YES, NO}) {
        const char *name = atomically ? "atomic" : "plain";
        EXPECT_TRUE(make("first")->writeToFile_atomically(dir / name, atomically));
        EXPECT_EQ(modeOf(name), 0644u);
        fs::permissions(dir.path / name, fs::perms(0640));
        EXPECT_TRUE(make("2nd")->writeToFile_atomically(dir / name, atomically));
        EXPECT_EQ(dir.read(name), "2nd");
        EXPECT_EQ(modeOf(name), 0640u) << "an existing file keeps its mode";
        EXPECT_TRUE(ZPData::data()->writeToFile_atomically(dir / name, atomically));
        EXPECT_EQ(dir.read(name), "");
        EXPECT_FALSE(make("x")->writeToFile_atomically(dir / "missing/file", atomically));
        EXPECT_FALSE(make("x")->writeToFile_atomically(""_zp, atomically));
        fs::create_directories(dir.path / "directory/full");
        struct stat before, after;
        stat((dir.path / "directory").c_str(), &before);
        EXPECT_FALSE(make("x")->writeToFile_atomically(dir / "directory", atomically));
        stat((dir.path / "directory").c_str(), &after);
        EXPECT_EQ(before.st_ctim.tv_nsec, after.st_ctim.tv_nsec) << "its mode is left alone";
    }
    umask(mask);
    EXPECT_EQ(dir.count(), 3u) << "no temporary file stays";
    inEveryForm("bytes in every form", [&](ZPData *d) {
        EXPECT_TRUE(d->writeToFile_atomically(dir / "form", YES));
        EXPECT_EQ(dir.read("form"), "bytes in every form");
    });
    EXPECT_TRUE("text"_zp->dataUsingEncoding(ZPUTF8StringEncoding)->writeToFile_atomically(dir / "caf\xC3\xA9", YES));
    EXPECT_EQ(dir.read("caf\xC3\xA9"), "text");
}

TEST_F(DataFile, ReadersNeverSeeHalfAnAtomicWrite) {
    std::string a(300000, 'a'), b(200000, 'b');
    make(a)->writeToFile_atomically(dir / "file", YES);
    std::jthread writer([&](std::stop_token stop) {
        for (int i = 0; !stop.stop_requested(); ++i) {
            Pool inner;
            make(i % 2 ? a : b)->writeToFile_atomically(dir / "file", YES);
        }
    });
    for (int i = 0; i < 100; ++i) {
        std::string text = dir.read("file");
        ASSERT_TRUE(text == a || text == b);
    }
}

TEST_F(DataFile, GetsAnUnusedTemporaryName) {
    char path[600];
    ZPPathFromHostPath(dir.path.c_str(), path, 500);
    std::string head = path;
    auto make83 = [&] {
        int file;
        path[head.size()] = 0;
        EXPECT_EQ(_ZPmkstemp83(path, "prefix", &file), 0);
        EXPECT_GT(fcntl(file, F_GETFD) & FD_CLOEXEC, 0);
        close(file);
        return std::string(path + head.size() + 1);
    };
    std::string first = make83(), second = make83();
    EXPECT_EQ(first.substr(0, 4), "pref");
    EXPECT_EQ(first.size(), 12u);
    EXPECT_EQ(first[8], '.');
    EXPECT_EQ(modeOf(first.c_str()), 0600u);
    EXPECT_NE(first, second);
    // The next name is taken: the one after it is used.
    char next[16];
    std::snprintf(next, sizeof next, "%s%03lx", second.substr(0, 9).c_str(),
                  (std::stoul(second.substr(9), nullptr, 16) + 1) % 4096);
    dir.write(next, "taken");
    EXPECT_NE(make83(), next);
    EXPECT_EQ(dir.read(next), "taken");
    int file;
    char nowhere[64] = "C:\\no-such-directory-here";
    EXPECT_EQ(_ZPmkstemp83(nowhere, "x", &file), -1);
}

TEST_F(DataFile, MapperGivesViewsWithinItsLength) {
    ZPFileMapper *mapper = ZPFileMapper::emptyFileMapperWithLength(10000);
    EXPECT_EQ(mapper->newReadOnlyMappingOfLength(0), nullptr);
    EXPECT_EQ(mapper->newReadWriteMappingOfLength(10001), nullptr);
    auto *a = static_cast<char *>(mapper->newReadWriteMappingOfLength(10000));
    auto *b = static_cast<const char *>(mapper->newReadOnlyMappingOfLength(5000));
    a[1] = 'a';
    EXPECT_EQ(b[1], 'a');
    EXPECT_TRUE(mapper->copyMapping_length(a, 10000));
    a[1] = 'z';
    EXPECT_EQ(b[1], 'a') << "from then on the view is private";
    mapper->removeMapping_length(a, 10000);
    mapper->removeMapping_length(const_cast<char *>(b), 5000);
    dir.write("file", "five!");
    ZPFileMapper *file = ZPFileMapper::fileMapperForPath(dir / "file");
    EXPECT_EQ(file->length(), 5u);
    EXPECT_EQ(file->newReadWriteMappingOfLength(5), nullptr) << "the file is open for reading";
    int handle = open((dir.path / "file").c_str(), O_RDONLY);
    EXPECT_EQ(ZPFileMapper::alloc()->initWithNativeFileHandle_length_releaseHandle(handle, 6, NO), nullptr)
        << "no view past the end";
    close(handle);
    EXPECT_EQ(objc_msgSend<id>(ZPFileMapper::alloc(), "init"_sel), nullptr);
}
