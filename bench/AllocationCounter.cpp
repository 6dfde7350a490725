#include "AllocationCounter.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<uint64_t> allocations{0};
std::atomic<uint64_t> releases{0};

void* allocate(std::size_t size)
{
    allocations.fetch_add(1, std::memory_order_relaxed);
    if (void* memory = std::malloc(size == 0 ? 1 : size)) {
        return memory;
    }
    throw std::bad_alloc();
}

void* allocateNoThrow(std::size_t size) noexcept
{
    allocations.fetch_add(1, std::memory_order_relaxed);
    return std::malloc(size == 0 ? 1 : size);
}

void release(void* memory) noexcept
{
    if (memory != nullptr) {
        releases.fetch_add(1, std::memory_order_relaxed);
        std::free(memory);
    }
}

} // namespace

namespace akvo {
namespace bench {

AllocationCount currentAllocationCount()
{
    return AllocationCount{allocations.load(std::memory_order_relaxed),
                           releases.load(std::memory_order_relaxed)};
}

} // namespace bench
} // namespace akvo

void* operator new(std::size_t size)
{
    return allocate(size);
}

void* operator new[](std::size_t size)
{
    return allocate(size);
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return allocateNoThrow(size);
}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
{
    return allocateNoThrow(size);
}

void operator delete(void* memory) noexcept
{
    release(memory);
}

void operator delete[](void* memory) noexcept
{
    release(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    release(memory);
}

void operator delete[](void* memory, std::size_t) noexcept
{
    release(memory);
}

void operator delete(void* memory, const std::nothrow_t&) noexcept
{
    release(memory);
}

void operator delete[](void* memory, const std::nothrow_t&) noexcept
{
    release(memory);
}
