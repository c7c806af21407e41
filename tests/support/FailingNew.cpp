#include "support/FailingNew.h"

#include <cstdlib>
#include <new>

namespace Support
{
namespace
{

struct Plan
{
    bool active = false;
    bool onwards = false;
    std::size_t number = 0;
    std::size_t asked = 0;
};

thread_local Plan t_plan;

void* Allocate(std::size_t size) noexcept
{
    if (t_plan.active)
    {
        ++t_plan.asked;
        const bool fails = t_plan.number != 0 && (t_plan.onwards ? t_plan.asked >= t_plan.number
                                                                 : t_plan.asked == t_plan.number);
        if (fails) return nullptr;
    }
    return std::malloc(size != 0 ? size : 1);
}

void* AllocateOrThrow(std::size_t size)
{
    void* const memory = Allocate(size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

}  // namespace

FailingNew::FailingNew(std::size_t number, bool onwards)
{
    t_plan = {.active = true, .onwards = onwards, .number = number, .asked = 0};
}

FailingNew::~FailingNew()
{
    t_plan.active = false;
}

std::size_t FailingNew::Asked()
{
    return t_plan.asked;
}

Shortage::Shortage(long& left) : m_left(left)
{
    if (left < 0) return;
    t_plan = {
        .active = true, .onwards = false, .number = static_cast<std::size_t>(left) + 1, .asked = 0};
}

Shortage::~Shortage()
{
    if (!t_plan.active) return;
    t_plan.active = false;
    m_left = t_plan.asked < t_plan.number ? m_left - static_cast<long>(t_plan.asked) : -1;
}

Plenty::Plenty() : m_wasActive(t_plan.active)
{
    t_plan.active = false;
}

Plenty::~Plenty()
{
    t_plan.active = m_wasActive;
}

}  // namespace Support

void* operator new(std::size_t size)
{
    return Support::AllocateOrThrow(size);
}

void* operator new[](std::size_t size)
{
    return Support::AllocateOrThrow(size);
}

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept
{
    return Support::Allocate(size);
}

void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept
{
    return Support::Allocate(size);
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
