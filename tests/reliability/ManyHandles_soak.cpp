// Ten thousand handles of each container at once, and as many components of each type.
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

class TenThousandComponents : public ::testing::TestWithParam<ComponentKind>
{
};

INSTANTIATE_TEST_SUITE_P(EveryType,
                         TenThousandComponents,
                         ::testing::ValuesIn(kComponents),
                         [](const auto& kind) { return kind.param.Name(); });

TEST_P(TenThousandComponents, DoNotMeet)
{
    ExpectComponentsApart(GetParam(), 10000);
}

}  // namespace
}  // namespace Reliability
