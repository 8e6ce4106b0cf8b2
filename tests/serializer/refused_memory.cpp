#include <cstdlib>
#include <new>

#include "tests/support.h"

// What the standard library allocates is refused like the blocks of the library.
void* operator new(std::size_t uSize) {
    if (vok::Mem_Probe::Refuses()) throw std::bad_alloc();
    if (void* const p = std::malloc(uSize)) return p;
    throw std::bad_alloc();
}
void operator delete(void* p) noexcept {
    std::free(p);
}
void operator delete(void* p, std::size_t) noexcept {
    std::free(p);
}
