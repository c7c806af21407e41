// Call sequences on ASF handles. The file of an honest sink is read back at each tailer, that of a
// broadcast at the end.
#include <array>

#include "CallSequence.h"
#include "Require.h"
#include "readers/AsfReader.h"

using namespace Orbel::Wrapton;
using Fuzz::Bytes;
using Fuzz::Require;

namespace
{

constexpr std::array<uint32_t, 2> kTypes = {SG_STREAM_TYPE_ASF, SG_STREAM_TYPE_STREAM_ASF};
constexpr std::array<uint32_t, 9> kEncodings = {SG_ENCODE_VIDEO_HI_H264,
                                                SG_ENCODE_VIDEO_MPEG4,
                                                SG_ENCODE_VIDEO_MPEG4,
                                                SG_ENCODE_VIDEO_JPEG,
                                                SG_ENCODE_AUDIO_PCM16,
                                                SG_ENCODE_AUDIO_G711A,
                                                SG_ENCODE_AUDIO_G711U,
                                                SG_ENCODE_AUDIO_MP2,
                                                SG_ENCODE_AUDIO_AAC};
/// Around a packet's payload and around what fills 2 MiB, with and without a header ahead.
constexpr std::array<uint32_t, 8> kSizes = {
    2047, 2048, 2049, 70000, 1009 * 2048, 1009 * 2048 + 1, 1010 * 2048, 1010 * 2048 + 1};

/// A frame that is in the file.
struct Stored
{
    uint32_t stream;
    bool mayBeCut;  // at its front
    Bytes bytes;
};

bool Matches(const Stored& stored, const Readers::AsfFrame& found)
{
    if (found.stream != stored.stream || found.bytes.size() > stored.bytes.size()) return false;
    if (!stored.mayBeCut && found.bytes.size() != stored.bytes.size()) return false;
    return std::equal(
        found.bytes.begin(), found.bytes.end(), stored.bytes.end() - std::ssize(found.bytes));
}

class Asf final : public Fuzz::Container
{
public:
    void* Create(Fuzz::ByteSource& source, SGCreateParam& create) override
    {
        m_file = source.Choose(kTypes) == SG_STREAM_TYPE_ASF;
        return SG_CreateHandle(m_file ? SG_STREAM_TYPE_ASF : SG_STREAM_TYPE_STREAM_ASF, &create);
    }

    [[nodiscard]] Fuzz::Palette Frames() const override
    {
        return {.encodings = kEncodings, .sizes = kSizes};
    }

    [[nodiscard]] Fuzz::SinkRules Rules() const override { return {.emptyBlocks = true}; }

    void AfterFrame(const Fuzz::FrameCall& call) override
    {
        // Bits and byte rate are cut to their fields, which a reader takes amiss.
        const uint64_t bits = call.record.bit_per_sample;
        if (bits > 0xFFFF || bits * call.record.sample_rate / 8 > 0xFFFFFFFF) m_consistent = false;
        if (call.blocks.empty() || call.blocks[0].bytes.empty()) return;

        Require(call.blocks.size() == 1, "a frame is one block");
        const bool video = call.record.frame_type == SG_FRAME_TYPE_VIDEO;
        m_stored.push_back({.stream = video ? 1u : 2u,
                            .mayBeCut = video && call.record.frame_encode == SG_ENCODE_VIDEO_MPEG4,
                            .bytes = call.before});
    }

    void AfterTailer(int result, const Fuzz::Output& output) override
    {
        if (result == 0 && m_file) ReadBack(output);
    }

    void AtEnd(const Fuzz::Output& output) override
    {
        if (!m_file) ReadBack(output);
    }

private:
    void ReadBack(const Fuzz::Output& output) const
    {
        if (!output.honest || !m_consistent || m_stored.empty()) return;
        try
        {
            const auto file = Readers::ReadAsf(output.file.Flatten());
            Require(file.frames.size() == m_stored.size(), "every frame comes back");
            for (std::size_t i = 0; i < m_stored.size(); ++i)
            {
                Require(Matches(m_stored[i], file.frames[i]), "a frame comes back");
            }
        }
        catch (const Readers::AsfError& error)
        {
            Require(false, error.what());
        }
    }

    bool m_file = false;
    bool m_consistent = true;  // attributes fit their fields
    std::vector<Stored> m_stored;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Asf asf;
    Fuzz::RunCalls(Fuzz::ByteSource(data, size), asf);
    return 0;
}
