// SPDX-License-Identifier: Apache-2.0
// malloc and its kin for the program and all its libraries: glibc's, of which it is counted who
// asked. What they cost does not depend on what was freed before: blocks too large for glibc's
// caches for each thread, which otherwise are looked for in lists, cut and joined, are kept in
// lists by size here. Without that a case would cost up to 3 % more or less by what ran before it.
#include "allocations.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstddef>
#include <cstring>

#include <dlfcn.h>
#include <execinfo.h>
#include <malloc.h>

#include <valgrind/valgrind.h>

// glibc's own.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void __libc_free(void* memory);
}

namespace
{

std::atomic<bool> gCounting{false};
Allocations gAllocations;
std::atomic<std::int64_t> gBytes{0};
thread_local bool tLooking = false; // who looks at the stack may allocate

bool isOf(void* address, const char* library)
{
    Dl_info info = {};
    return dladdr(address, &info) != 0 && info.dli_fname != nullptr &&
           std::strstr(info.dli_fname, library) != nullptr;
}

/// By the innermost frame that belongs to libasound or to the plugin.
void note(const void* memory) noexcept
{
    if (!gCounting || tLooking)
        return;
    tLooking = true;
    gBytes += static_cast<std::int64_t>(malloc_usable_size(const_cast<void*>(memory)));
    void* frames[64];
    const int depth = backtrace(frames, 64);
    std::uint64_t* counter = &gAllocations.own;
    for (int i = 0; i < depth && counter == &gAllocations.own; ++i) {
        if (isOf(frames[i], "libasound.so"))
            counter = &gAllocations.libasound;
        else if (isOf(frames[i], "ctl_kepvirtual"))
            counter = &gAllocations.card;
    }
    ++*counter;
    tLooking = false;
}

// --- Large blocks: four sizes for each power of two. A thread keeps what it freed.

constexpr std::size_t kLargestOfGlibc = 1032; // of its caches; more cannot be set

struct Block {
    Block* next;
};
thread_local constinit Block* tFreed[4 * 64] = {};

/// The rank of the largest of the sizes that is not above this one.
std::size_t rankBelow(std::size_t size)
{
    const auto width = static_cast<unsigned int>(std::bit_width(size)) - 3;
    return 4 * width + ((size >> width) & 3);
}

std::size_t sizeOf(std::size_t rank)
{
    return (4 + rank % 4) << (rank / 4);
}

/// Null when none was freed.
void* takeFreed(std::size_t rank)
{
    Block* block = tFreed[rank];
    if (block != nullptr)
        tFreed[rank] = block->next;
    return block;
}

void* allocate(std::size_t size)
{
    if (size <= kLargestOfGlibc)
        return __libc_malloc(size);
    const std::size_t rank = rankBelow(size - 1) + 1;
    void* freed = takeFreed(rank);
    return freed != nullptr ? freed : __libc_malloc(sizeOf(rank));
}

void release(void* memory)
{
    const std::size_t size = malloc_usable_size(memory);
    if (size <= kLargestOfGlibc)
        return __libc_free(memory);
    auto* block = static_cast<Block*>(memory);
    Block*& freed = tFreed[rankBelow(size)];
    block->next = freed;
    freed = block;
}

} // namespace

void beginCountingAllocations() noexcept
{
    gAllocations = {};
    gBytes = 0;
    gCounting = RUNNING_ON_VALGRIND == 0;
}

Allocations endCountingAllocations() noexcept
{
    gCounting = false;
    gAllocations.bytesKept = gBytes;
    return gAllocations;
}

extern "C" void* malloc(std::size_t size)
{
    void* memory = allocate(size);
    note(memory);
    return memory;
}

extern "C" void* calloc(std::size_t count, std::size_t size)
{
    std::size_t bytes = 0;
    const bool large = !__builtin_mul_overflow(count, size, &bytes) && bytes > kLargestOfGlibc;
    void* memory = large ? allocate(bytes) : __libc_calloc(count, size);
    if (large && memory != nullptr)
        std::memset(memory, 0, bytes);
    note(memory);
    return memory;
}

extern "C" void free(void* memory)
{
    if (memory == nullptr)
        return;
    if (gCounting && !tLooking)
        gBytes -= static_cast<std::int64_t>(malloc_usable_size(memory));
    release(memory);
}

extern "C" void* realloc(void* memory, std::size_t size)
{
    const std::size_t before = memory != nullptr ? malloc_usable_size(memory) : 0;
    if (size != 0 && size <= before)
        return memory;
    void* larger = malloc(size);
    if (larger != nullptr && before != 0)
        std::memcpy(larger, memory, std::min(before, size));
    free(memory);
    return larger;
}
