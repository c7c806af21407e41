// The lines that tell of a box whose size and bytes disagree.
#include <gtest/gtest.h>

#include <string>

#include "mp4packet/Box/Box_ftyp.h"

namespace Orbel::Wrapton
{
namespace
{

std::string PrintedBy(uint32_t produced, uint32_t declared, const char* line)
{
    ::testing::internal::CaptureStdout();
    {
        CMsbCursor w;
        w.U32(0);  // what was written before does not count
        const CPayloadCheck check(w, declared, line);
        w.Fill(produced, 0);
    }
    return ::testing::internal::GetCapturedStdout();
}

TEST(CPayloadCheck, IsSilentWhenTheLengthsAgree)
{
    EXPECT_EQ(PrintedBy(0, 0, "CBox_ftyp::WriteData error!\n"), "");
    EXPECT_EQ(PrintedBy(24, 24, "CBox_ftyp::WriteData error!\n"), "");
}

TEST(CPayloadCheck, PrintsTheLineOfTheBox)
{
    EXPECT_EQ(PrintedBy(23, 24, "CBox_ftyp::WriteData error!\n"), "CBox_ftyp::WriteData error!\n");
    EXPECT_EQ(PrintedBy(25, 24, "CBox_ftyp::WriteData error!\n"), "CBox_ftyp::WriteData error!\n");
}

TEST(CPayloadCheck, TellsTheProducedAndTheDeclaredLengthOfAMovieBox)
{
    EXPECT_EQ(PrintedBy(7, 9, "CBox_moov:WriteData error! %d != %d \n"),
              "CBox_moov:WriteData error! 7 != 9 \n");
}

}  // namespace
}  // namespace Orbel::Wrapton
