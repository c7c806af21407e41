#include "reliability/ManyHandles.h"

#include <iostream>
#include <memory>

#include "reliability/FixedSources.h"
#include "reliability/ProcessMemory.h"

namespace Reliability
{
namespace
{

using namespace Orbel::Wrapton;

/// The most memory of a handle that was created, and of one in the middle of a recording of small
/// frames.
constexpr uint64_t kMostIdle = 128 * 1024;
constexpr uint64_t kMostActive = 256 * 1024;

/// A sum over all blocks, FNV-1a.
struct Sum
{
    uint64_t value = 0xCBF29CE484222325;

    void Add(uint64_t number) { value = (value ^ number) * 0x100000001B3; }

    static void Receive(SGOutputData* block, void* user)
    {
        auto& self = *static_cast<Sum*>(user);
        self.Add(static_cast<uint64_t>(block->offset_pos64));
        for (int32_t i = 0; i < block->data_size; ++i)
        {
            self.Add(block->data_pointer[i]);
        }
    }
};

SGCreateParam SumInto(Sum& sum)
{
    SGCreateParam create{};
    create.user = &sum;
    create.sg_datacb = &Sum::Receive;
    return create;
}

/// A few small frames of all kinds out of the script.
std::vector<Support::Frame> Frames()
{
    const auto& script = Script();
    return {script.begin(), script.begin() + 12};
}

uint64_t Alone(uint32_t type)
{
    Sum sum;
    Subject subject(type, SumInto(sum));
    subject.Header();
    for (const Support::Frame& frame : Frames())
    {
        subject.Input(frame);
    }
    subject.Tailer();
    return sum.value;
}

}  // namespace

void ExpectHandlesApart(uint32_t type, std::size_t count)
{
    const FixedSources sources;
    const uint64_t alone = Alone(type);
    ASSERT_NE(alone, Sum().value);
    const auto frames = Frames();
    std::vector<Sum> sums(count);
    std::vector<std::unique_ptr<Subject>> subjects(count);
    const uint64_t before = ResidentBytes();
    for (std::size_t i = 0; i < count; ++i)
    {
        subjects[i] = std::make_unique<Subject>(type, SumInto(sums[i]));
        ASSERT_TRUE(subjects[i]->Exists()) << i;
    }
    const uint64_t idle = ResidentBytes() - before;
    for (const auto& subject : subjects)
    {
        subject->Header();
    }
    for (const Support::Frame& frame : frames)
    {
        for (const auto& subject : subjects)
        {
            subject->Input(frame);
        }
    }
    const uint64_t active = ResidentBytes() - before;
    for (std::size_t i = 0; i < count; ++i)
    {
        subjects[i]->Tailer();
        ASSERT_EQ(sums[i].value, alone) << i;
    }
    if (!kMemoryCounts) return;

    std::cout << NameOf(type) << ": " << idle / count << " bytes idle, " << active / count
              << " active, of each of " << count << std::endl;
    EXPECT_LT(idle / count, kMostIdle);
    EXPECT_LT(active / count, kMostActive);
}

}  // namespace Reliability
