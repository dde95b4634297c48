// SPDX-License-Identifier: MIT
// For what the library reads once in a process: a part of a fuzz target in a child process. What the child covered of
// the library counts as the parent's, so that the fuzzer learns from it.
#pragma once

#include <Bedrock/Bedrock.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <elf.h>
#include <fstream>
#include <string>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

inline void require(bool holds, const char *file = __builtin_FILE(), int line = __builtin_LINE()) {
    if (holds) return;
    std::fprintf(stderr, "%s:%d: does not hold\n", file, line);
    std::abort();
}

/// A file in memory that is opened by name; what it holds is replaced at will.
class MemoryFile {
    int _file;

  public:
    MemoryFile(const std::uint8_t *bytes, std::size_t size) : _file(memfd_create("input", MFD_CLOEXEC)) {
        require(_file >= 0);
        for (std::size_t done = 0; done < size;) {
            ssize_t n = write(_file, bytes + done, size - done);
            require(n > 0);
            done += std::size_t(n);
        }
    }
    MemoryFile(const MemoryFile &) = delete;
    ~MemoryFile() { close(_file); }
    int number() const { return _file; }
    std::string path() const { return "/proc/self/fd/" + std::to_string(_file); }
};

/// The fuzzer's counters in the library, one for each place of its code; empty without a fuzzer.
struct LibraryCounters {
    unsigned char *first = nullptr;
    std::size_t count = 0;
    unsigned char *shared = nullptr;

    LibraryCounters() {
        Dl_info library;
        if (!dladdr(reinterpret_cast<void *>(&ZPUserName), &library) || !library.dli_fname) return;
        std::ifstream file(library.dli_fname, std::ios::binary | std::ios::ate);
        std::vector<char> bytes(std::size_t(file.tellg()));
        file.seekg(0).read(bytes.data(), std::streamsize(bytes.size()));
        auto *head = reinterpret_cast<const Elf64_Ehdr *>(bytes.data());
        auto *sections = reinterpret_cast<const Elf64_Shdr *>(bytes.data() + head->e_shoff);
        const char *names = bytes.data() + sections[head->e_shstrndx].sh_offset;
        for (unsigned i = 0; i < head->e_shnum; ++i) {
            if (std::strcmp(names + sections[i].sh_name, "__sancov_cntrs")) continue;
            first = static_cast<unsigned char *>(library.dli_fbase) + sections[i].sh_addr;
            count = sections[i].sh_size;
            void *pages = mmap(nullptr, count, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
            require(pages != MAP_FAILED);
            shared = static_cast<unsigned char *>(pages);
        }
    }
};

/// Runs the function in a child process, which must end as it should.
template <class F> void runInChild(F function) {
    static LibraryCounters &counters = *new LibraryCounters;
    pid_t parent = getpid(), child = fork();
    require(child >= 0);
    if (child == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() != parent) _exit(1);
        _ZPSetLogCStringFunction([](const char *, unsigned, BOOL) {});
        {
            ZPAutoreleasePoolScope pool;
            function();
        }
        if (counters.count) std::memcpy(counters.shared, counters.first, counters.count);
        _exit(0);
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0) require(errno == EINTR);
    require(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    for (std::size_t i = 0; i < counters.count; ++i)
        counters.first[i] = std::max(counters.first[i], counters.shared[i]);
}
