#include "tests/support/failing_allocations.h"

#include <new>

using vantrel::test::g_allocationsLeft;

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    if (g_allocationsLeft >= 0 && g_allocationsLeft-- == 0) {
        return nullptr;
    }
    try {
        return ::operator new[](size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
