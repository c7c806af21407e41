// Calls in any order with any attributes: the output stays a chain of whole tags.
#include "golden/flv/Pieces.h"
#include "readers/FlvReader.h"
#include "support/Chance.h"

namespace GoldenFlv
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Chance;

/// Among the bytes, start codes of NAL units are frequent.
Support::Frame AnyFrame(Chance& chance)
{
    Support::Frame frame;
    frame.bytes = chance.BytesOf({0, 0, 0, 1, 1, 0x65, 0x67, 0x68, 0xFF},
                                 chance.OneOf({1, 2, 3, 4, 5, 16, 300, 3000}));
    frame.type = chance.OneOf({1, 1, 1, 2, 2, 0, 3, 7});
    frame.subType = chance.OneOf({0, 0, 1, 1, 2, 8, 9});
    frame.encode = chance.OneOf({2, 2, 4, 7, 16, 16, 1, 26});
    frame.width = chance.OneOf({0, 640, 0xFFFFFFFF});
    frame.rate = chance.OneOf({0, 1, 25, 30, 0xFFFFFFFF});
    frame.sampleRate = chance.OneOf({0, 1, 8000, 44000, 0xFFFFFFFF});
    frame.bits = chance.OneOf({0, 8, 16, 0xFFFFFFFF});
    frame.channels = chance.OneOf({0, 1, 2, 6});
    return frame;
}

TEST(FlvHostile, AnyCallsLeaveWholeTags)
{
    for (uint32_t seed = 1; seed <= 40; ++seed)
    {
        Chance chance(seed);
        Support::AppendingSink sink;
        Support::Recorder recorder(SG_STREAM_TYPE_STREAM_FLV, sink);
        for (int call = 0; call < 150; ++call)
        {
            const uint32_t choice = chance.Below(20);
            if (choice == 0) recorder.Header();
            if (choice == 1) recorder.Tailer();
            if (choice > 1) recorder.Input(AnyFrame(chance));
        }
        ASSERT_FALSE(sink.Image().empty()) << seed;
        const Readers::FlvFile file = Readers::ReadFlv(sink.Image());
        EXPECT_EQ(file.tags.size(), sink.Blocks().size() + 2) << seed;
    }
}

TEST(FlvHostile, AnyCallsOfTheFileVariantAreSafe)
{
    for (uint32_t seed = 1; seed <= 40; ++seed)
    {
        Chance chance(seed);
        Support::ResizingSink sink([&](std::size_t, int32_t size)
                                   { return chance.Below(4) == 0 ? size - 7 : size; });
        Support::Recorder recorder(SG_STREAM_TYPE_FLV, sink);
        for (int call = 0; call < 150; ++call)
        {
            chance.Below(20) == 0 ? recorder.Tailer() : recorder.Input(AnyFrame(chance));
        }
        for (const Support::Block& block : sink.Blocks())
        {
            ASSERT_EQ(block.origin, 1);
            ASSERT_GT(block.size, 0);
        }
    }
}

}  // namespace
}  // namespace GoldenFlv
