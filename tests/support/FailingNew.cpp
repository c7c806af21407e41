#include "support/FailingNew.h"

#include <cstdlib>
#include <new>

namespace
{

/// Allocations that still succeed; below 0 none is counted.
thread_local long g_left = -1;

void* Allocate(std::size_t size) noexcept
{
    if (g_left >= 0 && g_left-- == 0)
    {
        return nullptr;
    }
    return std::malloc(size == 0 ? 1 : size);
}

}  // namespace

void* operator new(std::size_t size)
{
    void* const memory = Allocate(size);
    if (memory == nullptr)
    {
        throw std::bad_alloc();
    }
    return memory;
}

void* operator new[](std::size_t size)
{
    return operator new(size);
}

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept
{
    return Allocate(size);
}

void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept
{
    return Allocate(size);
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}
void operator delete[](void* memory) noexcept
{
    std::free(memory);
}
void operator delete(void* memory, std::size_t /*size*/) noexcept
{
    std::free(memory);
}
void operator delete[](void* memory, std::size_t /*size*/) noexcept
{
    std::free(memory);
}
void operator delete(void* memory, const std::nothrow_t& /*tag*/) noexcept
{
    std::free(memory);
}
void operator delete[](void* memory, const std::nothrow_t& /*tag*/) noexcept
{
    std::free(memory);
}

namespace Support
{

Shortage::Shortage(long& left) : m_left(left)
{
    g_left = left;
}

Shortage::~Shortage()
{
    m_left = g_left;
    g_left = -1;
}

Plenty::Plenty() : m_left(g_left)
{
    g_left = -1;
}

Plenty::~Plenty()
{
    g_left = m_left;
}

}  // namespace Support
