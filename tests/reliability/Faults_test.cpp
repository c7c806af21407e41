// Memory that runs out at any call, and sinks that answer anything.
#include <climits>
#include <memory>
#include <optional>

#include "reliability/BlockLog.h"
#include "reliability/FixedSources.h"
#include "reliability/Shortages.h"
#include "reliability/Subject.h"
#include "support/Allocators.h"

namespace Reliability
{
namespace
{

using namespace Orbel::Wrapton;
using Support::AllocatorLog;

/// A call that was made, with its result and the blocks that it gave.
struct Call
{
    bool tailer = false;
    int result = 0;
    BlockLog blocks;
    bool behindFailure = false;
};
using Calls = std::vector<Call>;

bool IsCode(int result)
{
    return result >= SG_ERR_NOERR && result <= SG_ERR_EMPTY_POINTER;
}

/// The n-th call of the caller's allocator.
class CallersFailure final : public Failure
{
public:
    explicit CallersFailure(std::size_t number) : m_number(number) { m_log.FailCall(number); }

    [[nodiscard]] bool HasCome() const override { return m_log.Asked().size() >= m_number; }
    [[nodiscard]] std::size_t LiveCount() const { return m_log.LiveCount(); }

private:
    AllocatorLog m_log;
    std::size_t m_number;
};

/// Where the blocks of a call go, whatever is the matter with the allocator.
void LogInPlenty(SGOutputData* block, void* user)
{
    const Support::Plenty account;
    Log(block, user);
}

/// Header, frames, backup and tailer, all of them whatever they give. Empty without a handle.
Calls Record(uint32_t type, SGCreateParam create, Failure& failure)
{
    Calls calls;
    BlockLog log;
    create.user = &log;
    create.sg_datacb = &LogInPlenty;
    Subject subject(type, create, &failure);
    if (!subject.Exists()) return calls;

    const auto note = [&](int result, bool tailer = false) {
        calls.push_back({tailer, result, std::exchange(log, {}), failure.HasCome()});
    };
    note(subject.Header());
    for (const Support::Frame& frame : Script())
    {
        note(subject.Input(frame));
    }
    EXPECT_GE(subject.Backup(), 0);
    note(0);
    note(subject.Tailer(), true);
    return calls;
}

/// All as without the failure up to the call in which it came, which gives nothing if it says so.
void ExpectIntact(const Calls& failing, const Calls& good)
{
    for (std::size_t at = 0; at < failing.size(); ++at)
    {
        const Call& call = failing[at];
        ASSERT_TRUE(IsCode(call.result)) << "call " << at;
        // A tailer can be repeated, and what it gives then stands over what it gave.
        ASSERT_TRUE(call.result == 0 || call.blocks.empty() || call.tailer) << "call " << at;
        if (call.behindFailure) continue;
        ASSERT_EQ(call.result, good[at].result) << "call " << at;
        ASSERT_TRUE(call.blocks == good[at].blocks) << "call " << at;
    }
}

class Faults : public ::testing::TestWithParam<uint32_t>
{
protected:
    [[nodiscard]] static SGCreateParam WithAllocator()
    {
        SGCreateParam create{};
        create.sg_malloc = &AllocatorLog::Malloc;
        create.sg_free = &AllocatorLog::Free;
        return create;
    }

    const FixedSources m_sources;
};

INSTANTIATE_TEST_SUITE_P(EveryContainer,
                         Faults,
                         ::testing::ValuesIn(kContainers),
                         [](const auto& type) { return NameOf(type.param); });

constexpr std::size_t kMostAllocations = 3000;

TEST_P(Faults, NoCallOfTheCallersAllocatorIsOneTooManyToFail)
{
    std::optional<CallersFailure> none(std::in_place, kNever);
    const Calls good = Record(GetParam(), WithAllocator(), *none);
    ASSERT_FALSE(good.empty());
    none.reset();  // there is one account at a time
    bool came = true;
    for (std::size_t number = 1; came; ++number)
    {
        ASSERT_LT(number, kMostAllocations);
        CallersFailure failure(number);
        const Calls failing = Record(GetParam(), WithAllocator(), failure);
        came = failure.HasCome();
        SCOPED_TRACE("allocation " + std::to_string(number));
        ExpectIntact(failing, good);
        ASSERT_EQ(failure.LiveCount(), 0u);
    }
}

TEST_P(Faults, NoAllocationOfTheLibraryIsOneTooManyToFail)
{
    LibrarysFailure none(kNever);
    const Calls good = Record(GetParam(), {}, none);
    ASSERT_FALSE(good.empty());
    bool came = true;
    for (std::size_t number = 1; came; ++number)
    {
        ASSERT_LT(number, kMostAllocations);
        LibrarysFailure failure(number);
        const Calls failing = Record(GetParam(), {}, failure);
        came = failure.HasCome();
        SCOPED_TRACE("allocation " + std::to_string(number));
        ExpectIntact(failing, good);
    }
}

TEST_P(Faults, WithoutAnyMemoryOfTheCallerEveryCallIsAnsweredAndNothingLeaves)
{
    BlockLog log;
    SGCreateParam create = LogTo(log);
    create.sg_malloc = [](int) -> void* { return nullptr; };
    create.sg_free = [](void*, int) { ADD_FAILURE() << "nothing was given"; };
    Subject subject(GetParam(), create);
    ASSERT_TRUE(subject.Exists());
    EXPECT_TRUE(IsCode(subject.Header()));
    for (const Support::Frame& frame : Script())
    {
        EXPECT_TRUE(IsCode(subject.Input(frame)));
    }
    EXPECT_GE(subject.Backup(), 0);
    EXPECT_TRUE(IsCode(subject.Tailer()));
    // These ask it for nothing.
    const bool independent = GetParam() == SG_STREAM_TYPE_AVI || GetParam() == SG_STREAM_TYPE_WAV ||
                             GetParam() == SG_STREAM_TYPE_OMF || GetParam() == SG_STREAM_TYPE_TS;
    EXPECT_EQ(log.empty(), !independent);
}

/// A sink that answers blocks by a rule.
struct AnsweringSink
{
    int32_t (*rule)(int32_t size, std::size_t number);
    BlockLog log;
    uint64_t offered = 0;

