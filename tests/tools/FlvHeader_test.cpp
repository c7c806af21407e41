#include "FlvHeader.h"

#include "support/Bytes.h"

namespace Orbel::Wrapton::Command
{
namespace
{

using Support::Bytes;
using Support::Hex;
using Support::Join;

/// File header, a script tag with three bytes, and the size of it.
const Bytes kHeader = Join({
    Hex("46 4C 56 01 05 00 00 00 09 00 00 00 00"),  // "FLV" and no tag ahead
    Hex("12 00 00 03 00 00 00 00 00 00 00"),        // script tag
    Hex("AA BB CC"),                                // data
    Hex("00 00 00 0E"),                             // previous tag size
});

TEST(FlvHeaderLength, CountsFileHeaderAndScriptTag)
{
    EXPECT_EQ(FlvHeaderLength(kHeader), kHeader.size());
    EXPECT_EQ(FlvHeaderLength(Join({kHeader, Hex("09 00 00 05")})), kHeader.size());
}

TEST(FlvHeaderLength, TakesAllThreeBytesOfTheTagsSize)
{
    Bytes large = kHeader;
    large[14] = 1;
    large[15] = 2;
    large.resize(13 + 11 + 0x010203 + 4);
    EXPECT_EQ(FlvHeaderLength(large), large.size());
    large.pop_back();
    EXPECT_EQ(FlvHeaderLength(large), 0u);
}

TEST(FlvHeaderLength, IsNothingForOtherBytes)
{
    EXPECT_EQ(FlvHeaderLength({}), 0u);
    for (std::size_t size = 0; size < kHeader.size(); ++size)
    {
        EXPECT_EQ(FlvHeaderLength(Support::Slice(kHeader, 0, size)), 0u) << size;
    }
    for (const std::size_t at : {0u, 1u, 2u, 13u})
    {
        Bytes other = kHeader;
        ++other[at];
        EXPECT_EQ(FlvHeaderLength(other), 0u) << at;
    }
}

}  // namespace
}  // namespace Orbel::Wrapton::Command
