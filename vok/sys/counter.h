// SPDX-License-Identifier: MIT
// Counters that several threads may hold: what the blocks of memory need of the system, inline.
#ifndef VOK_SYS_COUNTER_H
#define VOK_SYS_COUNTER_H

#include <atomic>

#if defined(__GLIBC__)
// Declared by <sys/single_threaded.h>; repeated here so that no system header leaks out.
extern "C" char __libc_single_threaded;
#endif

namespace vok::sys {

// True while the process has never had a second thread. A false answer is always
// safe; a true one lets counters skip the locked bus cycle.
[[nodiscard]] inline bool IsSingleThreaded() noexcept {
#if defined(__GLIBC__)
    return __libc_single_threaded != 0;
#else
    return false;
#endif
}

// Adds to a counter and returns what it was. While the process has one thread a plain load and
// store do, which saves the locked cycle of a read-modify-write.
template <class T>
inline T FetchAdd(std::atomic<T>& oCounter, T tDelta) noexcept {
    if (IsSingleThreaded()) {
        const T tOld = oCounter.load(std::memory_order_relaxed);
        oCounter.store(static_cast<T>(tOld + tDelta), std::memory_order_relaxed);
        return tOld;
    }
    return oCounter.fetch_add(tDelta, std::memory_order_acq_rel);
}

}  // namespace vok::sys

#endif  // VOK_SYS_COUNTER_H
