#include "toolkit/MemoryPool.h"

#include <cstdlib>

namespace velmar::audio
{

// Every block carries a header of one alignment unit ahead of its payload: the pool it belongs to
// (null for the system), its class, and the link of the free list.
struct alignas(64) MemoryPool::Block
{
    MemoryPool* pool;
    int sizeClass;
    Block* next;
};

namespace
{
constexpr std::size_t alignment = 64;
static_assert(sizeof(MemoryPool::Block) == alignment, "the header keeps the payload aligned");

// Initial-exec: the pointer sits in the module's static TLS, so that the first use on a new audio
// thread does not allocate a dynamic TLS block.
thread_local MemoryPool* currentPool __attribute__((tls_model("initial-exec"))) = nullptr;

int sizeClassOf(std::size_t bytes)
{
    int c = 6; // 64 bytes and less share the smallest class
    while ((std::size_t{1} << c) < bytes)
        ++c;
    return c;
}
} // namespace

MemoryPool::~MemoryPool()
{
    for (auto*& list : freeLists)
        while (list != nullptr)
        {
            Block* next = list->next;
            std::free(list);
            list = next;
        }
}

ScopedMemoryPool::ScopedMemoryPool(MemoryPool& pool) noexcept
    : previous(currentPool)
{
    currentPool = &pool;
}

ScopedMemoryPool::~ScopedMemoryPool()
{
    currentPool = previous;
}

void* poolAllocate(std::size_t bytes)
{
    const int c = sizeClassOf(bytes);
    if (c >= MemoryPool::classCount)
        throw std::bad_alloc();
    MemoryPool* pool = currentPool;
    MemoryPool::Block* block = nullptr;
    if (pool != nullptr && pool->freeLists[c] != nullptr)
    {
        block = pool->freeLists[c];
        pool->freeLists[c] = block->next;
    }
    else
    {
        block =
            static_cast<MemoryPool::Block*>(std::aligned_alloc(alignment, (std::size_t{1} << c) + alignment));
        if (block == nullptr)
            throw std::bad_alloc();
        block->pool = pool;
        block->sizeClass = c;
        if (pool != nullptr)
            ++pool->fromSystem;
    }
    block->next = nullptr;
    return block + 1;
}

void poolFree(void* p) noexcept
{
    if (p == nullptr)
        return;
    auto* block = static_cast<MemoryPool::Block*>(p) - 1;
    if (MemoryPool* pool = block->pool)
    {
        block->next = pool->freeLists[block->sizeClass];
        pool->freeLists[block->sizeClass] = block;
    }
    else
        std::free(block);
}

} // namespace velmar::audio
