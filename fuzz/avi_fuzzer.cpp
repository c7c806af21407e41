// Call sequences on AVI handles. The file of an honest sink is read back at the first tailer.
#include <array>
#include <stdexcept>

#include "AviChunks.h"
#include "CallSequence.h"
#include "Require.h"

using namespace Orbel::Wrapton;
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
        m_stored.Add(call.record, call.before);
    }

    void AfterTailer(int result, const Fuzz::Output& output) override
    {
        if (result != 0 || m_headers == 0) return;
        if (m_tailers++ == 0 && m_headers == 1 && output.honest) ReadBack(output);
    }

private:
    void ReadBack(const Fuzz::Output& output) const
    {
        try
        {
            m_stored.Compare(output.file.Flatten());
        }
        catch (const std::runtime_error& error)
        {
            Require(false, error.what());
        }
    }

    int m_headers = 0;
    int m_tailers = 0;
    Fuzz::AviChunks m_stored;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Avi avi;
    Fuzz::RunCalls(Fuzz::ByteSource(data, size), avi);
    return 0;
}
