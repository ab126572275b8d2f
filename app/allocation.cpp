// mimalloc is written in C: where memory runs out, its own operator new cannot throw and ends the
// program. These can, so that an item or a file that is too big for memory is told of.

#include <mimalloc.h>
#include <new>

namespace {

void *orThrow(void *memory)
{
    if (!memory) {
        throw std::bad_alloc();
    }
    return memory;
}

} // namespace

void *operator new(std::size_t size)
{
    return orThrow(mi_malloc(size));
}

void *operator new[](std::size_t size)
{
    return orThrow(mi_malloc(size));
}

void *operator new(std::size_t size, std::align_val_t alignment)
{
    return orThrow(mi_malloc_aligned(size, std::size_t(alignment)));
}

void *operator new[](std::size_t size, std::align_val_t alignment)
{
    return orThrow(mi_malloc_aligned(size, std::size_t(alignment)));
}

void operator delete(void *memory) noexcept
{
    mi_free(memory);
}

void operator delete[](void *memory) noexcept
{
    mi_free(memory);
}

void operator delete(void *memory, std::size_t) noexcept
{
    mi_free(memory);
}

void operator delete[](void *memory, std::size_t) noexcept
{
    mi_free(memory);
}

void operator delete(void *memory, std::align_val_t) noexcept
{
    mi_free(memory);
}

void operator delete[](void *memory, std::align_val_t) noexcept
{
    mi_free(memory);
}

void operator delete(void *memory, std::size_t, std::align_val_t) noexcept
{
    mi_free(memory);
}

void operator delete[](void *memory, std::size_t, std::align_val_t) noexcept
{
    mi_free(memory);
}
