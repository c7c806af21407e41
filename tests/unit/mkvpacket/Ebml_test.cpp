// EBML numbers and elements, RFC 8794.
#include "mkvpacket/Ebml.h"

#include <array>
#include <thread>

#include "mkvpacket/Objects/ElementIds.h"
#include "support/Bytes.h"

namespace Orbel::Wrapton
{
namespace
{

using Support::Bytes;
using Support::Hex;
using Support::Same;

Bytes Encoded(uint64_t size)
{
    uint32_t length = 99;
    const unsigned char* const bytes = CEbml::GetsizeID(size, length);
    if (bytes == nullptr)
    {
        EXPECT_EQ(length, 0u);
        return {};
    }
    return {bytes, bytes + length};
}

template <class Put>
Bytes Laid(Put put)
{
    std::array<unsigned char, 64> room{};
    CMsbCursor w(room);
    put(w);
    return {room.begin(), room.begin() + static_cast<std::ptrdiff_t>(w.Produced())};
}

TEST(CEbml, SizesTakeTheShortestFormThatIsNotAllOnes)
{
    EXPECT_TRUE(Same(Encoded(0), Hex("80")));
    EXPECT_TRUE(Same(Encoded(126), Hex("FE")));
    EXPECT_TRUE(Same(Encoded(127), Hex("40 7F")));
    EXPECT_TRUE(Same(Encoded(128), Hex("40 80")));
    EXPECT_TRUE(Same(Encoded(16382), Hex("7F FE")));
    EXPECT_TRUE(Same(Encoded(16383), Hex("20 3F FF")));
    EXPECT_TRUE(Same(Encoded(16384), Hex("20 40 00")));
    EXPECT_TRUE(Same(Encoded(2097150), Hex("3F FF FE")));
    EXPECT_TRUE(Same(Encoded(2097151), Hex("10 1F FF FF")));
    EXPECT_TRUE(Same(Encoded(2097152), Hex("10 20 00 00")));
    EXPECT_TRUE(Same(Encoded(268435454), Hex("1F FF FF FE")));
}

TEST(CEbml, SizesThat4BytesDoNotHoldEncodeToNothing)
{
    for (const uint64_t size : {uint64_t{268435455}, uint64_t{268435456}, UINT64_MAX})
    {
        EXPECT_TRUE(Encoded(size).empty()) << size;
    }
}

TEST(CEbml, EveryThreadHasABufferOfItsOwn)
{
    uint32_t length = 0;
    const unsigned char* const mine = CEbml::GetsizeID(5, length);
    std::thread([] { Encoded(7); }).join();
    EXPECT_EQ(*mine, 0x85);
    EXPECT_EQ(CEbml::GetsizeID(7, length), mine);
    EXPECT_EQ(*mine, 0x87);
}

TEST(CEbml, LongFormHasTheMarkerAndSevenBytes)
{
    EXPECT_TRUE(Same(Support::Msb64(CEbml::SetID(0)), Hex("01 00 00 00 00 00 00 00")));
    EXPECT_TRUE(
        Same(Support::Msb64(CEbml::SetID(0x123456789ABCDE)), Hex("01 12 34 56 78 9A BC DE")));
}

TEST(CEbml, ReadsANumberOfTheExpectedLength)
{
    uint64_t value = 0;
    EXPECT_EQ(CEbml::Getvint(Hex("85").data(), 1, value), 1);
    EXPECT_EQ(value, 5u);
    EXPECT_EQ(CEbml::Getvint(Hex("40 7F").data(), 2, value), 2);
    EXPECT_EQ(value, 127u);
    EXPECT_EQ(CEbml::Getvint(Hex("1F FF FF FE").data(), 4, value), 4);
    EXPECT_EQ(value, 268435454u);
    EXPECT_EQ(CEbml::Getvint(Hex("01 12 34 56 78 9A BC DE").data(), 8, value), 8);
    EXPECT_EQ(value, 0x123456789ABCDEu);
}

TEST(CEbml, RefusesANumberOfAnotherLength)
{
    uint64_t value = 77;
    EXPECT_EQ(CEbml::Getvint(nullptr, 1, value), 0);
    EXPECT_EQ(CEbml::Getvint(Hex("85").data(), 2, value), -1);
    EXPECT_EQ(CEbml::Getvint(Hex("40 7F").data(), 1, value), -1);
    EXPECT_EQ(CEbml::Getvint(Hex("00").data(), 8, value), -1);
    EXPECT_EQ(CEbml::Getvint(Hex("00").data(), 9, value), -1);  // no number has 9 bytes
    EXPECT_EQ(value, 77u);
}

TEST(EbmlElements, IdsAreWrittenWithTheirMarker)
{
    EXPECT_TRUE(Same(Laid([](CMsbCursor& w) { PutId(w, kSimpleBlock); }), Hex("A3")));
    EXPECT_TRUE(Same(Laid([](CMsbCursor& w) { PutId(w, kTrackUid); }), Hex("73 C5")));
    EXPECT_TRUE(Same(Laid([](CMsbCursor& w) { PutId(w, kDefaultDuration); }), Hex("23 E3 83")));
    EXPECT_TRUE(Same(Laid([](CMsbCursor& w) { PutId(w, kCues); }), Hex("1C 53 BB 6B")));
}

TEST(EbmlElements, NumbersHaveTheWidthOfTheirName)
{
    EXPECT_TRUE(Same(Laid([](CMsbCursor& w) { PutUint8(w, kChannels, 2); }), Hex("9F 81 02")));
    EXPECT_TRUE(
        Same(Laid([](CMsbCursor& w) { PutUint16(w, kPixelWidth, 640); }), Hex("B0 82 02 80")));
    EXPECT_TRUE(Same(Laid([](CMsbCursor& w) { PutUint24(w, kTimecodeScale, 1000000); }),
                     Hex("2A D7 B1 83 0F 42 40")));
    EXPECT_TRUE(
        Same(Laid([](CMsbCursor& w) { PutUint32(w, kCueTime, 1000); }), Hex("B3 84 00 00 03 E8")));
    EXPECT_TRUE(Same(Laid([](CMsbCursor& w) { PutUint64(w, kDateUtc, 1); }),
                     Hex("44 61 88 00 00 00 00 00 00 00 01")));
    EXPECT_TRUE(Same(Laid([](CMsbCursor& w) { PutFloat64(w, kSamplingFrequency, 8000); }),
                     Hex("B5 88 40 BF 40 00 00 00 00 00")));
    EXPECT_TRUE(Same(Laid([](CMsbCursor& w) { PutString(w, kLanguage, "und"); }),
                     Hex("22 B5 9C 83 75 6E 64")));
}

TEST(EbmlElements, ScopesFillTheirSizesInWhenTheyEnd)
{
    EXPECT_TRUE(Same(Laid(
                         [](CMsbCursor& w)
                         {
                             const CEbmlScope outer(w, kSegment);
                             {
                                 const CEbmlScope inner(w, kInfo);
                                 PutUint8(w, kChannels, 1);
                             }
                             w.U8(0x55);
                         }),
                     Hex("18 53 80 67 01 00 00 00 00 00 00 10 "
                         "15 49 A9 66 01 00 00 00 00 00 00 03 9F 81 01 55")));
}

}  // namespace
}  // namespace Orbel::Wrapton
