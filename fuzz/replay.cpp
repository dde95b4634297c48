// SPDX-License-Identifier: MIT
// Runs a fuzz target without a fuzzer: over every file of the folders it is given, and over a fixed number of
// mutations of each, always the same ones. usage: replay MUTATIONS FOLDER...
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

namespace {

using Bytes = std::vector<std::uint8_t>;

const Bytes *running;

// What failed, for a file of fuzz/found.
void show(int signal) {
    std::fprintf(stderr, "the input, in hexadecimal: ");
    for (std::uint8_t byte : *running) std::fprintf(stderr, "%02x", byte);
    std::fprintf(stderr, "\n");
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

void run(const Bytes &bytes) {
    running = &bytes;
    // A block of exactly this size, so that a sanitizer sees a read past its end.
    std::uint8_t *copy = static_cast<std::uint8_t *>(std::malloc(bytes.size() ? bytes.size() : 1));
    std::copy(bytes.begin(), bytes.end(), copy);
    LLVMFuzzerTestOneInput(copy, bytes.size());
    std::free(copy);
}

Bytes mutated(Bytes bytes, std::mt19937 &random) {
    for (unsigned changes = 1 + random() % 4; changes; --changes) {
        std::size_t at = bytes.empty() ? 0 : random() % bytes.size();
        switch (random() % 5) {
        case 0:
            if (!bytes.empty()) bytes[at] ^= std::uint8_t(1u << random() % 8);
            break;
        case 1:
            if (!bytes.empty()) bytes[at] = std::uint8_t(random());
            break;
        case 2: bytes.insert(bytes.begin() + at, std::uint8_t(random())); break;
        case 3:
            if (!bytes.empty()) bytes.resize(at);
            break;
        default:
            if (!bytes.empty()) {
                Bytes piece(bytes.begin() + at,
                            bytes.begin() + at + std::min<std::size_t>(bytes.size() - at, 1 + random() % 16));
                bytes.insert(bytes.begin() + random() % bytes.size(), piece.begin(), piece.end());
            }
        }
    }
    return bytes;
}

}  // namespace

int main(int count, char **arguments) {
    if (count < 3) return std::fprintf(stderr, "usage: %s MUTATIONS FOLDER...\n", arguments[0]), 2;
    for (int signal : {SIGABRT, SIGSEGV, SIGBUS, SIGFPE}) std::signal(signal, show);
    unsigned mutations = unsigned(std::strtoul(arguments[1], nullptr, 10)), files = 0;
    for (int i = 2; i < count; ++i) {
        if (!std::filesystem::is_directory(arguments[i])) continue;
        for (auto &entry : std::filesystem::directory_iterator(arguments[i])) {
            if (!entry.is_regular_file()) continue;
            std::ifstream file(entry.path(), std::ios::binary);
            Bytes bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
            std::printf("%s\n", entry.path().filename().c_str());
            std::fflush(stdout);
            run(bytes);
            std::mt19937 random(unsigned(bytes.size()));
            for (unsigned m = 0; m < mutations; ++m) run(mutated(bytes, random));
            ++files;
        }
    }
    if (!files) return std::fprintf(stderr, "%s: no seeds\n", arguments[0]), 1;
    return 0;
}
