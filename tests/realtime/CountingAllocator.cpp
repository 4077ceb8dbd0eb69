// Replaces the process's allocation functions with counting ones: every operator new and delete
// and every C allocation call lands here, so that a test can count what one thread allocates.

#include "realtime/CountingAllocator.h"

#include <cerrno>
#include <cstdlib>
#include <new>

extern "C"
{
    void* __libc_malloc(std::size_t);
    void* __libc_calloc(std::size_t, std::size_t);
    void* __libc_realloc(void*, std::size_t);
    void* __libc_memalign(std::size_t, std::size_t);
    void __libc_free(void*);
}

namespace tindle::test
{
thread_local bool countAllocations = false;
thread_local long allocationCount = 0;
} // namespace tindle::test

namespace
{
void count()
{
    if (tindle::test::countAllocations)
        ++tindle::test::allocationCount;
}

void* allocateOrThrow(std::size_t size)
{
    count();
    if (void* p = __libc_malloc(size == 0 ? 1 : size))
        return p;
    throw std::bad_alloc();
}

void* allocateAligned(std::size_t size, std::size_t alignment)
{
    count();
    if (void* p = __libc_memalign(alignment, size == 0 ? 1 : size))
        return p;
    throw std::bad_alloc();
}
} // namespace

extern "C"
{
    void* malloc(std::size_t size)
    {
        count();
        return __libc_malloc(size);
    }
    void* calloc(std::size_t n, std::size_t size)
    {
        count();
        return __libc_calloc(n, size);
    }
    void* realloc(void* p, std::size_t size)
    {
        count();
        return __libc_realloc(p, size);
    }
    void* aligned_alloc(std::size_t alignment, std::size_t size)
    {
        count();
        return __libc_memalign(alignment, size);
    }
    void* memalign(std::size_t alignment, std::size_t size)
    {
        count();
        return __libc_memalign(alignment, size);
    }
    int posix_memalign(void** out, std::size_t alignment, std::size_t size)
    {
        count();
        void* p = __libc_memalign(alignment, size);
        if (p == nullptr)
            return ENOMEM;
        *out = p;
        return 0;
    }
    void free(void* p)
    {
        if (p != nullptr)
            count();
        __libc_free(p);
    }
}

void* operator new(std::size_t size)
{
    return allocateOrThrow(size);
}
void* operator new[](std::size_t size)
{
    return allocateOrThrow(size);
}
void* operator new(std::size_t size, std::align_val_t alignment)
{
    return allocateAligned(size, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment)
{
    return allocateAligned(size, static_cast<std::size_t>(alignment));
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    count();
    return __libc_malloc(size == 0 ? 1 : size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
{
    count();
    return __libc_malloc(size == 0 ? 1 : size);
}
void operator delete(void* p) noexcept
{
    free(p);
}
void operator delete[](void* p) noexcept
{
    free(p);
}
void operator delete(void* p, std::size_t) noexcept
{
    free(p);
}
void operator delete[](void* p, std::size_t) noexcept
{
    free(p);
}
void operator delete(void* p, std::align_val_t) noexcept
{
    free(p);
}
void operator delete[](void* p, std::align_val_t) noexcept
{
    free(p);
}
void operator delete(void* p, std::size_t, std::align_val_t) noexcept
{
    free(p);
}
void operator delete[](void* p, std::size_t, std::align_val_t) noexcept
{
    free(p);
}
