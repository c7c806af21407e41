// Calls in any order with any attributes: a tailer always leaves a file that can be read.
#include "golden/asf/Pieces.h"
#include "readers/AsfReader.h"
#include "support/Chance.h"

namespace GoldenAsf
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Chance;

/// Among the bytes, start codes of MPEG-4 are frequent.
Support::Frame AnyFrame(Chance& chance)
{
    Support::Frame frame;
    frame.bytes = chance.BytesOf({0, 0, 0, 1, 1, 0xB6, 0x20, 0xFF},
                                 chance.OneOf({1, 2, 3, 4, 5, 100, 2047, 2048, 2049, 9000}));
    frame.type = chance.OneOf({1, 1, 1, 2, 2, 0, 3, 7});
    frame.subType = chance.OneOf({0, 1, 1, 1, 2, 8, 9});
    frame.encode = chance.OneOf({1, 1, 2, 3, 8, 14, 16, 22, 26});
    frame.rate = chance.OneOf({0, 1, 25, 1001, 0xFFFFFFFF});
    frame.sampleRate = chance.OneOf({0, 1, 8000, 44100});
    frame.bits = chance.OneOf({0, 8, 16});
    frame.channels = chance.OneOf({0, 1, 2, 65535});
    return frame;
}

TEST(AsfHostile, ATailerMakesAFileOfAnyCallsAheadOfIt)
{
    int complete = 0;
    for (uint32_t seed = 1; seed <= 40; ++seed)
    {
        Chance chance(seed);
        Recording recording(SG_STREAM_TYPE_ASF);
        for (int call = 0; call < 150; ++call)
        {
            chance.Below(20) == 0 ? recording.Calls().Header()
                                  : recording.Calls().Input(AnyFrame(chance));
        }
        recording.Tailer();
        const Bytes bytes = recording.File();
        if (bytes.empty()) continue;
        const Readers::AsfFile file = Readers::ReadAsf(bytes);
        EXPECT_TRUE(file.hasIndex) << seed;
        EXPECT_FALSE(file.frames.empty()) << seed;
        ++complete;
    }
    EXPECT_GT(complete, 30);
}

TEST(AsfHostile, AnyCallsBetweenTailersAreSafeWithASinkThatTakesLess)
{
    for (uint32_t seed = 1; seed <= 40; ++seed)
    {
        Chance chance(seed);
        Support::ResizingSink sink([&](std::size_t, int32_t size)
                                   { return chance.Below(4) == 0 ? size - 7 : size; });
        Support::Recorder recorder(chance.OneOf({1, 5}), sink);
        for (int call = 0; call < 150; ++call)
        {
            chance.Below(20) == 0 ? recorder.Tailer() : recorder.Input(AnyFrame(chance));
        }
        for (const Support::Block& block : sink.Blocks())
        {
            ASSERT_EQ(block.origin, 0);
            ASSERT_GE(block.position, 0);
        }
    }
}

}  // namespace
}  // namespace GoldenAsf
