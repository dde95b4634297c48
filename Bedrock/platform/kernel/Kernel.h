// SPDX-License-Identifier: MIT
// The room of the kernel services: mutexes, conditions with time-outs, and what the library keeps for each thread here;
// in MakeOnce.h what is made by the first who needs it; and, under ZPZone.h, zones and pages (Zones.cpp). Every floor
// may use them. Read this first.
#pragma once

#include <Bedrock/platform/kernel/Lock.h>
#include <Bedrock/platform/ZPTypes.h>

struct condition {
    pthread_cond_t native;
};

extern "C" {
void mutex_init(mutex *m);
void mutex_clear(mutex *m);
void mutex_lock(mutex *m) ZP_ACQUIRES(m);
void mutex_unlock(mutex *m) ZP_RELEASES(m);
void condition_init(condition *c);
void condition_clear(condition *c);
/// Waits until woken or until `seconds` have passed on the monotonic clock; releases the mutex while it
/// waits. Non-zero when woken, zero on time-out. Times beyond what the clock holds wait without limit.
int condition_wait_timeout(condition *c, mutex *m, double seconds) ZP_REQUIRES(m);
void condition_signal(condition *c);
void condition_broadcast(condition *c);

/// Sleeps while `*word` is `value`, until woken or until `seconds` (negative: no limit) have passed. Answers
/// NO on time-out; may wake without cause.
BOOL cthread_wait(unsigned *word, unsigned value, double seconds);
/// Wakes up to `count` threads that sleep on the word.
void cthread_wake(unsigned *word, int count);
/// Tells the processor that the thread waits for another in a short loop.
inline void cthread_relax() {
#if defined(__x86_64__)
    __builtin_ia32_pause();
#elif defined(__aarch64__)
    __asm__ volatile("yield");
#endif
}
/// Seconds since 2001-01-01 00:00:00 UTC.
double cthread_time();

/// Starts a thread that runs the function with the argument and then ends; 0 when none can be started.
unsigned long cthread_fork(void (*function)(void *), void *argument);
/// Lets a started thread free what it holds as soon as it ends. Each thread is detached once.
void cthread_detach(unsigned long thread);
/// Ends the calling thread; the destructors of its frames run. In the main thread the process goes on until
/// its other threads have ended.
[[noreturn]] void cthread_exit(int result);
/// Sleeps for a time on the monotonic clock; the greatest number sleeps without limit.
void cthread_sleep(unsigned milliseconds);

/// The calling thread's handle.
unsigned long cthread_self();
/// The calling thread's number, as the system shows it.
unsigned long cthread_number();
}

/// What the library keeps for each thread; any field may be null. Freed, through the hooks of the
/// subsystems that filled it, when the thread ends.
struct ZPThreadData {
    void *autoreleaseRecord;
    objc_object *thread;
    void *handlers;  ///< innermost handler record
    BOOL willBeCleaned;
};

extern constinit thread_local ZPThreadData _ZPThisThread __attribute__((tls_model("initial-exec")));

/// The calling thread's data. Never null, also on threads that the library did not start.
inline ZPThreadData *ZPCurrentThreadData() { return &_ZPThisThread; }
/// What is cleaned when a thread ends, in this order: what is first may still use what follows.
enum ZPThreadCleaning { ZPCleanThreadObject, ZPCleanAutoreleasePools, ZPCleanFreedBlocks, ZPThreadCleaningCount };
/// Has `hook`, always the same for one of the above, run with the thread's data when the calling thread ends. A hook
/// that itself asks for cleaning is called again.
void ZPCleanUpThread(ZPThreadCleaning what, void (*hook)(ZPThreadData *data));
