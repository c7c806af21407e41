// Call sequences on FLV handles. Every tag is compared with the frame that went in.
#include <array>

#include "CallSequence.h"
#include "Require.h"
#include "readers/AnnexBReference.h"
#include "readers/FlvReader.h"

using namespace Orbel::Wrapton;
using Fuzz::Bytes;
using Fuzz::Require;

namespace
{

constexpr std::array<uint32_t, 2> kTypes = {SG_STREAM_TYPE_FLV, SG_STREAM_TYPE_STREAM_FLV};
constexpr std::array<uint32_t, 8> kEncodings = {SG_ENCODE_VIDEO_HI_H264,
                                                SG_ENCODE_VIDEO_HI_H264,
                                                SG_ENCODE_VIDEO_QV_H264,
                                                SG_ENCODE_AUDIO_PCM16,
                                                SG_ENCODE_AUDIO_PCM16,
                                                SG_ENCODE_AUDIO_PCM,
                                                SG_ENCODE_AUDIO_AAC,
                                                0xFFFFFFFF};
/// Around the 2 MiB of the work buffer, alone and with what stands ahead of a first frame.
constexpr std::array<uint32_t, 8> kSizes = {
    1000, 65536, 0x1FFE00, 0x1FFFEB, 0x1FFFEC, 0x1FFFF0, 0x1FFFF1, 0x200000};
constexpr uint64_t kGrowth = 100;

/// The tags of a block, which has a header of its own when it begins a recording.
std::vector<Readers::FlvTag> TagsOf(const Bytes& block)
{
    Bytes file = {'F', 'L', 'V', 1, 5, 0, 0, 0, 9, 0, 0, 0, 0};
    if (block.front() == 'F') file.clear();
    file.insert(file.end(), block.begin(), block.end());
    try
    {
        return Readers::ReadFlv(file).tags;
    }
    catch (const Readers::FlvError& error)
    {
        Require(false, error.what());
        return {};
    }
}

bool EndsWith(const Bytes& body, std::size_t skipped, const Bytes& bytes)
{
    return body.size() == skipped + bytes.size() &&
           std::equal(bytes.begin(), bytes.end(), body.end() - std::ssize(bytes));
}

class Flv final : public Fuzz::Container
{
public:
    void* Create(Fuzz::ByteSource& source, SGCreateParam& create) override
    {
        m_type = source.Choose(kTypes);
        return SG_CreateHandle(m_type, &create);
    }

    [[nodiscard]] Fuzz::Palette Frames() const override
    {
        return {.encodings = kEncodings, .sizes = kSizes};
    }

    void AfterFrame(const Fuzz::FrameCall& call) override
    {
        if (call.blocks.empty()) return;

        Require(call.blocks.size() == 1, "a frame is one block");
        const auto tags = TagsOf(call.blocks[0].bytes);
        Require(tags.size() == (m_begun ? 1u : 3u), "the first block has the header's tags");
        m_begun = true;
        const Readers::FlvTag& tag = tags.back();
        if (call.record.frame_type == SG_FRAME_TYPE_AUDIO)
        {
            Require(tag.type == 8 && EndsWith(tag.body, 1, call.before), "audio is kept");
            return;
        }
        const auto units =
            Readers::ReferenceH264ToAvc(call.before, call.before.size() + kGrowth).written;
        Require(tag.type == 9 && EndsWith(tag.body, 5, units), "NAL units are kept");
    }

    void AfterTailer(int result, const Fuzz::Output& output) override
    {
        if (m_type == SG_STREAM_TYPE_STREAM_FLV) Require(output.blocks.empty(), "it has no tailer");
        if (result != 0 || output.blocks.empty()) return;

        Require(output.blocks.size() == 2, "a tailer is two blocks");
        Require(TagsOf(output.blocks[0].bytes).size() == 1, "the end of the sequence");
        const auto closing = TagsOf(output.blocks[1].bytes);
        Require(closing.size() == 1 && closing[0].type == 18, "the script tag");
    }

private:
    uint32_t m_type = 0;
    bool m_begun = false;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Flv flv;
    Fuzz::RunCalls(Fuzz::ByteSource(data, size), flv);
    return 0;
}
