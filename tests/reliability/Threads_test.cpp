// Handles on threads of their own never meet; the handles that lock may be shared.
#include <atomic>
#include <thread>

#include "reliability/BlockLog.h"
#include "reliability/FixedSources.h"
#include "reliability/Subject.h"

namespace Reliability
{
namespace
{

using namespace Orbel::Wrapton;

constexpr std::size_t kThreads = 6;
constexpr std::size_t kRounds = 2;

/// One handle of every container, frames interleaved.
std::vector<BlockLog> RecordAll()
{
    std::vector<BlockLog> logs(kContainers.size());
    std::vector<std::unique_ptr<Subject>> subjects;
    for (std::size_t i = 0; i < kContainers.size(); ++i)
    {
        subjects.push_back(std::make_unique<Subject>(kContainers.at(i), LogTo(logs[i])));
        subjects.back()->Header();
    }
    for (const Support::Frame& frame : Script())
    {
        for (const auto& subject : subjects)
        {
            subject->Input(frame);
        }
    }
    for (const auto& subject : subjects)
    {
        subject->Backup();
        subject->Tailer();
    }
    return logs;
}

TEST(Threads, EveryContainerOnEveryThreadGivesWhatItGivesAlone)
{
    const FixedSources sources;
    const std::vector<BlockLog> alone = RecordAll();
    std::array<bool, kThreads> same{};
    std::vector<std::thread> threads;
    for (std::size_t thread = 0; thread < kThreads; ++thread)
    {
        threads.emplace_back(
            [&alone, &same, thread]
            {
                bool all = true;
                for (std::size_t round = 0; round < kRounds; ++round)
                {
                    all = RecordAll() == alone && all;
                }
                same.at(thread) = all;
            });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    for (std::size_t thread = 0; thread < kThreads; ++thread)
    {
        EXPECT_TRUE(same.at(thread)) << thread;
    }
}

/// Counts without a lock of its own: the handle's must do.
struct Counter
{
    uint64_t blocks = 0;
    uint64_t end = 0;

    static void Receive(SGOutputData* block, void* user)
    {
        auto& self = *static_cast<Counter*>(user);
        ++self.blocks;
        const auto end =
            static_cast<uint64_t>(block->offset_pos64) + static_cast<uint64_t>(block->data_size);
        self.end = std::max(self.end, end);
    }
};

class SharedHandle : public ::testing::TestWithParam<uint32_t>
{
};

INSTANTIATE_TEST_SUITE_P(ThatLocks,
                         SharedHandle,
                         ::testing::Values(SG_STREAM_TYPE_MP4,
                                           SG_STREAM_TYPE_MOV,
                                           SG_STREAM_TYPE_MP4_NOSEEK,
                                           SG_STREAM_TYPE_MP4_64,
                                           SG_STREAM_TYPE_MOV_64,
                                           SG_STREAM_TYPE_MKV),
                         [](const auto& type) { return NameOf(type.param); });

constexpr uint64_t kFramesPerThread = 300;

TEST_P(SharedHandle, TakesFramesFromSeveralThreadsAndGivesBackupsToAnother)
{
    Counter counter;
    SGCreateParam create{};
    create.user = &counter;
    create.sg_datacb = &Counter::Receive;
    Subject subject(GetParam(), create);
    ASSERT_EQ(subject.Header(), SG_ERR_NOERR);
    const Support::Frame& key = Script().front();
    ASSERT_EQ(subject.Input(key), SG_ERR_NOERR);
    const Counter before = counter;
    ASSERT_EQ(subject.Input(key), SG_ERR_NOERR);
    const uint64_t blocks = counter.blocks - before.blocks;
    ASSERT_GT(blocks, 0u);

    std::atomic<uint64_t> accepted = 0;
    std::vector<std::thread> threads;
    for (std::size_t thread = 0; thread < kThreads; ++thread)
    {
        threads.emplace_back(
            [&]
            {
                for (uint64_t frame = 0; frame < kFramesPerThread; ++frame)
                {
                    if (subject.Input(key) == SG_ERR_NOERR) ++accepted;
                }
            });
    }
    threads.emplace_back(
        [&subject]
        {
            for (int round = 0; round < 50; ++round)
            {
                EXPECT_GE(subject.Backup(), 0);
            }
        });
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    EXPECT_EQ(accepted, kThreads * kFramesPerThread);
    // Every frame gave its blocks, and Matroska some for each cluster as well.
    EXPECT_GE(counter.blocks, before.blocks + (1 + accepted) * blocks);
    const uint64_t stored = (2 + accepted) * key.bytes.size();
    EXPECT_GE(counter.end, stored);
    EXPECT_EQ(subject.Tailer(), SG_ERR_NOERR);
}

}  // namespace
}  // namespace Reliability
