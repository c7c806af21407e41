// Call sequences on Matroska handles. The file of an honest sink is read back at the first tailer.
#include <array>
#include <stdexcept>

#include "CallSequence.h"
#include "Require.h"
#include "readers/MkvReader.h"

using namespace Orbel::Wrapton;
using Fuzz::Bytes;
using Fuzz::Require;

namespace
{

constexpr std::array<uint32_t, 6> kEncodings = {SG_ENCODE_VIDEO_HI_H264,
                                                SG_ENCODE_VIDEO_HI_H264,
                                                SG_ENCODE_VIDEO_QV_H264,
                                                SG_ENCODE_VIDEO_MPEG4,
                                                SG_ENCODE_VIDEO_JPEG,
                                                SG_ENCODE_AUDIO_AAC};
/// Around the steps of a size's length, and what fills the 2 MiB of the work buffer.
constexpr std::array<uint32_t, 12> kSizes = {
    121, 122, 123, 124, 16377, 16378, 16379, 70000, 2097140, 2097144, 2097145, 2097152};
/// The room between SeekHead and clusters is filled at the tailer only. Kept: a second tailer
/// counts the clusters again and puts its cues as far behind them.
constexpr uint64_t kLargestGap = uint64_t{1} << 32;

class Mkv final : public Fuzz::Container
{
public:
    void* Create(Fuzz::ByteSource& /*source*/, SGCreateParam& create) override
    {
        return SG_CreateHandle(SG_STREAM_TYPE_MKV, &create);
    }

    [[nodiscard]] Fuzz::Palette Frames() const override
    {
        return {.encodings = kEncodings, .sizes = kSizes};
    }

    [[nodiscard]] Fuzz::SinkRules Rules() const override { return {.largestGap = kLargestGap}; }

    /// H.264 start codes become lengths in the caller's bytes.
    [[nodiscard]] bool WritesToFrames() const override { return true; }

    void AfterHeader(int result, const Fuzz::Output& /*output*/) override
    {
        m_headers += result == 0 ? 1 : 0;
    }

    void AfterFrame(const Fuzz::FrameCall& call) override
    {
        const bool units = call.record.frame_encode == SG_ENCODE_VIDEO_HI_H264 ||
                           call.record.frame_encode == SG_ENCODE_VIDEO_QV_H264;
        Require(units || call.after == call.before, "only start codes are written to");
        if (call.blocks.empty()) return;

        Require(m_headers > 0, "without a header no frame is stored");
        m_stored.push_back({call.record.frame_sub_type, call.after});
    }

    void AfterTailer(int result, const Fuzz::Output& output) override
    {
        Require((result == 0) == (m_headers > 0), "a tailer ends what a header began");
        if (result != 0) return;
        if (m_tailers++ == 0 && m_headers == 1 && output.honest) ReadBack(output);
    }

private:
    struct Stored
    {
        uint32_t subType;
        Bytes bytes;
    };

    void ReadBack(const Fuzz::Output& output) const
    {
        try
        {
            const auto file = Readers::ReadMkv(output.file.Flatten());
            Require(file.blocks.size() == m_stored.size(), "every frame comes back");
            for (std::size_t i = 0; i < m_stored.size(); ++i)
            {
                Require(file.blocks[i].data == m_stored[i].bytes, "a frame comes back");
                Require(file.blocks[i].key == (m_stored[i].subType != SG_FRAME_SUB_TYPE_P),
                        "a frame says what it is");
            }
        }
        catch (const std::runtime_error& error)
        {
            Require(false, error.what());
        }
    }

    int m_headers = 0;
    int m_tailers = 0;
    std::vector<Stored> m_stored;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Mkv mkv;
    Fuzz::RunCalls(Fuzz::ByteSource(data, size), mkv);
    return 0;
}
