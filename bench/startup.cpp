// SPDX-License-Identifier: MIT
// Starts small programs again and again: the median wall time and the peak memory of each, and the ratios.
// usage: startup FOLDER_OF_PROGRAMS
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

static double start(const std::string &path) {
    char *argv[] = {const_cast<char *>(path.c_str()), nullptr};
    auto t0 = std::chrono::steady_clock::now();
    pid_t pid = vfork();
    if (pid == 0) {
        execv(argv[0], argv);
        _exit(127);
    }
    int status;
    waitpid(pid, &status, 0);
    if (status != 0) {
        std::fprintf(stderr, "%s failed\n", path.c_str());
        std::exit(1);
    }
    return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - t0).count();
}

static long peakKiB(const std::string &path) {
    FILE *f = popen((path + " report").c_str(), "r");
    long kib = 0;
    char line[256];
    while (std::fgets(line, sizeof line, f))
        if (!std::strncmp(line, "VmHWM:", 6)) kib = std::atol(line + 6);
    pclose(f);
    return kib;
}

int main(int, char **argv) {
    const char *names[] = {"startup_none", "startup_one"};
    std::vector<double> times[2];
    for (int i = 0; i < 600; ++i)  // in turn, so that both see the same machine
        for (int p = 0; p < 2; ++p) times[p].push_back(start(std::string(argv[1]) + "/" + names[p]));
    double median[2];
    long peak[2];
    for (int p = 0; p < 2; ++p) {
        std::sort(times[p].begin(), times[p].end());
        median[p] = times[p][times[p].size() / 2];
        peak[p] = peakKiB(std::string(argv[1]) + "/" + names[p]);
        std::printf("%-14s median %6.0f us  peak %6ld KiB\n", names[p], median[p], peak[p]);
    }
    std::printf("ratio %.2f, memory above %ld KiB\n", median[1] / median[0], peak[1] - peak[0]);
}
