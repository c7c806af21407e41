#include "tool/ByteCursor.h"

#include <memory>

#include "support/Bytes.h"

namespace Orbel::Wrapton
{
namespace
{

using Support::Bytes;
using Support::Hex;

/// A room in an allocation of exactly its size.
class Room
{
public:
    explicit Room(std::size_t size) : m_bytes(new unsigned char[size]), m_size(size)
    {
        std::fill_n(m_bytes.get(), size, static_cast<unsigned char>(0xEE));
    }
    [[nodiscard]] std::span<unsigned char> Span() const { return {m_bytes.get(), m_size}; }
    [[nodiscard]] Bytes Content() const { return {m_bytes.get(), m_bytes.get() + m_size}; }

private:
    std::unique_ptr<unsigned char[]> m_bytes;
    std::size_t m_size;
};

TEST(CMsbCursor, LaysFieldsOutBigEndian)
{
    const Room room(39);
    CMsbCursor w(room.Span());
    w.U8(0x01);
    w.U16(0x0203);
    w.U24(0x040506);
    w.U32(0x0708090A);
    w.U64(0x0B0C0D0E0F101112);
    w.F64(1.0);
    w.FourCC("moov");
    w.Bytes(Hex("AA BB CC"));
    w.Fill(4, 0x55);
    w.CompactInt(200);
    EXPECT_EQ(w.Produced(), 39u);
    EXPECT_FALSE(w.Overrun());
    EXPECT_EQ(room.Content(),
              Hex("01 "                       // U8
                  "02 03 "                    // U16
                  "04 05 06 "                 // U24
                  "07 08 09 0A "              // U32
                  "0B 0C 0D 0E 0F 10 11 12 "  // U64
                  "3F F0 00 00 00 00 00 00 "  // F64
                  "6D 6F 6F 76 "              // FourCC
                  "AA BB CC "                 // Bytes
                  "55 55 55 55 "              // Fill
                  "48 81"));                  // CompactInt
}

TEST(CLsbCursor, LaysFieldsOutLittleEndian)
{
    const Room room(35);
    CLsbCursor w(room.Span());
    w.U8(0x01);
    w.U16(0x0203);
    w.U32(0x0708090A);
    w.U64(0x0B0C0D0E0F101112);
    w.Guid({0x01020304, 0x0506, 0x0708, {9, 10, 11, 12, 13, 14, 15, 16}});
    w.FourCC("RIFF");
    EXPECT_EQ(w.Produced(), 35u);
    EXPECT_FALSE(w.Overrun());
    EXPECT_EQ(room.Content(),
              Hex("01 "                                               // U8
                  "03 02 "                                            // U16
                  "0A 09 08 07 "                                      // U32
                  "12 11 10 0F 0E 0D 0C 0B "                          // U64
                  "04 03 02 01 06 05 08 07 09 0A 0B 0C 0D 0E 0F 10 "  // Guid
                  "52 49 46 46"));                                    // FourCC
}

TEST(CByteCursor, CutsAWiderValueToTheWidthThatTheCallNames)
{
    const Room room(6);
    CMsbCursor w(room.Span());
    w.U8(0x1FF);
    w.U16(0x12345);
    w.U24(0x01ABCDEF);
    EXPECT_EQ(room.Content(), Hex("FF 23 45 AB CD EF"));
}

TEST(CByteCursor, MeasuresWithoutARoom)
{
    CMsbCursor w;
    EXPECT_FALSE(w.Overrun());
    w.U32(1);
    w.FourCC("free");
    w.Fill(1000000, 0);
    w.Bytes({});
    EXPECT_EQ(w.Produced(), 1000008u);
    EXPECT_TRUE(w.Overrun());
}

TEST(CByteCursor, CountsOnBehindItsEnd)
{
    const Room room(5);
    CMsbCursor w(room.Span());
    w.U32(0x01020304);
    EXPECT_FALSE(w.Overrun());
    w.U8(5);
    EXPECT_FALSE(w.Overrun());
    w.U16(0xAAAA);
    EXPECT_TRUE(w.Overrun());
    w.U64(0);
    EXPECT_EQ(w.Produced(), 15u);
    EXPECT_EQ(room.Content(), Hex("01 02 03 04 05"));
}

TEST(CByteCursor, StoresNothingFromTheFirstFieldOnThatDidNotFit)
{
    const Room room(3);
    CMsbCursor w(room.Span());
    w.U8(1);
    w.U32(0xAAAAAAAA);  // one byte too long
    w.U8(0xBB);         // would fit, but stands behind it
    EXPECT_EQ(room.Content(), Hex("01 EE EE"));
    EXPECT_TRUE(w.Overrun());
}

TEST(CByteCursor, StoresEveryKindOfFieldWholeOrNotAtAll)
{
    const auto tooLongBy1 = [](std::size_t size, auto put)
    {
        const Room room(size - 1);
        CMsbCursor msb(room.Span());
        put(msb);
        EXPECT_EQ(msb.Produced(), size);
        EXPECT_TRUE(msb.Overrun());
        EXPECT_EQ(room.Content(), Bytes(size - 1, 0xEE));
    };
    tooLongBy1(1, [](CMsbCursor& w) { w.U8(1); });
    tooLongBy1(2, [](CMsbCursor& w) { w.U16(1); });
    tooLongBy1(3, [](CMsbCursor& w) { w.U24(1); });
    tooLongBy1(4, [](CMsbCursor& w) { w.U32(1); });
    tooLongBy1(8, [](CMsbCursor& w) { w.U64(1); });
    tooLongBy1(8, [](CMsbCursor& w) { w.F64(1); });
    tooLongBy1(2, [](CMsbCursor& w) { w.CompactInt(200); });
    tooLongBy1(4, [](CMsbCursor& w) { w.FourCC("moov"); });
    tooLongBy1(5, [](CMsbCursor& w) { w.Bytes(Hex("01 02 03 04 05")); });
    tooLongBy1(6, [](CMsbCursor& w) { w.Fill(6, 0); });
    tooLongBy1(2, [](CMsbCursor& w) { w.Bits<16>(Field<8>(1), Field<8>(2)); });
    tooLongBy1(4, [](CMsbCursor& w) { w.Bits<32>(Field<32>(1)); });
    tooLongBy1(8, [](CMsbCursor& w) { w.Bits<64>(Field<32>(1), Field<32>(2)); });

    const Room room(15);
    CLsbCursor lsb(room.Span());
    lsb.Guid({});
    EXPECT_EQ(lsb.Produced(), 16u);
    EXPECT_EQ(room.Content(), Bytes(15, 0xEE));
}

TEST(CByteCursor, AcceptsEmptyFields)
{
    CMsbCursor w(std::span<unsigned char>{});
    w.Bytes({});
    w.Fill(0, 1);
    EXPECT_EQ(w.Produced(), 0u);
    EXPECT_FALSE(w.Overrun());
}

TEST(Bits, PutTheFirstFieldIntoTheHighestBits)
{
    const Room room(18);
    CMsbCursor w(room.Span());
    w.Bits<8>(Field<1>(1), Field<2>(0), Field<5>(3));
    w.Bits<16>(Field<1>(0), Field<1>(1), Field<1>(0), Field<13>(0x0012));
    w.Bits<24>(Field<4>(0xA), Field<20>(0xBCDEF));
    w.Bits<32>(Field<32>(0x01234567));
    w.Bits<64>(Field<3>(1), Field<32>(0xFFFFFFFF), Field<29>(2));
    EXPECT_EQ(w.Produced(), 18u);
    EXPECT_EQ(room.Content(),
              Hex("83 "                         // 1 00 00011
                  "40 12 "                      // 0 1 0 0000000010010
                  "AB CD EF "                   // 4 and 20 bits
                  "01 23 45 67 "                // one field of 32 bits
                  "3F FF FF FF E0 00 00 02"));  // 001, 32 ones, 29 bits
}

TEST(PutWhole, WritesAllOfALayoutOrNothing)
{
    const auto layout = [](CMsbCursor& w)
    {
        w.U16(0x0102);
        w.U24(0x030405);
    };
    const Room room(6);
    CMsbCursor w(room.Span());
    w.U8(0x11);
    PutWhole<5>(w, layout);
    EXPECT_EQ(room.Content(), Hex("11 01 02 03 04 05"));
    EXPECT_EQ(w.Produced(), 6u);
    EXPECT_FALSE(w.Overrun());

    const Room small(5);
    CMsbCursor over(small.Span());
    over.U8(0x11);
    PutWhole<5>(over, layout);
    EXPECT_EQ(small.Content(), Hex("11 EE EE EE EE"));
    EXPECT_EQ(over.Produced(), 6u);
    EXPECT_TRUE(over.Overrun());

    CMsbCursor measure;
    PutWhole<5>(measure, layout);
    EXPECT_EQ(measure.Produced(), 5u);
}

TEST(LsbWordOf, PutsTheFirstFieldIntoTheLowestBits)
{
    static_assert(LsbWordOf(Field<8>(0x101), Field<16>(0x2345), Field<4>(6)) == 0x6234501);
    static_assert(LsbWordOf(Field<32>(0xFFFFFFFF), Field<32>(1)) == 0x1FFFFFFFF);
    const Room room(8);
    CLsbCursor w(room.Span());
    w.U64(LsbWordOf(FourCCField("OMFR"), Field<8>(1), Field<16>(0x0302), Field<8>(4)));
    EXPECT_EQ(room.Content(), Hex("4F 4D 46 52 01 02 03 04"));
}

TEST(Bits, CutOffWhatAFieldHasNoBitsFor)
{
    const Room room(1);
    CMsbCursor w(room.Span());
    w.Bits<8>(Field<4>(0x12), Field<4>(0xFFFFFFF3));
    EXPECT_EQ(room.Content(), Hex("23"));
}

TEST(PatchU32, RewritesAFieldInTheCursorsByteOrder)
{
    const Room msbRoom(6);
    CMsbCursor msb(msbRoom.Span());
    msb.Fill(6, 0);
    msb.PatchU32(1, 0x01020304);
    EXPECT_EQ(msbRoom.Content(), Hex("00 01 02 03 04 00"));
    EXPECT_EQ(msb.Produced(), 6u);

    const Room lsbRoom(6);
    CLsbCursor lsb(lsbRoom.Span());
    lsb.Fill(6, 0);
    lsb.PatchU32(2, 0x01020304);
    EXPECT_EQ(lsbRoom.Content(), Hex("00 00 04 03 02 01"));
}

TEST(PatchU32, LeavesAPlaceAloneThatWasNotProducedOrNotStored)
{
    const Room room(8);
    CMsbCursor w(room.Span());
    w.U32(0x01020304);
    w.PatchU32(1, 0xAAAAAAAA);  // its last byte is not produced yet
    w.PatchU32(4, 0xAAAAAAAA);
    w.PatchU32(100, 0xAAAAAAAA);
    w.PatchU32(SIZE_MAX - 1, 0xAAAAAAAA);  // its end would wrap around to 2
    EXPECT_EQ(room.Content(), Hex("01 02 03 04 EE EE EE EE"));

    w.U64(0);  // too long: produced, but not stored
    w.PatchU32(4, 0xBBBBBBBB);
    w.PatchU32(8, 0xBBBBBBBB);
    w.PatchU32(0, 0x05060708);
    EXPECT_EQ(Support::Slice(room.Content(), 0, 4), Hex("05 06 07 08"));

    CMsbCursor measuring;
    measuring.U32(1);
    measuring.PatchU32(0, 2);
    EXPECT_EQ(measuring.Produced(), 4u);
}

}  // namespace
}  // namespace Orbel::Wrapton
