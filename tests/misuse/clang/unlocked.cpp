// SPDX-License-Identifier: MIT
// expect: writing variable 'count' requires holding mutex 'lock'
#include <Bedrock/platform/kernel/Lock.h>
struct Counter {
    mutex lock;
    unsigned count ZP_GUARDED_BY(lock) = 0;
    void right() {
        ZPHolding hold(lock);
        ++count;
    }
    void wrong() { ++count; }
};
int main() {
    Counter counter;
    counter.right();
    counter.wrong();
}
