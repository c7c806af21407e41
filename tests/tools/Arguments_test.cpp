#include "Arguments.h"

#include <gtest/gtest.h>

namespace Orbel::Wrapton::Command
{
namespace
{

TEST(NotEmpty, ComplainsOfNothingElse)
{
    EXPECT_NE(NotEmpty(""), "");
    EXPECT_EQ(NotEmpty(" "), "");
    EXPECT_EQ(NotEmpty("0"), "");
}

TEST(InOneLine, KeepsOneValueApartFromTheNext)
{
    EXPECT_EQ(InOneLine("plain name.mp4"), "plain name.mp4");
    EXPECT_EQ(InOneLine("a\nb\rc"), "a\\nb\\rc");
    EXPECT_EQ(InOneLine("a\\nb"), "a\\\\nb");
    EXPECT_EQ(InOneLine(""), "");
}

}  // namespace
}  // namespace Orbel::Wrapton::Command
