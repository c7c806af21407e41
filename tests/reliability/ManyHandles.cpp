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

void Receive(SGOutputData* block, void* sum)
{
    static_cast<BlockSum*>(sum)->Add(
        block->offset_pos64, block->data_pointer, static_cast<std::size_t>(block->data_size));
}

SGCreateParam SumInto(BlockSum& sum)
{
    SGCreateParam create{};
    create.user = &sum;
    create.sg_datacb = &Receive;
    return create;
}

Take SumOf(BlockSum& sum)
{
    return [&sum](int64_t position, const unsigned char* bytes, std::size_t size)
    { sum.Add(position, bytes, size); };
}

/// The calls that begin and end a recording are named otherwise in a component.
void Begin(Subject& subject)
{
    subject.Header();
}
void End(Subject& subject)
{
    subject.Tailer();
}
void Begin(ComponentSubject& subject)
{
    EXPECT_TRUE(subject.Begin());
}
void End(ComponentSubject& subject)
{
    EXPECT_TRUE(subject.End());
}

/**
 * What ExpectHandlesApart() promises, of @p count subjects that @p make gives; each is to put its
 * output into the sum that it gets.
 */
template <class Make>
void ExpectApart(const std::string& name, std::size_t count, Make make)
{
    const FixedSources sources;
    const auto frames = SmallFrames();
    std::vector<BlockSum> sums(count + 1);
    {
        const auto alone = make(sums[count]);
        Begin(*alone);
        for (const Support::Frame& frame : frames)
            alone->Input(frame);
        End(*alone);
    }
    const uint64_t alone = sums[count].Value();
    ASSERT_NE(alone, BlockSum().Value());

    std::vector<decltype(make(sums[0]))> subjects(count);
    const uint64_t before = ResidentBytes();
    for (std::size_t i = 0; i < count; ++i)
    {
        subjects[i] = make(sums[i]);
        ASSERT_TRUE(subjects[i]->Exists()) << i;
    }
    const uint64_t idle = ResidentBytes() - before;
    for (const auto& subject : subjects)
        Begin(*subject);
    for (const Support::Frame& frame : frames)
    {
        for (const auto& subject : subjects)
            subject->Input(frame);
    }
    const uint64_t active = ResidentBytes() - before;
    for (std::size_t i = 0; i < count; ++i)
    {
        End(*subjects[i]);
        ASSERT_EQ(sums[i].Value(), alone) << i;
    }
    if (!kMemoryCounts) return;

    std::cout << name << ": " << idle / count << " bytes idle, " << active / count
              << " active, of each of " << count << std::endl;
    EXPECT_LT(idle / count, kMostIdle);
    EXPECT_LT(active / count, kMostActive);
}

}  // namespace

void ExpectHandlesApart(uint32_t type, std::size_t count)
{
    ExpectApart(NameOf(type),
                count,
                [type](BlockSum& sum) { return std::make_unique<Subject>(type, SumInto(sum)); });
}

void ExpectComponentsApart(const ComponentKind& kind, std::size_t count)
{
    ExpectApart(kind.Name(),
                count,
                [&kind](BlockSum& sum)
                { return std::make_unique<ComponentSubject>(kind, SumOf(sum)); });
}

}  // namespace Reliability
