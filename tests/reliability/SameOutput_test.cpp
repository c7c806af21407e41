// Output never depends on what memory held before: runs whose allocators fill fresh memory with
// different bytes give the same blocks.
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include "reliability/BlockLog.h"
#include "reliability/FixedSources.h"
#include "reliability/Subject.h"

namespace
{

/// What fresh memory of either allocator holds.
unsigned char s_pattern = 0;

void* Filled(std::size_t size) noexcept
{
    void* const memory = std::malloc(size != 0 ? size : 1);
    if (memory != nullptr) std::memset(memory, s_pattern, size);
    return memory;
}

void* FilledOrThrow(std::size_t size)
{
    void* const memory = Filled(size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

}  // namespace

void* operator new(std::size_t size)
{
    return FilledOrThrow(size);
}

void* operator new[](std::size_t size)
{
    return FilledOrThrow(size);
}

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept
{
    return Filled(size);
}

void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept
{
    return Filled(size);
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

namespace Reliability
{
namespace
{

using namespace Orbel::Wrapton;

void* FilledForCaller(int size)
{
    return Filled(static_cast<std::size_t>(size));
}

void GiveBack(void* memory, int /*size*/)
{
    std::free(memory);
}

/// Two recordings on one handle, with memory that holds @p pattern.
BlockLog Record(uint32_t type, unsigned char pattern)
{
    s_pattern = pattern;
    const FixedSources sources;
    BlockLog log;
    SGCreateParam create = LogTo(log);
    create.sg_malloc = &FilledForCaller;
    create.sg_free = &GiveBack;
    Subject subject(type, create);
    for (int recording = 0; recording < 2; ++recording)
    {
        subject.Header();
        for (const Support::Frame& frame : Script())
        {
            subject.Input(frame);
        }
        subject.Backup();
        subject.Tailer();
    }
    return log;
}

class SameOutput : public ::testing::TestWithParam<uint32_t>
{
};

INSTANTIATE_TEST_SUITE_P(EveryContainer,
                         SameOutput,
                         ::testing::ValuesIn(kContainers),
                         [](const auto& type) { return NameOf(type.param); });

TEST_P(SameOutput, WhateverFreshMemoryHolds)
{
    const BlockLog zeros = Record(GetParam(), 0x00);
    ASSERT_FALSE(zeros.empty());
    for (const unsigned char pattern :
         {static_cast<unsigned char>(0xA5), static_cast<unsigned char>(0xFF)})
    {
        const BlockLog other = Record(GetParam(), pattern);
        ASSERT_EQ(other.size(), zeros.size());
        for (std::size_t block = 0; block < zeros.size(); ++block)
        {
            ASSERT_EQ(other[block].position, zeros[block].position) << "block " << block;
            ASSERT_TRUE(Support::Same(other[block].bytes, zeros[block].bytes)) << "block " << block;
        }
    }
}

TEST(FreshMemory, HoldsThePattern)
{
    s_pattern = 0x3C;
    const std::unique_ptr<unsigned char[]> bytes(new unsigned char[100]);
    // NOLINTNEXTLINE(clang-analyzer-core.*): that nothing was written to it is the point
    const unsigned char fresh = bytes[50];
    EXPECT_EQ(fresh, 0x3C);
}

}  // namespace
}  // namespace Reliability
