#include "support/Allocators.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

#include <gtest/gtest.h>

namespace Support
{
namespace
{

thread_local AllocatorLog* g_log = nullptr;

}  // namespace

AllocatorLog::AllocatorLog()
{
    if (g_log != nullptr)
    {
        throw std::logic_error("one AllocatorLog at a time");
    }
    g_log = this;
}

AllocatorLog::~AllocatorLog()
{
    g_log = nullptr;
    EXPECT_TRUE(m_live.empty()) << m_live.size() << " pieces of memory were not given back";
    for (const Piece& piece : m_live)
    {
        std::free(piece.memory);
    }
}

void* AllocatorLog::Malloc(int size)
{
    AllocatorLog& log = *g_log;
    EXPECT_GT(size, 0);
    log.m_asked.push_back(size);
    if (log.m_failIn != 0 && --log.m_failIn == 0)
    {
        return nullptr;
    }
    void* memory = std::malloc(static_cast<std::size_t>(size));
    log.m_live.push_back({memory, size});
    return memory;
}

void AllocatorLog::Free(void* memory, int size)
{
    AllocatorLog& log = *g_log;
    log.m_released.push_back(size);
    const auto piece = std::find_if(log.m_live.begin(),
                                    log.m_live.end(),
                                    [memory](const Piece& p) { return p.memory == memory; });
    if (piece == log.m_live.end())
    {
        ADD_FAILURE() << "memory was given back that is not on loan";
        return;
    }
    EXPECT_EQ(piece->size, size) << "memory was given back with another size";
    log.m_live.erase(piece);
    std::free(memory);
}

}  // namespace Support
