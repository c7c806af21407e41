// Call sequences on AVI handles. The file of an honest sink is read back at the first tailer.
#include <array>
#include <stdexcept>

#include "CallSequence.h"
#include "Require.h"
#include "readers/AviReader.h"

using namespace Orbel::Wrapton;
using Fuzz::Bytes;
using Fuzz::Require;

namespace
{

constexpr std::array<uint32_t, 9> kEncodings = {SG_ENCODE_VIDEO_HI_H264,
                                                SG_ENCODE_VIDEO_HI_H264,
                                                SG_ENCODE_VIDEO_MPEG4,
                                                SG_ENCODE_VIDEO_JPEG,
                                                SG_ENCODE_AUDIO_PCM16,
                                                SG_ENCODE_AUDIO_G711A,
                                                SG_ENCODE_AUDIO_MP2,
                                                SG_ENCODE_AUDIO_AAC,
                                                0xFFFFFFFF};
/// Around the first sizes of the chunk buffer.
constexpr std::array<uint32_t, 6> kSizes = {4087, 4088, 4089, 16383, 70001, 1048577};

class Avi final : public Fuzz::Container
{
public:
    void* Create(Fuzz::ByteSource& /*source*/, SGCreateParam& create) override
    {
        return SG_CreateHandle(SG_STREAM_TYPE_AVI, &create);
    }

    [[nodiscard]] Fuzz::Palette Frames() const override
    {
        return {.encodings = kEncodings, .sizes = kSizes};
    }

    void AfterHeader(int result, const Fuzz::Output& /*output*/) override
    {
        m_headers += result == 0 ? 1 : 0;
    }

    void AfterFrame(const Fuzz::FrameCall& call) override
    {
        if (call.blocks.empty()) return;

        Require(m_headers > 0, "without a header no frame is stored");
        Require(call.blocks.size() == 1, "a frame is one block");
        const bool odd = call.before.size() % 2 != 0;
        Require(call.blocks[0].bytes.size() == 8 + call.before.size() + (odd ? 1 : 0),
                "a chunk is as long as its frame, with its header and padding");
        m_stored.push_back(
            {call.record.frame_type == SG_FRAME_TYPE_VIDEO ? "00dc" : "01wb", call.before});
    }

    void AfterTailer(int result, const Fuzz::Output& output) override
    {
        if (result != 0 || m_headers == 0) return;
        if (m_tailers++ == 0 && m_headers == 1 && output.honest) ReadBack(output);
    }

private:
    struct Stored
    {
        std::string code;
        Bytes bytes;
    };

    void ReadBack(const Fuzz::Output& output) const
    {
        try
        {
            const auto file = Readers::ReadAvi(output.file.Flatten());
            Require(file.chunks.size() == m_stored.size(), "every frame comes back");
            for (std::size_t i = 0; i < m_stored.size(); ++i)
            {
                Require(file.chunks[i].code == m_stored[i].code, "a frame is in its stream");
                Require(file.chunks[i].data == m_stored[i].bytes, "a frame comes back");
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
    Avi avi;
    Fuzz::RunCalls(Fuzz::ByteSource(data, size), avi);
    return 0;
}
