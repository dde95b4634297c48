#include <Bedrock/platform/ZPHost.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <execinfo.h>
#include <fcntl.h>
#include <syslog.h>
#include <unistd.h>

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

void ZPHostTimeStamp(char *text) {
    std::time_t now = std::time(nullptr);
    std::tm fields;
    localtime_r(&now, &fields);
    std::strftime(text, 32, "%b %d %H:%M:%S", &fields);
}

int ZPHostCallStack(void **addresses, int capacity) { return backtrace(addresses, capacity); }

void ZPHostCrash() { std::abort(); }
