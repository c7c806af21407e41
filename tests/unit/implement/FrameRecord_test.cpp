#include "implement/FrameRecord.h"

#include <climits>
#include <cstdlib>
#include <cstring>
#include <functional>

#include <gtest/gtest.h>

namespace Orbel::Wrapton
{
namespace
{

constexpr unsigned char kByte = 9;

/// The zone of the process is UTC for every test.
class FrameRecord : public ::testing::Test
{
protected:
    FrameRecord()
    {
        setenv("TZ", "UTC0", 1);
        tzset();
    }

    /// What @p attrs make, seen by @p look while it lives.
    static void Look(const FrameAttributes& attrs,
                     const std::function<void(const SGFrameInfo&)>& look,
                     DateForm date = DateForm::kPacked,
                     MakerKeys maker = MakerKeys::kRead)
    {
        CFrameRecord record(&kByte, 1, attrs, date, maker);
        look(*record.Get());
    }

    static SGFrameInfo Plain(const FrameAttributes& attrs,
                             DateForm date = DateForm::kPacked,
                             MakerKeys maker = MakerKeys::kRead)
    {
        SGFrameInfo frame{};
        Look(
            attrs, [&](const SGFrameInfo& made) { frame = made; }, date, maker);
        frame.split_info.pblock = nullptr;
        return frame;
    }

