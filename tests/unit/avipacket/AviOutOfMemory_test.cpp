// An AVI recording when there is no memory for a moment: what is refused leaves no trace.
#include <algorithm>
#include <array>
#include <memory>

#include "Wrapton.h"
#include "golden/avi/Pieces.h"
#include "support/FailingNew.h"
#include "support/Frames.h"

namespace Orbel::Wrapton
{
namespace
{

using Support::FailingNew;

/// Keeps places and a sum of the bytes without asking for memory itself.
struct Places
{
    struct Place
    {
        int64_t position = 0;
        int32_t size = 0;
        uint32_t sum = 0;

        bool operator==(const Place&) const = default;
    };
    std::array<Place, 2048> places{};
    std::size_t count = 0;

    static void Callback(SGOutputData* block, void* user)
    {
        auto& self = *static_cast<Places*>(user);
        Place& place = self.places.at(self.count++);
        place = {.position = block->offset_pos64, .size = block->data_size, .sum = 0};
        const int32_t looked_at = std::min(block->data_size, 65536);
        for (int32_t at = 0; at < looked_at; ++at)
            place.sum = place.sum * 31 + block->data_pointer[at];
    }
};

class AviWithoutMemory : public ::testing::Test
{
protected:
    static SGHeaderInfo HeaderRecord()
    {
        SGHeaderInfo header{};
        header.video = {.bVideo = 1, .videoencode = 2, .width = 64, .height = 36, .framerate = 25};
        return header;
    }

    /// One handle and what came out of it.
    class Run
    {
    public:
        explicit Run(uint32_t largest = 64) : m_bytes(new unsigned char[largest]())
        {
            SGCreateParam create{};
            create.user = &m_places;
            create.sg_datacb = &Places::Callback;
            m_handle = SG_CreateHandle(SG_STREAM_TYPE_AVI, &create);
        }
        Run(const Run&) = delete;
        Run& operator=(const Run&) = delete;
        ~Run() { SG_DestroyHandle(m_handle); }

        int Header()
        {
            SGHeaderInfo header = HeaderRecord();
            return SG_CreateHeader(m_handle, &header);
        }
        int Input(uint32_t size)
        {
            SGFrameInfo record{};
            record.struct_size = sizeof(record);
            record.frame_pointer = m_bytes.get();
            record.frame_size = size;
            record.frame_type = SG_FRAME_TYPE_VIDEO;
            return SG_InputFrame(m_handle, &record);
        }
        int Tailer() { return SG_CreateTailer(m_handle, nullptr); }

        [[nodiscard]] const Places& Out() const { return m_places; }

    private:
        Places m_places;
        std::unique_ptr<unsigned char[]> m_bytes;
        void* m_handle;
    };

