// Call sequences on handles of the three program streams. Every block is read structure by
// structure and compared with the frame that went in.
#include <algorithm>
#include <array>

#include "CallSequence.h"
#include "Require.h"
#include "readers/PsReader.h"

using namespace Orbel::Wrapton;
using Fuzz::Bytes;
using Fuzz::Require;

namespace
{

constexpr std::array<uint32_t, 3> kTypes = {
    SG_STREAM_TYPE_PS, SG_STREAM_TYPE_QVPS, SG_STREAM_TYPE_GAYSPS};
constexpr std::array<uint32_t, 8> kEncodings = {SG_ENCODE_VIDEO_HI_H264,
                                                SG_ENCODE_VIDEO_QV_H264,
                                                SG_ENCODE_VIDEO_MPEG4,
                                                SG_ENCODE_VIDEO_QV_H265,
                                                SG_ENCODE_AUDIO_MP2,
                                                SG_ENCODE_AUDIO_AAC,
                                                SG_ENCODE_AUDIO_G711A,
                                                SG_ENCODE_AUDIO_G711U};
/// Around the payload of a PES packet, the reach of its length field and the largest picture.
constexpr std::array<uint32_t, 10> kSizes = {
    300, 61440, 61441, 65527, 65528, 130000, 0xFFFFE, 0xFFFFF, 0x100000, 0x300000};
/// The most that a PES packet with one time stamp can say it has.
constexpr std::size_t kLongestPayload = 65535 - 8;

/// Where the start codes of 4 bytes are.
std::vector<std::size_t> StartCodes(const Bytes& frame)
{
    std::vector<std::size_t> codes;
    for (std::size_t at = 0; at + 4 <= frame.size(); ++at)
    {
        if (frame[at] == 0 && frame[at + 1] == 0 && frame[at + 2] == 0 && frame[at + 3] == 1)
            codes.push_back(at);
    }
    return codes;
}

/// Whether a unit ahead of the last one is too long for the length field, which then wraps.
bool Wraps(const std::vector<std::size_t>& codes)
{
    for (std::size_t i = 1; i < codes.size(); ++i)
    {
        if (codes[i] - codes[i - 1] > kLongestPayload - 5) return true;
    }
    return false;
}

class Ps final : public Fuzz::Container
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

    [[nodiscard]] bool TakesPackets() const override { return true; }

    void AfterFrame(const Fuzz::FrameCall& call) override
    {
        if (call.blocks.empty()) return;

        Require(call.blocks.size() == 1, "a frame is one block");
        const Bytes& block = call.blocks[0].bytes;
        if (call.packet != nullptr)
        {
            const std::size_t common = std::min(block.size(), call.packet->size());
            Require(std::equal(block.begin(),
                               block.begin() + static_cast<std::ptrdiff_t>(common),
                               call.packet->begin()),
                    "the packet has what left through the callback, as far as it reaches");
        }
        const bool video = call.record.frame_type == SG_FRAME_TYPE_VIDEO;
        // The encoding of an I frame counts for the pictures behind it.
        const bool key = video && call.record.frame_sub_type == SG_FRAME_SUB_TYPE_I;
        if (key) m_encode = static_cast<uint16_t>(call.record.frame_encode);
        std::size_t from = 0;
        if (video && m_type != SG_STREAM_TYPE_GAYSPS && m_encode != SG_ENCODE_VIDEO_MPEG4)
        {
            const auto codes = StartCodes(call.before);
            if (Wraps(codes)) return;
            from = codes.empty() ? 0 : codes.front();
        }
        if (!video && call.before.size() > kLongestPayload) return;
        CheckPayload(block, video ? 0xE0 : 0xC0, std::span(call.before).subspan(from));
    }

    void AfterTailer(int result, const Fuzz::Output& output) override
    {
        Require(result == 0 && output.blocks.empty(), "a tailer does nothing");
    }

private:
    void CheckPayload(const Bytes& block,
                      uint32_t stream,
                      std::span<const unsigned char> frame) const
    {
        // Kept: the map of this flavour counts two bytes too many.
        const std::size_t surplus = m_type == SG_STREAM_TYPE_GAYSPS ? 2 : 0;
        try
        {
            Bytes payload;
            for (const Readers::PesPacket& packet : Readers::ReadPs(block, surplus).packets)
            {
                Require(packet.stream == stream, "a packet is of the frame's kind");
                payload.insert(payload.end(), packet.payload.begin(), packet.payload.end());
            }
            Require(std::equal(payload.begin(), payload.end(), frame.begin(), frame.end()),
                    "a frame is kept");
        }
        catch (const Readers::PsError& error)
        {
            Require(false, error.what());
        }
    }

    uint32_t m_type = 0;
    uint16_t m_encode = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Ps ps;
    Fuzz::RunCalls(Fuzz::ByteSource(data, size), ps);
    return 0;
}
