// SPDX-License-Identifier: MIT
// An empty C++ program; with an argument it prints its peak memory.
#include <fcntl.h>
#include <unistd.h>

#include <string>

int main(int argc, char **argv) {
    std::string name = argv[0];
    if (argc > 1) {
        char b[4096];
        int f = open("/proc/self/status", O_RDONLY);
        ssize_t n = read(f, b, sizeof b);
        return write(1, b, n) != n;
    }
    return name.empty();
}
