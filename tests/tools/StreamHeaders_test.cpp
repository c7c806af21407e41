#include "StreamHeaders.h"

#include "support/Bytes.h"

namespace Orbel::Wrapton::Command
{
namespace
{

using Support::Bytes;
using Support::Hex;
using Support::Join;

const Bytes kSlice = Hex("00 00 01 65 88 84");

TEST(StreamHeaders, PutsTheNewestParameterSetsAheadOfAPictureWithout)
{
    StreamHeaders headers(Codec::kH264);
    headers.Note(Join({Hex("00 00 00 01 67 01 00 00 00 01 68 02"), kSlice}));
    headers.Note(Hex("00 00 01 41 9A"));  // nothing to remember
    headers.Note(Join({Hex("00 00 01 09 F0 00 00 01 67 42 1F 00 00 00 01 68 CE"), kSlice}));

    Bytes picture = kSlice;
    headers.Complete(picture);
    EXPECT_EQ(picture, Join({Hex("00 00 00 01 67 42 1F 00 00 00 01 68 CE"), kSlice}));
}

TEST(StreamHeaders, LeavesAPictureWithParameterSetsAsItIs)
{
    StreamHeaders headers(Codec::kH264);
    headers.Note(Join({Hex("00 00 00 01 67 01 00 00 00 01 68 02"), kSlice}));
    const Bytes whole = Join({Hex("00 00 01 67 05 00 00 01 68 06"), kSlice});
    Bytes picture = whole;
    headers.Complete(picture);
    EXPECT_EQ(picture, whole);
}

TEST(StreamHeaders, RemembersObjectLayersOfMpeg4)
{
    const Bytes layer = Hex("00 00 01 B0 01 00 00 01 20 08");
    const Bytes key = Hex("00 00 01 B3 00 00 00 01 B6 10");
    StreamHeaders headers(Codec::kMpeg4);
    headers.Note(Join({layer, key}));
    headers.Note(Join({Hex("00 00 01 B2 55"), key}));  // user data alone is no header

    Bytes picture = key;
    headers.Complete(picture);
    EXPECT_EQ(picture, Join({layer, key}));
    const Bytes whole = picture;
    headers.Complete(picture);
    EXPECT_EQ(picture, whole);
}

TEST(StreamHeaders, StaysInsideTheBytes)
{
    const Bytes whole = Join({Hex("00 00 00 01 67 42 1F 00 00 00 01 68 CE"), kSlice});
    for (const Codec codec : {Codec::kH264, Codec::kMpeg4, Codec::kMjpeg})
        for (std::size_t size = 0; size <= whole.size(); ++size)
        {
            const Bytes cut = Support::Slice(whole, 0, size);
            StreamHeaders headers(codec);
            headers.Note(cut);
            Bytes picture = cut;
            headers.Complete(picture);
            EXPECT_GE(picture.size(), size);
        }
}

TEST(StreamHeaders, KnowsNoneOfOtherEncodings)
{
    for (const std::optional<Codec> codec : {std::optional(Codec::kMjpeg), std::optional<Codec>()})
    {
        StreamHeaders headers(codec);
        headers.Note(Join({Hex("00 00 00 01 67 01"), kSlice}));
        Bytes picture = kSlice;
        headers.Complete(picture);
        EXPECT_EQ(picture, kSlice);
    }
}

}  // namespace
}  // namespace Orbel::Wrapton::Command
