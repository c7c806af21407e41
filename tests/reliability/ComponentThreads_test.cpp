// Components on threads of their own never meet.
#include <array>
#include <thread>

#include "reliability/ComponentSubject.h"
#include "reliability/FixedSources.h"

namespace Reliability
{
namespace
{

using namespace Orbel::Wrapton;

constexpr std::size_t kThreads = 4;

/// One component of every type, frames interleaved; a sum for each, and the last error in between.
std::vector<uint64_t> RecordAll(uint32_t thread)
{
    std::vector<BlockSum> sums(kComponents.size());
    std::vector<std::unique_ptr<ComponentSubject>> subjects;
    for (std::size_t i = 0; i < kComponents.size(); ++i)
    {
        subjects.push_back(std::make_unique<ComponentSubject>(
            kComponents[i],
            [&sum = sums[i]](int64_t position, const unsigned char* bytes, std::size_t size)
            { sum.Add(position, bytes, size); }));
        subjects.back()->Begin();
    }
    for (const Support::Frame& frame : Script())
    {
        for (const auto& subject : subjects)
            subject->Input(frame);
        setLastError(thread);
        for (const auto& subject : subjects)
            subject->Backup();
        EXPECT_EQ(getLastError(), thread) << "another thread's error";
    }
    std::vector<uint64_t> values;
    for (std::size_t i = 0; i < subjects.size(); ++i)
    {
        subjects[i]->End();
        values.push_back(sums[i].Value());
    }
    return values;
}

TEST(ComponentThreads, EveryTypeOnEveryThreadGivesWhatItGivesAlone)
{
    const FixedSources sources;
    const std::vector<uint64_t> alone = RecordAll(1000);
    for (const uint64_t value : alone)
        ASSERT_NE(value, BlockSum().Value());
    std::array<bool, kThreads> same{};
    std::vector<std::thread> threads;
    for (std::size_t thread = 0; thread < kThreads; ++thread)
    {
        threads.emplace_back(
            [&alone, &same, thread]
            { same.at(thread) = RecordAll(static_cast<uint32_t>(2000 + thread)) == alone; });
    }
    for (std::thread& thread : threads)
        thread.join();
    for (std::size_t thread = 0; thread < kThreads; ++thread)
        EXPECT_TRUE(same.at(thread)) << thread;
}

}  // namespace
}  // namespace Reliability
