// The line that a writer prints when its record declares another size.
#include "avipacket/AviRecords.h"

#include <array>
#include <functional>
#include <string>

#include "support/Bytes.h"

namespace Orbel::Wrapton
{
namespace
{

std::string Printed(const std::function<void(CLsbCursor&)>& put)
{
    std::array<unsigned char, 4104> room{};
    CLsbCursor w(room);
    ::testing::internal::CaptureStdout();
    put(w);
    return ::testing::internal::GetCapturedStdout();
}

constexpr std::array<unsigned char, CAviIndxObject::kLength> kIndex{};

TEST(AviRecords, WritersPrintNothingWhenTheSizesAgree)
{
    EXPECT_EQ(Printed(
                  [](CLsbCursor& w)
                  {
                      PutMainHeader(w, {});
                      PutVideoStreamList(w, {}, kIndex);
                      PutAudioStreamList(w, {}, kIndex);
                      PutOdmlList(w, {});
                      PutJunk(w, {.size = 5, .total_size = 13});
                  }),
              "");
}

TEST(AviRecords, MainHeaderSaysDeclaredThenProducedSize)
{
    EXPECT_EQ(Printed([](CLsbCursor& w) { PutMainHeader(w, {.total_size = 63}); }),
              "WriteMainHeader Error! MainHeader Size = 63, Actual Size = 64 \n");
}

TEST(AviRecords, StreamHeaderSaysDeclaredThenProducedSize)
{
    EXPECT_EQ(Printed([](CLsbCursor& w) { PutStreamHeader(w, {.total_size = 65}); }),
              "WriteStreamHeader Error! StreamHeader Size = 65, Actual Size = 64 \n");
}

TEST(AviRecords, BitmapInfoSaysDeclaredThenProducedSize)
{
    EXPECT_EQ(Printed([](CLsbCursor& w) { PutBitmapInfo(w, {.total_size = 0}); }),
              "WriteBitmapInfo Error! Bitmap Size = 0, Actual Size = 48 \n");
}

TEST(AviRecords, WaveformatSaysDeclaredThenProducedSize)
{
    EXPECT_EQ(Printed([](CLsbCursor& w) { PutWaveformat(w, {.total_size = 27}); }),
              "WriteWaveformat Error! WaveFormat Size = 27, Actual Size = 26 \n");
}

TEST(AviRecords, StreamListsSayDeclaredThenProducedSize)
{
    EXPECT_EQ(Printed([](CLsbCursor& w) { PutVideoStreamList(w, {.total_size = 1}, kIndex); }),
              "WriteVideoStreamList Error! VideoStream Size = 1, Actual Size = 1156 \n");
    EXPECT_EQ(Printed([](CLsbCursor& w) { PutAudioStreamList(w, {.total_size = 1}, kIndex); }),
              "WriteAudioStreamList Error! AudioStream Size = 1, Actual Size = 1134 \n");
}

TEST(AviRecords, JunkSaysDeclaredThenProducedSizeAndGoesOn)
{
    EXPECT_EQ(Printed([](CLsbCursor& w) { PutJunk(w, {.size = 4, .total_size = 4}); }),
              "WriteJunk Error! Junk Size = 4, Actual Size = 12 \n");
}

TEST(AviRecords, HeaderListLineHasTheSameForm)
{
    EXPECT_EQ(
        Printed(
            [](CLsbCursor& w)
            {
                const CRecordCheck check(
                    w, 4104, "WriteHeaderList Error! HeaderList Size = %d, Actual Size = %d \n");
                w.Fill(4, 0);
            }),
        "WriteHeaderList Error! HeaderList Size = 4104, Actual Size = 4 \n");
}

}  // namespace
}  // namespace Orbel::Wrapton
