// Call sequences on a WAV handle. Every block is compared with what a model of the container
// expects.
#include <algorithm>
#include <array>
#include <string_view>

#include "CallSequence.h"
#include "Require.h"

using namespace Orbel::Wrapton;
using Fuzz::Bytes;
using Fuzz::Require;

namespace
{

constexpr uint32_t kHeaderLen = 44;
/// Frames leave as they came: beyond 31 bits alone there is a limit.
constexpr std::array<uint32_t, 6> kSizes = {319, 320, 4096, 16384, 65537, 300000};

void PutText(Bytes& to, std::string_view text)
{
    to.insert(to.end(), text.begin(), text.end());
}

void PutLsb(Bytes& to, uint32_t value, int width)
{
    for (int i = 0; i < width; ++i)
    {
        to.push_back(static_cast<unsigned char>(value >> (8 * i)));
    }
}

/// The header of a file whose data ends at @p end.
Bytes HeaderOf(uint32_t end)
{
    Bytes header;
    PutText(header, "RIFF");
    PutLsb(header, end - 8, 4);
    PutText(header, "WAVEfmt ");
    PutLsb(header, 16, 4);     // size of the format
    PutLsb(header, 1, 2);      // PCM
    PutLsb(header, 1, 2);      // channels
    PutLsb(header, 8000, 4);   // samples per second
    PutLsb(header, 16000, 4);  // bytes per second
    PutLsb(header, 2, 2);      // bytes per sample
    PutLsb(header, 16, 2);     // bits per sample
    PutText(header, "data");
    PutLsb(header, end - kHeaderLen, 4);
    return header;
}

class Wav final : public Fuzz::Container
{
public:
    void* Create(Fuzz::ByteSource& /*source*/, SGCreateParam& create) override
    {
        return SG_CreateHandle(SG_STREAM_TYPE_WAV, &create);
    }

    [[nodiscard]] Fuzz::Palette Frames() const override { return Fuzz::UsualFrames(kSizes); }

    /// Kept: each header moves the data on by its length, wherever it goes itself.
    [[nodiscard]] Fuzz::SinkRules Rules() const override { return {.largestGap = 1u << 20}; }

    void AfterHeader(int result, const Fuzz::Output& output) override
    {
        if (Refused(result, output)) return;

        RequireHeader(output.blocks);
        m_end += kHeaderLen;
        m_open = true;
    }

    void AfterFrame(const Fuzz::FrameCall& call) override
    {
        const bool valid = call.record.struct_size == sizeof(call.record) &&
                           call.record.frame_pointer != nullptr && !call.before.empty() && m_open &&
                           call.record.frame_type == SG_FRAME_TYPE_AUDIO;
        Require(call.result == (valid ? SG_ERR_NOERR : SG_ERR_PARAM_ERR),
                "result of the frame call");
        const bool stored = valid && (call.record.frame_encode == SG_ENCODE_AUDIO_PCM16 ||
                                      call.record.frame_encode == SG_ENCODE_AUDIO_G711A);
        if (!stored)
        {
            Require(call.blocks.empty(), "what cannot be stored is dropped");
            return;
        }
        if (!m_audio)
        {
            m_audio = true;
            RequireHeader(call.blocks);  // Kept: the first frame is not stored
            return;
        }
        RequireBlock(call.blocks, m_end, call.before);
        const int64_t offered = std::ssize(call.before);
        m_end += static_cast<uint32_t>(std::clamp<int64_t>(call.blocks[0].taken, 0, offered));
    }

    void AfterTailer(int result, const Fuzz::Output& output) override
    {
        if (m_open)
        {
            Require(result == SG_ERR_NOERR, "result of the tailer call");
            RequireHeader(output.blocks);
            return;
        }
        Require(result == SG_ERR_PARAM_ERR && output.blocks.empty(), "there is nothing to end");
    }

    void AfterBackup(int size, const SGOutputData& backup, const Fuzz::Output& /*output*/) override
    {
        Require(size == 0 && backup.data_pointer == nullptr, "there is no backup");
        Require(backup.data_size == Fuzz::kNoBackup, "the backup record is left alone");
    }

private:
    /// The first header needs memory.
    static bool Refused(int result, const Fuzz::Output& output)
    {
        if (result == SG_ERR_NOERR) return false;

        Require(result == SG_ERR_PARAM_ERR && !output.plenty, "a header is refused without memory");
        Require(output.blocks.empty(), "a refused header emits nothing");
        return true;
    }

    void RequireHeader(const std::vector<Fuzz::Block>& blocks) const
    {
        RequireBlock(blocks, 0, HeaderOf(m_end));
    }

    static void RequireBlock(const std::vector<Fuzz::Block>& blocks,
                             uint64_t position,
                             const Bytes& bytes)
    {
        Require(blocks.size() == 1, "a call is one block");
        Require(blocks[0].origin == 0, "positions count from the start");
        Require(blocks[0].position == position, "a block comes for its position");
        Require(blocks[0].bytes == bytes, "a block has its bytes");
    }

    bool m_open = false;
    bool m_audio = false;  // the first frame came
    uint32_t m_end = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Wav wav;
    Fuzz::RunCalls(Fuzz::ByteSource(data, size), wav);
    return 0;
}
