#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <utility>
#include <vector>

namespace velmar::audio
{

/** Memory for the audio path without the system allocator in steady state. Blocks come in
    power-of-two size classes, each with a free list; a block that is released goes back to the
    pool it came from, and the next request of its class takes it again. Only a class whose free
    list is empty asks the system, so that once every class has been used as deeply as the audio
    needs, processing neither allocates nor makes a system call.

    A pool serves the thread that made it current (ScopedMemoryPool), and is used by one thread
    at a time: the plug-in's processor makes its pool current while it prepares and processes,
    under its process lock. Everything allocated from a pool must be released before the pool
    goes. Allocates from the system when a class runs dry; releases everything when destroyed. */
class MemoryPool
{
public:
    MemoryPool() = default;
    ~MemoryPool();
    MemoryPool(const MemoryPool&) = delete;
    MemoryPool& operator=(const MemoryPool&) = delete;

    /** Blocks the pool has taken from the system so far, for measurement. */
    std::size_t systemAllocations() const noexcept { return fromSystem; }

    /** The header ahead of every block's payload. */
    struct Block;

private:
    friend void* poolAllocate(std::size_t bytes);
    friend void poolFree(void* p) noexcept;

    static constexpr int classCount = 40;
    Block* freeLists[classCount] = {};
    std::size_t fromSystem = 0;
};

/** Makes a pool the current one of this thread for its lifetime, and restores the one before. */
class ScopedMemoryPool
{
public:
    explicit ScopedMemoryPool(MemoryPool& pool) noexcept;
    ~ScopedMemoryPool();
    ScopedMemoryPool(const ScopedMemoryPool&) = delete;
    ScopedMemoryPool& operator=(const ScopedMemoryPool&) = delete;

private:
    MemoryPool* previous;
};

/** A 64-byte-aligned block of at least bytes, from this thread's current pool, or from the system
    when there is none. Throws std::bad_alloc when neither has memory. */
void* poolAllocate(std::size_t bytes);

/** Releases a block of poolAllocate to where it came from; null is allowed. */
void poolFree(void* p) noexcept;

/** A standard allocator on poolAllocate, so that containers and shared handles of the audio path
    draw from the current pool. */
template <typename T>
struct PoolAllocator
{
    using value_type = T;
    PoolAllocator() noexcept = default;
    template <typename U>
    PoolAllocator(const PoolAllocator<U>&) noexcept
    {
    }
    T* allocate(std::size_t n) { return static_cast<T*>(poolAllocate(n * sizeof(T))); }
    void deallocate(T* p, std::size_t) noexcept { poolFree(p); }
    template <typename U>
    bool operator==(const PoolAllocator<U>&) const noexcept
    {
        return true;
    }
    template <typename U>
    bool operator!=(const PoolAllocator<U>&) const noexcept
    {
        return false;
    }
};

template <typename T>
using PoolVector = std::vector<T, PoolAllocator<T>>;

/** Deletes an object made by makePooled. */
struct PoolDeleter
{
    template <typename T>
    void operator()(T* p) const noexcept
    {
        if (p != nullptr)
        {
            p->~T();
            poolFree(p);
        }
    }
};

template <typename T>
using PoolPtr = std::unique_ptr<T, PoolDeleter>;

/** An object in memory from the current pool. */
template <typename T, typename... Args>
PoolPtr<T> makePooled(Args&&... args)
{
    void* memory = poolAllocate(sizeof(T));
    try
    {
        return PoolPtr<T>(new (memory) T(std::forward<Args>(args)...));
    }
    catch (...)
    {
        poolFree(memory);
        throw;
    }
}

} // namespace velmar::audio
