// Many handles at once, their frames interleaved: each gives what it gives alone, and a handle that
// waits takes little memory.

#include "reliability/ManyHandles.h"

namespace Reliability
{
namespace
{

class ManyHandles : public ::testing::TestWithParam<uint32_t>
{
};

INSTANTIATE_TEST_SUITE_P(EveryContainer,
                         ManyHandles,
                         ::testing::ValuesIn(kContainers),
                         [](const auto& type) { return NameOf(type.param); });

TEST_P(ManyHandles, AThousandDoNotMeet)
{
    ExpectHandlesApart(GetParam(), 1000);
}

class ManyComponents : public ::testing::TestWithParam<ComponentKind>
{
};

INSTANTIATE_TEST_SUITE_P(EveryType,
                         ManyComponents,
                         ::testing::ValuesIn(kComponents),
                         [](const auto& kind) { return kind.param.Name(); });

TEST_P(ManyComponents, AThousandDoNotMeet)
{
    ExpectComponentsApart(GetParam(), 1000);
}

}  // namespace
}  // namespace Reliability
