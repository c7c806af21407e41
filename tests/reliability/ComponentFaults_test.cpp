// Memory that runs out at any allocation of a component's call.
#include "reliability/BlockLog.h"
#include "reliability/ComponentSubject.h"
#include "reliability/FixedSources.h"
#include "reliability/Shortages.h"

namespace Reliability
{
namespace
{

using namespace Orbel::Wrapton;

/// A call that was made, what it left in the slot for errors, and the blocks that it gave.
struct Call
{
    bool result = false;
    uint32_t error = 0;
    BlockLog blocks;
    bool behindFailure = false;
};
using Calls = std::vector<Call>;

/// A whole recording, all of it whatever the calls say. Empty without a component.
Calls Record(const ComponentKind& kind, LibrarysFailure& failure)
{
    Calls calls;
    BlockLog log;
    const Take take = [&log](int64_t position, const unsigned char* bytes, std::size_t size)
    {
        const Support::Plenty account;
        log.push_back({0, position, {bytes, bytes + size}});
    };
    setLastError(0);
    ComponentSubject subject(kind, take, &failure);
    if (!subject.Exists())
    {
        EXPECT_EQ(getLastError(), uint32_t{errorParam});
        return calls;
    }
    const auto note = [&](bool result)
    {
        calls.push_back({result, getLastError(), std::exchange(log, {}), failure.HasCome()});
        setLastError(0);
    };
    setLastError(0);
    note(subject.Begin());
    for (const Support::Frame& frame : SmallFrames())
        note(subject.Input(frame));
    subject.Backup();
    note(true);
    note(subject.End());
    return calls;
}

/// All as without the failure up to the call in which it came; a call that gives nothing says why.
void ExpectIntact(const Calls& failing, const Calls& good)
{
    for (std::size_t at = 0; at < failing.size(); ++at)
    {
        const Call& call = failing[at];
        ASSERT_TRUE(call.result || call.error == errorParam) << "call " << at;
        if (call.behindFailure) continue;
        ASSERT_EQ(call.result, good[at].result) << "call " << at;
        ASSERT_TRUE(call.blocks == good[at].blocks) << "call " << at;
    }
}

class ComponentFaults : public ::testing::TestWithParam<ComponentKind>
{
protected:
    const FixedSources m_sources;
};

INSTANTIATE_TEST_SUITE_P(EveryType,
                         ComponentFaults,
                         ::testing::ValuesIn(kComponents),
                         [](const auto& kind) { return kind.param.Name(); });

constexpr std::size_t kMostAllocations = 1000;

TEST_P(ComponentFaults, NoAllocationIsOneTooManyToFail)
{
    LibrarysFailure none(kNever);
    const Calls good = Record(GetParam(), none);
    ASSERT_FALSE(good.empty());
    std::size_t blocks = 0;
    for (const Call& call : good)
        blocks += call.blocks.size();
    ASSERT_GT(blocks, 2u);

    bool came = true;
    for (std::size_t number = 1; came; ++number)
    {
        ASSERT_LT(number, kMostAllocations);
        LibrarysFailure failure(number);
        const Calls failing = Record(GetParam(), failure);
        came = failure.HasCome();
        SCOPED_TRACE("allocation " + std::to_string(number));
        ExpectIntact(failing, good);
        ASSERT_TRUE(came || number > 3) << "there were some to fail";
    }
}

}  // namespace
}  // namespace Reliability
