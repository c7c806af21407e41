// Handles on threads of their own, and one handle fed by several.
#include <array>
#include <thread>

#include "golden/mkv/Recording.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;

Bytes Clusters(uint32_t seed)
{
    Recording recording;
    recording.Header();
    for (uint32_t frame = 0; frame < 200; ++frame)
    {
        const std::size_t size = 1 + (frame * 977 + seed * 131) % 40000;
        recording.Input(frame % 25 == 0 ? IFrame(size, frame) : PFrame(size, frame));
    }
    recording.Tailer();
    return recording.Clusters();
}

TEST(MkvThreads, HandlesOnDifferentThreadsDoNotMeet)
{
    std::array<Bytes, 4> results;
    {
        std::vector<std::thread> threads;
        for (uint32_t seed = 0; seed < results.size(); ++seed)
        {
            threads.emplace_back([&results, seed] { results.at(seed) = Clusters(seed); });
        }
        for (std::thread& thread : threads)
            thread.join();
    }
    for (uint32_t seed = 0; seed < results.size(); ++seed)
    {
        EXPECT_TRUE(results.at(seed) == Clusters(seed)) << seed;
    }
}

TEST(MkvThreads, OneHandleTakesFramesFromSeveral)
{
    Counter counter;
    SGCreateParam create = counter.Create();
    void* const handle = SG_CreateHandle(SG_STREAM_TYPE_MKV, &create);
    ASSERT_EQ(SG_CreateHeader(handle, nullptr), SG_ERR_NOERR);
    counter.Forget();
    {
        std::vector<std::thread> threads;
        for (int number = 0; number < 4; ++number)
        {
            threads.emplace_back(
                [handle]
                {
                    Support::Frame frame = IFrame(10);
                    for (int at = 0; at < 500; ++at)
                    {
                        EXPECT_EQ(InputInPlace(handle, frame), SG_ERR_NOERR);
                    }
                });
        }
        for (std::thread& thread : threads)
            thread.join();
    }
    // 2000 blocks of 16 bytes in 80 clusters.
    EXPECT_EQ(counter.end, kFirstCluster + uint64_t{2000} * 16 + 80 * 16);
    EXPECT_EQ(SG_CreateTailer(handle, nullptr), SG_ERR_NOERR);
    EXPECT_EQ(SG_DestroyHandle(handle), SG_ERR_NOERR);
}

}  // namespace
}  // namespace Golden