    static uint32_t Seconds(const FrameAttributes& attrs)
    {
        return Plain(attrs, DateForm::kSeconds).frame_data;
    }
};

TEST_F(FrameRecord, IsAllZeroButForTheFrameWhenThereAreNoAttributes)
{
    SGFrameInfo expected{};
    expected.frame_pointer = const_cast<unsigned char*>(&kByte);
    expected.frame_size = 1;
    expected.frame_sub_type = SG_FRAME_SUB_TYPE_UNKNOW;  // the default of its table
    const SGFrameInfo made = Plain({});
    EXPECT_EQ(std::memcmp(&made, &expected, sizeof(made)), 0);
    EXPECT_EQ(made.struct_size, 0u);
}

TEST_F(FrameRecord, HasThePublicNumbersOfTypeSubTypeAndEncoding)
{
    SGFrameInfo made = Plain({{"frametype", 'V'}, {"framesubtype", 1}, {"encodetype", 2}});
    EXPECT_EQ(made.frame_type, 1u);
    EXPECT_EQ(made.frame_sub_type, 0u);
    EXPECT_EQ(made.frame_encode, 2u);
    made = Plain({{"frametype", 'A'}, {"framesubtype", 9}, {"encodetype", 33}});
    EXPECT_EQ(made.frame_type, 2u);
    EXPECT_EQ(made.frame_sub_type, 8u);
    EXPECT_EQ(made.frame_encode, 26u);
    EXPECT_EQ(Plain({{"frametype", 'X'}}).frame_type, 3u);
    EXPECT_EQ(Plain({{"frametype", 'v'}}).frame_type, 0u);
    EXPECT_EQ(Plain({{"framesubtype", -1}}).frame_sub_type, 9u);
    EXPECT_EQ(Plain({{"encodetype", -1}}).frame_encode, 0u);
    EXPECT_EQ(Plain({{"encodetype", LONG_MIN}}).frame_encode, 0u);
    // 32 bits of a value count.
    EXPECT_EQ(Plain({{"frametype", 0x1'0000'0000 + 'V'}}).frame_type, 1u);
}

TEST_F(FrameRecord, TakesTimeAndRotationOfEveryFrame)
{
    for (const long type : {0L, long{'A'}, long{'V'}, long{'X'}})
    {
        const SGFrameInfo made =
            Plain({{"frametype", type}, {"timestamp", 40}, {"rotationangle", 90}});
        EXPECT_EQ(made.frame_time, 40u);
        EXPECT_EQ(made.rotation_angle, 90u);
    }
    EXPECT_EQ(Plain({{"timestamp", -1}}).frame_time, 0xFFFFFFFFu);
    EXPECT_EQ(Plain({{"timestamp", 0x5'0000'0007}}).frame_time, 7u);
    EXPECT_EQ(Plain({{"rotationangle", LONG_MAX}}).rotation_angle, 0xFFFFFFFFu);
}

const FrameAttributes kPictureAndSound = {{"width", 640},
                                          {"height", 360},
                                          {"rate", 25},
                                          {"deinterlace", 1},
                                          {"samplespersec", 44100},
                                          {"bitspersample", 16},
                                          {"channels", 2},
                                          {"bitrate", 64000}};

TEST_F(FrameRecord, TakesTheSizeOfVideoAlone)
{
    FrameAttributes attrs = kPictureAndSound;
    attrs["frametype"] = 'V';
    const SGFrameInfo made = Plain(attrs);
    EXPECT_EQ(made.width, 640u);
    EXPECT_EQ(made.heigth, 360u);
    EXPECT_EQ(made.frame_rate, 25u);
    EXPECT_EQ(made.deinter_lace, 1u);
    EXPECT_EQ(made.sample_rate, 0u);
    EXPECT_EQ(made.bit_per_sample, 0u);
    EXPECT_EQ(made.channels, 0u);
    EXPECT_EQ(made.bit_rate, 0u);
}

TEST_F(FrameRecord, TakesTheSamplesOfAudioAlone)
{
    FrameAttributes attrs = kPictureAndSound;
    attrs["frametype"] = 'A';
    const SGFrameInfo made = Plain(attrs);
    EXPECT_EQ(made.width, 0u);
    EXPECT_EQ(made.heigth, 0u);
    EXPECT_EQ(made.frame_rate, 0u);
    EXPECT_EQ(made.deinter_lace, 0u);
    EXPECT_EQ(made.sample_rate, 44100u);
    EXPECT_EQ(made.bit_per_sample, 16u);
    EXPECT_EQ(made.channels, 2u);
    EXPECT_EQ(made.bit_rate, 64000u);
}

TEST_F(FrameRecord, TakesNeitherOfOtherFrames)
{
    FrameAttributes attrs = kPictureAndSound;
    for (const long type : {0L, long{'X'}, 1L, 2L})
    {
        attrs["frametype"] = type;
        const SGFrameInfo made = Plain(attrs);
        EXPECT_EQ(made.width, 0u);
        EXPECT_EQ(made.sample_rate, 0u);
    }
}

TEST_F(FrameRecord, TakesTheMakerWhereItIsAsked)
{
    const FrameAttributes attrs = {{"tpcompanytype", 0x12345}, {"tpstreamheaderlen", -2}};
    SGFrameInfo made = Plain(attrs, DateForm::kPacked, MakerKeys::kRead);
    EXPECT_EQ(made.company_type, 0x2345u);
    EXPECT_EQ(made._3rdstream_header_length, 0xFFFEu);
    made = Plain(attrs, DateForm::kPacked, MakerKeys::kLeft);
    EXPECT_EQ(made.company_type, 0u);
    EXPECT_EQ(made._3rdstream_header_length, 0u);
}

const FrameAttributes kDate = {
    {"year", 26}, {"month", 11}, {"day", 21}, {"hour", 8}, {"minute", 9}, {"second", 10}};

TEST_F(FrameRecord, PacksTheDate)
{
    EXPECT_EQ(Plain(kDate).frame_data, 26u << 26 | 11u << 22 | 21u << 17 | 8u << 12 | 9u << 6 | 10);
    EXPECT_EQ(Plain({}).frame_data, 0u);
    EXPECT_EQ(Plain({{"second", 63}}).frame_data, 63u);
    EXPECT_EQ(Plain({{"second", 64}}).frame_data, 0u);
    EXPECT_EQ(Plain({{"minute", 0x41}}).frame_data, 1u << 6);
    EXPECT_EQ(Plain({{"hour", 0x21}}).frame_data, 1u << 12);
    EXPECT_EQ(Plain({{"day", 0x21}}).frame_data, 1u << 17);
    EXPECT_EQ(Plain({{"month", 0x11}}).frame_data, 1u << 22);
    EXPECT_EQ(Plain({{"year", 2026}}).frame_data, (2026u & 63) << 26);
    EXPECT_EQ(Plain({{"year", -1},
                     {"month", -1},
                     {"day", -1},
                     {"hour", -1},
                     {"minute", -1},
                     {"second", -1}})
                  .frame_data,
              0xFFFFFFFFu);
}

TEST_F(FrameRecord, CountsTheSecondsToTheDate)
{
    EXPECT_EQ(Seconds(kDate), 1795248550u);  // 2026-11-21 08:09:10 UTC
    EXPECT_EQ(Seconds({{"year", 26 + 64},
                       {"month", 11 + 16},
                       {"day", 21 + 32},
                       {"hour", 8 + 32},
                       {"minute", 9 + 64},
                       {"second", 10 - 64}}),
              1795248550u);
    // Day 0 of month -1 of 2000 is the last day of November 1999.
    EXPECT_EQ(Seconds({}), 943920000u);
    EXPECT_EQ(Seconds({{"second", 1}}), 943920001u);
    EXPECT_EQ(Seconds({{"month", 1}, {"day", 1}}), 946684800u);  // 2000-01-01
}

TEST_F(FrameRecord, TakesTheDateAsLocalTimeWithoutDaylightSaving)
{
    setenv("TZ", "EST5EDT,M3.2.0,M11.1.0", 1);
    tzset();
    EXPECT_EQ(Seconds(kDate), 1795248550u + 5 * 3600);
    // 2015-07-04 12:00: clocks show daylight saving then, the date is taken without.
    EXPECT_EQ(Seconds({{"year", 15}, {"month", 7}, {"day", 4}, {"hour", 12}}),
              1436011200u + 5 * 3600);
}

TEST_F(FrameRecord, HasABlockForEveryPartOfASplitScreen)
{
    FrameAttributes attrs = {{"n_slice", 2}, {"m_slice", 2}};
    for (long k = 0; k <= 5; ++k)
    {
        const std::string number = std::to_string(k);
        attrs["blockpos_top_" + number] = 100 + k;
        attrs["blockpos_left_" + number] = 150 + k;  // is no key
        attrs["blockpos_right_" + number] = 200 + k;
        attrs["blockpos_bottom_" + number] = 300 + k;
        attrs["blockdata_offset_" + number] = 400 + k;
    }
    Look(attrs,
         [](const SGFrameInfo& made)
         {
             EXPECT_EQ(made.split_info.flag, 1);
             EXPECT_EQ(made.split_info.block_n, 2);
             EXPECT_EQ(made.split_info.block_m, 2);
             ASSERT_NE(made.split_info.pblock, nullptr);
             for (int i = 0; i < 4; ++i)
             {
                 const SGBlockInfo& block = made.split_info.pblock[i];
                 EXPECT_EQ(block.top, 101 + i);
                 EXPECT_EQ(block.left, 101 + i);
                 EXPECT_EQ(block.right, 201 + i);
                 EXPECT_EQ(block.bottom, 301 + i);
                 EXPECT_EQ(block.offset, 401 + i);
                 EXPECT_EQ(block.reserved, 0);
             }
         });
}

TEST_F(FrameRecord, LeavesAbsentFieldsOfABlockAtZeroAndCutsTheOthers)
{
    Look({{"n_slice", 1},
          {"m_slice", 2},
          {"blockpos_top_1", 0x18001},
          {"blockpos_bottom_2", -5},
          {"blockpos_bottom_02", 7},
          {"blockdata_offset_2", 0x1'8000'0000}},
         [](const SGFrameInfo& made)
         {
             const SGBlockInfo* const blocks = made.split_info.pblock;
             ASSERT_NE(blocks, nullptr);
             EXPECT_EQ(blocks[0].top, -0x7FFF);
             EXPECT_EQ(blocks[0].left, -0x7FFF);
             EXPECT_EQ(blocks[0].right, 0);
             EXPECT_EQ(blocks[0].bottom, 0);
             EXPECT_EQ(blocks[0].offset, 0);
             EXPECT_EQ(blocks[1].bottom, -5);
             EXPECT_EQ(blocks[1].offset, INT32_MIN);
             EXPECT_EQ(blocks[1].top, 0);
         });
}

TEST_F(FrameRecord, HasNoSplitScreenWithoutBothCounts)
{
    const SGFrameInfo made = Plain({{"n_slice", 2}, {"m_slice", 0}});
    EXPECT_EQ(made.split_info.flag, 0);
    EXPECT_EQ(made.split_info.block_n, 2);
    EXPECT_EQ(made.split_info.block_m, 0);
    for (const FrameAttributes& attrs : {FrameAttributes{{"n_slice", 2}},
                                         FrameAttributes{{"m_slice", 2}},
                                         FrameAttributes{{"n_slice", 0}, {"m_slice", 0}},
                                         FrameAttributes{{"n_slice", 1L << 32}, {"m_slice", 2}}})
    {
        Look(attrs,
             [](const SGFrameInfo& frame)
             {
                 EXPECT_EQ(frame.split_info.flag, 0);
                 EXPECT_EQ(frame.split_info.pblock, nullptr);
             });
    }
}

TEST_F(FrameRecord, HasNoSplitScreenOfNegativeOrTooManyParts)
{
    struct Counts
    {
        long across;
        long down;
        int flag;
    };
    for (const Counts& counts : {Counts{-1, 2, 0},
                                 Counts{2, -1, 0},
                                 Counts{-2, -2, 0},
                                 Counts{INT_MIN, INT_MIN, 0},
                                 Counts{LONG_MAX, LONG_MAX, 0},
                                 Counts{1, 4095, 1},
                                 Counts{64, 64, 1},
                                 Counts{4096, 1, 1},
                                 Counts{17, 241, 0},  // 4097
                                 Counts{4097, 1, 0},
                                 Counts{65536, 65536, 0},
                                 Counts{INT_MAX, INT_MAX, 0}})
    {
        Look({{"n_slice", counts.across}, {"m_slice", counts.down}},
             [&](const SGFrameInfo& made)
             {
                 EXPECT_EQ(made.split_info.flag, counts.flag)
                     << counts.across << " x " << counts.down;
                 EXPECT_EQ(made.split_info.pblock != nullptr, counts.flag == 1);
             });
    }
}

TEST_F(FrameRecord, LooksAtNothingElse)
{
    const SGFrameInfo expected = Plain({{"frametype", 'V'}, {"width", 640}});
    const SGFrameInfo made = Plain({{"frametype", 'V'},
                                    {"width", 640},
                                    {"Width", 1},
                                    {"heigth", 2},
                                    {"", 3},
                                    {"frametype ", 4},
                                    {"blockpos_top_1", 5}});
    EXPECT_EQ(std::memcmp(&made, &expected, sizeof(made)), 0);
}

}  // namespace
}  // namespace Orbel::Wrapton