    static void ExpectSame(const Run& one, const Run& other)
    {
        ASSERT_EQ(one.Out().count, other.Out().count);
        for (std::size_t at = 0; at < one.Out().count; ++at)
        {
            EXPECT_EQ(one.Out().places.at(at), other.Out().places.at(at)) << at;
        }
    }
};

TEST_F(AviWithoutMemory, HeaderIsRefusedWithoutOutputAndCanBeTriedAgain)
{
    std::size_t number = 1;
    for (;; ++number)
    {
        Run run;
        int result = 0;
        std::size_t asked = 0;
        {
            const FailingNew fail(number);
            result = run.Header();
            asked = FailingNew::Asked();
        }
        if (asked < number)
        {
            EXPECT_EQ(result, SG_ERR_NOERR);
            break;
        }
        EXPECT_EQ(result, SG_ERR_PARAM_ERR) << number;
        EXPECT_EQ(run.Out().count, 0u) << number;
        EXPECT_EQ(run.Input(10), SG_ERR_NOERR) << number;
        EXPECT_EQ(run.Out().count, 0u) << number;
        EXPECT_EQ(run.Header(), SG_ERR_NOERR) << number;
        EXPECT_EQ(run.Out().count, 3u) << number;
    }
    EXPECT_GT(number, 3u);  // two standard indexes and idx1
}

TEST_F(AviWithoutMemory, FrameIsRefusedAndLeavesNoTrace)
{
    Run run;
    ASSERT_EQ(run.Header(), SG_ERR_NOERR);
    {
        const FailingNew fail(1, true);
        EXPECT_EQ(run.Input(64), SG_ERR_MEMORY_OUT);
    }
    EXPECT_EQ(run.Input(5), SG_ERR_NOERR);
    EXPECT_EQ(run.Tailer(), SG_ERR_NOERR);

    Run undisturbed;
    undisturbed.Header();
    undisturbed.Input(5);
    undisturbed.Tailer();
    ExpectSame(run, undisturbed);
}

// idx1 grows at its 256th entry, ix00 at its 509th.
TEST_F(AviWithoutMemory, FrameIsRefusedWhenAnIndexCannotGrow)
{
    Run run;
    ASSERT_EQ(run.Header(), SG_ERR_NOERR);
    int refused = 0;
    for (int frame = 0; frame < 600; ++frame)
    {
        int result = 0;
        std::size_t asked = 0;
        {
            const FailingNew fail(frame == 0 ? 0 : 1, frame != 0);
            result = run.Input(3);
            asked = FailingNew::Asked();
        }
        if (frame == 0) continue;
        EXPECT_EQ(result, asked == 0 ? SG_ERR_NOERR : SG_ERR_PARAM_ERR) << frame;
        if (asked == 0) continue;
        ++refused;
        EXPECT_EQ(run.Input(3), SG_ERR_NOERR) << frame;
    }
    EXPECT_GE(refused, 2);
    EXPECT_EQ(run.Tailer(), SG_ERR_NOERR);

    Run undisturbed;
    undisturbed.Header();
    for (int frame = 0; frame < 600; ++frame)
        undisturbed.Input(3);
    undisturbed.Tailer();
    ExpectSame(run, undisturbed);
}

TEST_F(AviWithoutMemory, SteadyStateAsksForNone)
{
    Run run;
    ASSERT_EQ(run.Header(), SG_ERR_NOERR);
    ASSERT_EQ(run.Input(64), SG_ERR_NOERR);
    std::size_t asked = 0;
    {
        const FailingNew count(0);
        for (int frame = 0; frame < 200; ++frame)
            run.Input(64);
        asked = FailingNew::Asked();
    }
    EXPECT_EQ(asked, 0u);
}

TEST_F(AviWithoutMemory, RecordingGoesOnOnceTheNextRiffCanBeOpened)
{
    constexpr uint32_t kSize = 256u << 20;
    Run run(kSize);
    ASSERT_EQ(run.Header(), SG_ERR_NOERR);
    for (int frame = 0; frame < 3; ++frame)
        ASSERT_EQ(run.Input(kSize), SG_ERR_NOERR);
    {
        // The frame is stored and closes the RIFF; the next RIFF cannot be opened.
        const FailingNew fail(1, true);
        EXPECT_EQ(run.Input(kSize), SG_ERR_NOERR);
        const std::size_t count = run.Out().count;
        EXPECT_EQ(run.Input(10), SG_ERR_EMPTY_POINTER);
        EXPECT_EQ(run.Input(10), SG_ERR_EMPTY_POINTER);
        EXPECT_EQ(run.Out().count, count);
    }
    EXPECT_EQ(run.Input(10), SG_ERR_NOERR);
    EXPECT_EQ(run.Tailer(), SG_ERR_NOERR);

    Run undisturbed(kSize);
    undisturbed.Header();
    for (int frame = 0; frame < 4; ++frame)
        undisturbed.Input(kSize);
    undisturbed.Input(10);
    undisturbed.Tailer();
    ExpectSame(run, undisturbed);
}

TEST_F(AviWithoutMemory, TailerCompletesTheFileAlthoughTheNextRiffIsMissing)
{
    constexpr uint32_t kSize = 512u << 20;
    Run run(kSize);
    ASSERT_EQ(run.Header(), SG_ERR_NOERR);
    ASSERT_EQ(run.Input(kSize), SG_ERR_NOERR);
    std::size_t count = 0;
    {
        const FailingNew fail(1, true);
        EXPECT_EQ(run.Input(kSize), SG_ERR_NOERR);
        count = run.Out().count;
        EXPECT_EQ(run.Tailer(), SG_ERR_NOERR);
    }
    ASSERT_EQ(run.Out().count, count + 1);
    EXPECT_EQ(run.Out().places.at(count).position, 12);
    EXPECT_EQ(run.Out().places.at(count).size, 4104);
}

}  // namespace
}  // namespace Orbel::Wrapton
