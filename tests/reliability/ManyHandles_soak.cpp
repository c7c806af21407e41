// Ten thousand handles of each container at once.
#include "reliability/ManyHandles.h"

namespace Reliability
{
namespace
{

class TenThousandHandles : public ::testing::TestWithParam<uint32_t>
{
};

INSTANTIATE_TEST_SUITE_P(EveryContainer,
                         TenThousandHandles,
                         ::testing::ValuesIn(kContainers),
                         [](const auto& type) { return NameOf(type.param); });

TEST_P(TenThousandHandles, DoNotMeet)
{
    ExpectHandlesApart(GetParam(), 10000);
}

}  // namespace
}  // namespace Reliability