    static void Receive(SGOutputData* block, void* user)
    {
        auto& self = *static_cast<AnsweringSink*>(user);
        Log(block, &self.log);
        self.offered += static_cast<uint64_t>(block->data_size);
        // The record is the callback's to write to; what it leaves there must not matter.
        const int32_t answer = self.rule(block->data_size, self.log.size());
        *block = {};
        block->data_size = answer;
        block->offset_pos64 = -1;
        block->data_pointer = nullptr;
    }
};

constexpr int32_t (*kRules[])(int32_t, std::size_t) = {
    [](int32_t size, std::size_t) { return size / 2; },
    [](int32_t, std::size_t) { return 0; },
    [](int32_t, std::size_t) { return -1; },
    [](int32_t, std::size_t) { return INT_MIN; },
    [](int32_t, std::size_t) { return INT_MAX; },
    [](int32_t size, std::size_t number) { return number % 2 == 0 ? size - 1 : size; },
    [](int32_t size, std::size_t number) { return number % 3 == 0 ? -size : size; }};

TEST_P(Faults, SinksThatAnswerAnythingMovePositionsAndNothingElse)
{
    BlockLog honest;
    SGCreateParam create = LogTo(honest);
    {
        Subject subject(GetParam(), create);
        subject.Header();
        for (const Support::Frame& frame : Script())
        {
            subject.Input(frame);
        }
    }
    for (const auto rule : kRules)
    {
        AnsweringSink sink{.rule = rule, .log = {}};
        create.user = &sink;
        create.sg_datacb = &AnsweringSink::Receive;
        Subject subject(GetParam(), create);
        subject.Header();
        for (const Support::Frame& frame : Script())
        {
            subject.Input(frame);
        }
        // Frames leave as they do otherwise, at positions inside what was offered.
        ASSERT_EQ(sink.log.size(), honest.size());
        for (std::size_t block = 0; block < honest.size(); ++block)
        {
            EXPECT_EQ(sink.log[block].bytes.size(), honest[block].bytes.size()) << block;
            EXPECT_EQ(sink.log[block].origin, honest[block].origin) << block;
            EXPECT_GE(sink.log[block].position, 0) << block;
            EXPECT_LE(sink.log[block].position, honest[block].position) << block;
        }
        EXPECT_TRUE(IsCode(subject.Tailer()));
    }
}

/// A sink from which frames go into another handle, as a tee of two files does.
struct NestingSink
{
    BlockLog log;
    Subject* inner = nullptr;
    std::size_t next = 0;

    static void Receive(SGOutputData* block, void* user)
    {
        auto& self = *static_cast<NestingSink*>(user);
        if (self.next < Script().size()) self.inner->Input(Script()[self.next++]);
        // Logged behind the call: the block is still as it was.
        Log(block, &self.log);
    }
};

TEST_P(Faults, SinkMayCallAnotherHandleOfTheSameContainer)
{
    LibrarysFailure none(kNever);
    const Calls alone = Record(GetParam(), {}, none);

    BlockLog innerLog;
    Subject inner(GetParam(), LogTo(innerLog));
    inner.Header();
    NestingSink sink;
    sink.inner = &inner;
    SGCreateParam create{};
    create.user = &sink;
    create.sg_datacb = &NestingSink::Receive;
    Subject outer(GetParam(), create);
    outer.Header();
    for (const Support::Frame& frame : Script())
    {
        outer.Input(frame);
    }
    outer.Tailer();

    // The other handle had its header and as many frames as blocks came.
    BlockLog expected;
    BlockLog expectedInner;
    std::size_t call = 0;
    for (const Call& one : alone)
    {
        expected.insert(expected.end(), one.blocks.begin(), one.blocks.end());
        if (call++ > sink.next) continue;
        expectedInner.insert(expectedInner.end(), one.blocks.begin(), one.blocks.end());
    }
    EXPECT_TRUE(sink.log == expected);
    EXPECT_TRUE(innerLog == expectedInner);
    EXPECT_GT(sink.next, 10u);
}

}  // namespace
}  // namespace Reliability
