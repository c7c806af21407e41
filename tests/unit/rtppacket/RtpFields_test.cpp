#include "rtppacket/RtpFields.h"

#include <algorithm>
#include <memory>

#include "support/Bytes.h"

namespace Orbel::Wrapton
{
namespace
{

using Support::Bytes;
using Support::Hex;
using Support::Zero;

/// What a setter makes of @p size zero bytes.
template <class Setter>
Bytes After(std::size_t size, Setter set)
{
    Bytes bytes = Zero(size);
    CRtpFields packet(bytes);
    set(packet);
    return bytes;
}

TEST(CRtpFields, WritesEveryFieldOfTheFixedHeaderInItsPlace)
{
    EXPECT_EQ(After(12, [](CRtpFields& p) { p.SetVersion(2); }),
              Hex("80 00 00 00 00 00 00 00 00 00 00 00"));
    EXPECT_EQ(After(12, [](CRtpFields& p) { p.SetPadding(true); }),
              Hex("20 00 00 00 00 00 00 00 00 00 00 00"));
    EXPECT_EQ(After(12, [](CRtpFields& p) { p.SetExtension(true); }),
              Hex("10 00 00 00 00 00 00 00 00 00 00 00"));
    EXPECT_EQ(After(12, [](CRtpFields& p) { p.SetContribSrcCount(15); }),
              Hex("0F 00 00 00 00 00 00 00 00 00 00 00"));
    EXPECT_EQ(After(12, [](CRtpFields& p) { p.SetMarker(true); }),
              Hex("00 80 00 00 00 00 00 00 00 00 00 00"));
    EXPECT_EQ(After(12, [](CRtpFields& p) { p.SetPayloadType(0x7F); }),
              Hex("00 7F 00 00 00 00 00 00 00 00 00 00"));
    EXPECT_EQ(After(12, [](CRtpFields& p) { p.SetSequenceNumber(0x1234); }),
              Hex("00 00 12 34 00 00 00 00 00 00 00 00"));
    EXPECT_EQ(After(12, [](CRtpFields& p) { p.SetTimestamp(0x12345678); }),
              Hex("00 00 00 00 12 34 56 78 00 00 00 00"));
    EXPECT_EQ(After(12, [](CRtpFields& p) { p.SetSyncSource(0x9ABCDEF0); }),
              Hex("00 00 00 00 00 00 00 00 9A BC DE F0"));
}

TEST(CRtpFields, ReadsEveryFieldOfTheFixedHeaderFromItsPlace)
{
    Bytes bytes = Hex("B2 E1 12 34 01 02 03 04 0A 0B 0C 0D 00 00 00 07 00 00 00 08");
    const CRtpFields packet(bytes);
    EXPECT_EQ(packet.GetVersion(), 2u);
    EXPECT_TRUE(packet.GetPadding());
    EXPECT_TRUE(packet.GetExtension());
    EXPECT_EQ(packet.GetContribSrcCount(), 2u);
    EXPECT_TRUE(packet.GetMarker());
    EXPECT_EQ(packet.GetPayloadType(), 97u);
    EXPECT_EQ(packet.GetSequenceNumber(), 0x1234u);
    EXPECT_EQ(packet.GetTimestamp(), 0x01020304u);
    EXPECT_EQ(packet.GetSyncSource(), 0x0A0B0C0Du);
    EXPECT_EQ(packet.GetContribSource(0), 7u);
    EXPECT_EQ(packet.GetContribSource(1), 8u);
    EXPECT_EQ(packet.GetContribSource(2), 0u) << "there are two";
}

TEST(CRtpFields, SettersLeaveTheBitsAroundThemAlone)
{
    Bytes bytes(12, 0xFF);
    CRtpFields packet(bytes);
    packet.SetVersion(2);
    EXPECT_EQ(bytes[0], 0xBF);
    packet.SetPadding(false);
    EXPECT_EQ(bytes[0], 0x9F);
    packet.SetExtension(false);
    EXPECT_EQ(bytes[0], 0x8F);
    packet.SetContribSrcCount(5);
    EXPECT_EQ(bytes[0], 0x85);
    packet.SetPayloadType(1);
    EXPECT_EQ(bytes[1], 0x81);
    packet.SetMarker(false);
    EXPECT_EQ(bytes[1], 0x01);
    packet.SetPayloadType(0xFFFFFFFE);
    EXPECT_EQ(bytes[1], 0x7E) << "seven bits of a payload type count";
    EXPECT_EQ(Support::Slice(bytes, 2, 10), Bytes(10, 0xFF));
}

TEST(CRtpFields, ClearMakesTheFixedHeaderZeroAndNothingElse)
{
    Bytes bytes(14, 0xFF);
    CRtpFields(bytes).Clear();
    EXPECT_EQ(bytes, Support::Join({Zero(12), Hex("FF FF")}));
}

TEST(CRtpFields, ExtensionStandsBehindTheContributingSources)
{
    Bytes bytes = Zero(12 + 8 + 4 + 8 + 3);
    CRtpFields packet(bytes);
    packet.SetContribSrcCount(2);
    packet.SetContribSource(0, 0x01020304);
    packet.SetContribSource(1, 0x05060708);
    packet.SetContribSource(2, 0xFFFFFFFF);  // there are two
    EXPECT_EQ(packet.GetHeaderSize(), 20u);
    packet.SetExtension(true);
    packet.SetExtensionType(0xBEDE);
    packet.SetExtensionSize(2);
    EXPECT_EQ(packet.GetExtensionType(), 0xBEDEu);
    EXPECT_EQ(packet.GetExtensionSize(), 2u);
    EXPECT_EQ(packet.GetHeaderSize(), 32u);
    ASSERT_EQ(packet.GetExtensionHead().size(), 8u);
    packet.GetExtensionHead()[0] = 0xE0;
    EXPECT_EQ(packet.GetPayloadSize(), 3u);
    packet.SetPayloadData(Hex("AA BB CC"));
    EXPECT_EQ(bytes,
              Hex("12 00 00 00 00 00 00 00 00 00 00 00 "
                  "01 02 03 04 05 06 07 08 "
                  "BE DE 00 02 E0 00 00 00 00 00 00 00 "
                  "AA BB CC"));
}

TEST(CRtpFields, WithoutTheFlagThereIsNoExtension)
{
    Bytes bytes = Zero(20);
    CRtpFields packet(bytes);
    packet.SetExtensionType(0xFFFF);
    packet.SetExtensionSize(0xFFFF);
    EXPECT_EQ(bytes, Zero(20));
    EXPECT_EQ(packet.GetExtensionType(), 0u);
    EXPECT_EQ(packet.GetExtensionSize(), 0u);
    EXPECT_TRUE(packet.GetExtensionHead().empty());
    EXPECT_EQ(packet.GetHeaderSize(), 12u);
}

TEST(CRtpFields, PaddingIsNoPayload)
{
    Bytes bytes = Zero(20);
    CRtpFields packet(bytes);
    packet.SetPaddingLength(3);
    EXPECT_EQ(packet.GetPayloadSize(), 8u) << "only the flag makes it padding";
    packet.SetPadding(true);
    EXPECT_EQ(bytes.back(), 3);
    EXPECT_EQ(packet.GetPayloadSize(), 5u);
    EXPECT_EQ(packet.GetPayloadData().size(), 5u);
    EXPECT_EQ(packet.GetPayloadData().data(), bytes.data() + 12);
    packet.SetPaddingLength(8);
    EXPECT_EQ(packet.GetPayloadSize(), 0u);
    packet.SetPaddingLength(255);
    EXPECT_EQ(packet.GetPayloadSize(), 0u);
    EXPECT_TRUE(packet.GetPayloadData().empty());
}

TEST(CRtpFields, PayloadGoesWhereItIsTold)
{
    Bytes bytes = Zero(16);
    CRtpFields packet(bytes);
    packet.SetPayloadData(Hex("AA"), 1);
    packet.SetPayloadData(Hex("BB CC"), 2);
    EXPECT_EQ(Support::Slice(bytes, 12, 4), Hex("00 AA BB CC"));
    packet.SetPayloadData(Hex("DD DD"), 3);  // does not fit
    packet.SetPayloadData({}, 4);
    EXPECT_EQ(Support::Slice(bytes, 12, 4), Hex("00 AA BB CC"));
}

TEST(CRtpFields, FuaHeaderHasIndicatorAndFragmentBits)
{
    const auto fua = [](uint8_t nal, bool start, bool end)
    {
        Bytes bytes = Zero(14);
        CRtpFields(bytes).SetFUAHeader(nal, start, end);
        return Support::Slice(bytes, 12, 2);
    };
    EXPECT_EQ(fua(0x65, true, false), Hex("7C 85"));
    EXPECT_EQ(fua(0x65, false, false), Hex("7C 05"));
    EXPECT_EQ(fua(0x65, false, true), Hex("7C 45"));
    EXPECT_EQ(fua(0x41, true, true), Hex("5C C1"));
    EXPECT_EQ(fua(0xFF, false, false), Hex("FC 1F"));
    EXPECT_EQ(fua(0x00, false, false), Hex("1C 00"));
}

TEST(CRtpFields, FieldsOutsideThePacketReadAsZeroAndAreNotWritten)
{
    for (std::size_t size = 0; size < 40; ++size)
    {
        const std::unique_ptr<unsigned char[]> memory(new unsigned char[size]);
        std::fill_n(memory.get(), size, static_cast<unsigned char>(0xFF));
        CRtpFields packet({memory.get(), size});  // padding, 15 sources, extension
        EXPECT_EQ(packet.GetSequenceNumber(), size >= 4 ? 0xFFFFu : 0u);
        EXPECT_EQ(packet.GetTimestamp(), size >= 8 ? 0xFFFFFFFFu : 0u);
        EXPECT_EQ(packet.GetSyncSource(), size >= 12 ? 0xFFFFFFFFu : 0u);
        EXPECT_EQ(packet.GetContribSource(5), size >= 36 ? 0xFFFFFFFFu : 0u);
        EXPECT_EQ(packet.GetExtensionType(), 0u);
        EXPECT_EQ(packet.GetExtensionSize(), 0u);
        EXPECT_TRUE(packet.GetExtensionHead().empty());
        EXPECT_EQ(packet.GetPayloadSize(), 0u);
        EXPECT_TRUE(packet.GetPayloadData().empty());
        packet.SetContribSource(14, 1);
        packet.SetExtensionType(1);
        packet.SetExtensionSize(1);
        packet.SetFUAHeader(1, true, true);
        packet.SetPayloadData(Hex("11"));
        packet.SetSyncSource(1);
        packet.SetTimestamp(1);
        packet.SetSequenceNumber(1);
        packet.SetMarker(false);
        packet.SetVersion(0);
        packet.SetPaddingLength(0);
        packet.Clear();
    }
}

}  // namespace
}  // namespace Orbel::Wrapton
