#include "CallerMemory.h"

#include <cstdlib>

#include "Require.h"
#include "support/FailingNew.h"

namespace Fuzz
{
namespace
{

constexpr unsigned kFailing = 128;
constexpr unsigned kOnwards = 8;

CallerMemory* s_memory = nullptr;

}  // namespace

CallerMemory::CallerMemory(unsigned plan) : m_plan(plan)
{
    s_memory = this;
}

CallerMemory::~CallerMemory()
{
    Require(m_out.empty(), "all memory is given back");
    s_memory = nullptr;
}

bool CallerMemory::Plenty() const
{
    return m_plan < kFailing;
}

void* CallerMemory::Allocate(int size)
{
    const Support::Plenty account;
    Require(size > 0, "memory is asked for in positive sizes");
    if (s_memory->Fails()) return nullptr;

    void* const memory = std::malloc(static_cast<std::size_t>(size));
    s_memory->m_out.emplace(memory, size);
    return memory;
}

void CallerMemory::Release(void* memory, int size)
{
    const auto found = s_memory->m_out.find(memory);
    Require(found != s_memory->m_out.end(), "nothing is given back that was not given");
    Require(found->second == size, "memory is given back with its size");
    s_memory->m_out.erase(found);
    std::free(memory);
}

bool CallerMemory::Fails()
{
    if (Plenty()) return false;

    const unsigned number = 1 + m_plan % kOnwards;
    ++m_calls;
    return (m_plan & kOnwards) != 0 ? m_calls >= number : m_calls % number == 0;
}

}  // namespace Fuzz
