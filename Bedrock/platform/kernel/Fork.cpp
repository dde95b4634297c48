// SPDX-License-Identifier: MIT
// Holding the library's locks over a fork.
#include <Bedrock/platform/kernel/Fork.h>
#include <Bedrock/platform/ZPTypes.h>

extern "C" {
// The linker's names for the section of hooks.
extern ZP_HIDDEN const ZPForkHook *const __start_zp_forks[];
extern ZP_HIDDEN const ZPForkHook *const __stop_zp_forks[];
}

namespace {

template <class F> void each(int order, F visit) {
    for (auto *at = __start_zp_forks; at < __stop_zp_forks; ++at)
        if (int((*at)->order) == order) visit(**at);
}

void hold() {
    for (int order = 0; order <= int(ZPLockOrder::last); ++order)
        each(order, [](const ZPForkHook &hook) { hook.hold(); });
}
void release(bool isChild) {
    for (int order = int(ZPLockOrder::last); order >= 0; --order)
        each(order, [isChild](const ZPForkHook &hook) { hook.release(isChild); });
}

}  // namespace

__attribute__((constructor)) static void watchForks() {
    pthread_atfork(
        &hold, [] { release(false); }, [] { release(true); });
}
