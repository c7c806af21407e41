// Threads, each with components of its own. ThreadSanitizer watches over these.
#include <atomic>
#include <thread>

#include "support/Components.h"
#include "support/Streams.h"
#include "support/TemporaryDirectory.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using namespace Support;

TEST(Threads, FindTheFactoriesWhileTheyAreRegistered)
{
    constexpr std::size_t kThreads = 8;
    std::atomic<bool> go = false;
    std::atomic<int> wrong = 0;
    std::vector<IComponentFactory*> found(kThreads);
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < kThreads; ++i)
    {
        threads.emplace_back(
            [&, i]
            {
                while (!go)
                {
                }
                // Half of them only look, and use what they see at once.
                if (i % 2 == 0) initWraptonComponentLibrary();
                while (found[i] == nullptr)
                    found[i] = IComponentFactory::find(kWraptonClsid);
                IComponentBase* const component = found[i]->create("rtp");
                if (dynamic_cast<IWrapton*>(component) == nullptr) ++wrong;
                component->release();
            });
    }
    go = true;
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
    for (IComponentFactory* factory : found)
        EXPECT_EQ(factory, found[0]);
}

/// A recording of every kind of component; what it gave, in one row.
Bytes RecordAll(const std::string& path)
{
    const std::vector<Bytes> units = AccessUnits(Media("slices_320x240_25fps.h264"));
    Bytes all;
    for (const char* type : {"mp4", "mkv", "avi", "flv"})
    {
        const File file = MakeFile(type);
        EXPECT_TRUE(file->open(path.c_str()));
        for (const Bytes& unit : units)
            EXPECT_TRUE(Input(*file, IsIdr(unit) ? H264I(unit) : H264P(unit)));
        EXPECT_TRUE(file->close());
        const Bytes content = ReadFile(path);
        // Times of creation differ; sizes do not.
        Append(all, Msb32(static_cast<uint32_t>(content.size())));
    }
    for (const char* type : {"ps", "ts", "omf", "rtp", "flv"})
    {
        const Stream stream = MakeStream(type);
        stream->setParam("rtp_ssrc", 7);
        PacketBuffer packet(1);
        for (const Bytes& unit : units)
        {
            Frame frame = IsIdr(unit) ? H264I(unit) : H264P(unit);
            EXPECT_TRUE(Input(*stream, frame));
            EXPECT_TRUE(InputEx(*stream, frame, packet));
            Append(all, Msb32(static_cast<uint32_t>(packet.Size())));
            SharedPtr<IWraptonData> block;
            setLastError(static_cast<uint32_t>(all.size()));
            const bool waiting = stream->getPacket(block);
            Append(all, waiting ? Msb32(block->getLen()) : Msb32(getLastError()));
        }
    }
    return all;
}

TEST(Threads, RecordSideBySideWithComponentsOfTheirOwn)
{
    const TemporaryDirectory directory;
    const Bytes alone = RecordAll(directory.Path("alone"));
    std::vector<Bytes> rows(2);
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < rows.size(); ++i)
    {
        threads.emplace_back([&, i] { rows[i] = RecordAll(directory.Path(std::to_string(i))); });
    }
    for (std::thread& thread : threads)
        thread.join();
    for (const Bytes& row : rows)
        EXPECT_TRUE(Same(row, alone));
}

}  // namespace
}  // namespace Golden
