// SPDX-License-Identifier: MIT
// Mutexes, conditions, threads, the clock, and what a thread leaves behind.
#include <Bedrock/platform/kernel/Kernel.h>

#include <cerrno>
#include <cmath>
#include <ctime>
#include <linux/futex.h>
#include <new>
#include <sys/syscall.h>
#include <unistd.h>

void mutex_init(mutex *m) { new (m) mutex; }
void mutex_clear(mutex *m) { pthread_mutex_destroy(&m->native); }
void mutex_lock(mutex *m) { m->lock(); }
void mutex_unlock(mutex *m) { m->unlock(); }

void condition_init(condition *c) {
    pthread_condattr_t attributes;
    pthread_condattr_init(&attributes);
    pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
    pthread_cond_init(&c->native, &attributes);
    pthread_condattr_destroy(&attributes);
}

void condition_clear(condition *c) { pthread_cond_destroy(&c->native); }

int condition_wait_timeout(condition *c, mutex *m, double seconds) {
    if (!(seconds < 4e9)) return pthread_cond_wait(&c->native, &m->native) == 0;
    timespec limit;
    clock_gettime(CLOCK_MONOTONIC, &limit);
    double whole = std::floor(seconds > 0 ? seconds : 0);
    limit.tv_sec += static_cast<time_t>(whole);
    limit.tv_nsec += static_cast<long>(((seconds > 0 ? seconds : 0) - whole) * 1e9);
    if (limit.tv_nsec >= 1000000000) {
        limit.tv_nsec -= 1000000000;
        ++limit.tv_sec;
    }
    return pthread_cond_timedwait(&c->native, &m->native, &limit) != ETIMEDOUT;
}

void condition_signal(condition *c) { pthread_cond_signal(&c->native); }
void condition_broadcast(condition *c) { pthread_cond_broadcast(&c->native); }

BOOL cthread_wait(unsigned *word, unsigned value, double seconds) {
    timespec limit, *at = nullptr;
    if (seconds >= 0 && seconds < 4e9) {
        limit.tv_sec = static_cast<time_t>(seconds);
        limit.tv_nsec = static_cast<long>((seconds - static_cast<double>(limit.tv_sec)) * 1e9);
        at = &limit;
    }
    return syscall(SYS_futex, word, FUTEX_WAIT_PRIVATE, value, at, nullptr, 0) == 0 || errno != ETIMEDOUT;
}

void cthread_wake(unsigned *word, int count) {
    syscall(SYS_futex, word, FUTEX_WAKE_PRIVATE, count, nullptr, nullptr, 0);
}

double cthread_time() {
    timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    // One conversion: a nanosecond is below what a double of today's seconds holds.
    return static_cast<double>((now.tv_sec - 978307200) * 1000000000LL + now.tv_nsec) * 1e-9;
}

namespace {

struct Start {
    void (*function)(void *);
    void *argument;
};

void *run(void *given) {
    Start start = *static_cast<Start *>(given);
    delete static_cast<Start *>(given);
    start.function(start.argument);
    return nullptr;
}

}  // namespace

unsigned long cthread_fork(void (*function)(void *), void *argument) {
    auto *start = new Start{function, argument};
    pthread_t thread;
    if (pthread_create(&thread, nullptr, run, start) == 0) return static_cast<unsigned long>(thread);
    delete start;
    return 0;
}

void cthread_detach(unsigned long thread) { pthread_detach(static_cast<pthread_t>(thread)); }
void cthread_exit(int result) { pthread_exit(reinterpret_cast<void *>(static_cast<long>(result))); }

void cthread_sleep(unsigned milliseconds) {
    timespec until;
    clock_gettime(CLOCK_MONOTONIC, &until);
    until.tv_sec += milliseconds / 1000;
    until.tv_nsec += milliseconds % 1000 * 1000000L;
    if (until.tv_nsec >= 1000000000) {
        until.tv_nsec -= 1000000000;
        ++until.tv_sec;
    }
    do
        while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &until, nullptr) == EINTR) {}
    while (milliseconds == 0xFFFFFFFF);
}

unsigned long cthread_self() { return static_cast<unsigned long>(pthread_self()); }
unsigned long cthread_number() { return static_cast<unsigned long>(syscall(SYS_gettid)); }

constinit thread_local ZPThreadData _ZPThisThread{};

namespace {

void (*hooks[ZPThreadCleaningCount])(ZPThreadData *);

void cleanUp(void *) {
    _ZPThisThread.willBeCleaned = NO;
    for (auto &hook : hooks)
        if (auto *h = __atomic_load_n(&hook, __ATOMIC_ACQUIRE)) h(&_ZPThisThread);
}

pthread_key_t cleaningKey() {
    static unsigned next;  // the key and 1
    unsigned known = __atomic_load_n(&next, __ATOMIC_ACQUIRE);
    if (known) [[likely]]
        return known - 1;
    pthread_key_t key;
    pthread_key_create(&key, cleanUp);
    if (__atomic_compare_exchange_n(&next, &known, key + 1, false, __ATOMIC_ACQ_REL, __ATOMIC_ACQUIRE)) return key;
    pthread_key_delete(key);
    return known - 1;
}

}  // namespace

void ZPCleanUpThread(ZPThreadCleaning what, void (*hook)(ZPThreadData *)) {
    __atomic_store_n(&hooks[what], hook, __ATOMIC_RELEASE);
    if (_ZPThisThread.willBeCleaned) return;
    pthread_setspecific(cleaningKey(), &_ZPThisThread);
    _ZPThisThread.willBeCleaned = YES;
}
