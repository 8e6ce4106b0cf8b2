// SPDX-License-Identifier: MIT
// Containers take their memory from here: what a probe refuses to the library fails for them as
// well.
#include <cstdlib>
#include <new>

#include "tests/support.h"

void* operator new(std::size_t uSize, const std::nothrow_t&) noexcept {
    return vok::Mem_Probe::Refuses() ? nullptr : std::malloc(uSize != 0 ? uSize : 1);
}
void* operator new(std::size_t uSize) {
    if (void* const p = operator new(uSize, std::nothrow)) return p;
    throw std::bad_alloc();
}
void operator delete(void* p) noexcept {
    std::free(p);
}
void operator delete(void* p, std::size_t) noexcept {
    std::free(p);
}
void operator delete(void* p, const std::nothrow_t&) noexcept {
    std::free(p);
}
