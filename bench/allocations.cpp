// SPDX-License-Identifier: Apache-2.0
// The program's own operator new, which all its libraries use, counts.
#include "allocations.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace
{

std::atomic<std::uint64_t> gAllocations{0};

} // namespace

std::uint64_t allocations() noexcept
{
    return gAllocations.load(std::memory_order_relaxed);
}

void* operator new(std::size_t size)
{
    gAllocations.fetch_add(1, std::memory_order_relaxed);
    if (void* memory = std::malloc(size != 0 ? size : 1))
        return memory;
    throw std::bad_alloc{};
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}
