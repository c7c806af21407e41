// Call sequences on the transport stream packager. What it left in the caller's packets is read as
// one stream at the end.
#include <array>
#include <new>

#include "CallSequence.h"
#include "Require.h"
#include "readers/TsReader.h"
#include "tspacket/TsPacket.h"

using namespace Orbel::Wrapton;
using Fuzz::Bytes;
using Fuzz::Require;

namespace
{

constexpr std::array<uint32_t, 8> kEncodings = {SG_ENCODE_VIDEO_HI_H264,
                                                SG_ENCODE_VIDEO_HI_H264,
                                                SG_ENCODE_VIDEO_MPEG4,
                                                SG_ENCODE_VIDEO_JPEG,
                                                SG_ENCODE_AUDIO_AAC,
                                                SG_ENCODE_AUDIO_MP2,
                                                SG_ENCODE_AUDIO_AAC,
                                                SG_ENCODE_AUDIO_PCM16};
/// Around full packets, the reach of the PES length, and what its own buffer of 1 MiB holds.
constexpr std::array<uint32_t, 10> kSizes = {
    151, 152, 333, 334, 65481, 65482, 65488, 65493, 1014000, 1048576};

class Ts final : public Fuzz::Container
{
public:
    void* Create(Fuzz::ByteSource& source, SGCreateParam& create) override
    {
        m_onlyPackets = source.U8() % 4 != 0;
        return static_cast<CPackage*>(new (std::nothrow) CTsPacket(&create));
    }

    [[nodiscard]] Fuzz::Palette Frames() const override
    {
        return {.encodings = kEncodings, .sizes = kSizes};
    }

    [[nodiscard]] bool TakesPackets() const override { return true; }
    [[nodiscard]] bool TakesOnlyPackets() const override { return m_onlyPackets; }

    void AfterFrame(const Fuzz::FrameCall& call) override
    {
        const bool refused =
            call.packet == nullptr && call.record.struct_size != sizeof(call.record);
        Require(refused || call.result == 0, "every frame is answered with 0");
        Require(call.blocks.empty(), "nothing leaves through the callback");
        const bool audio = call.record.frame_type == SG_FRAME_TYPE_AUDIO;
        const bool video = call.record.frame_type == SG_FRAME_TYPE_VIDEO &&
                           call.record.frame_sub_type <= SG_FRAME_SUB_TYPE_P;
        // Any other frame leaves the packet as it was.
        if ((!audio && !video) || call.packet == nullptr || call.packet->empty()) return;

        Bytes payload;
        if (video && call.record.frame_encode != SG_ENCODE_VIDEO_MPEG4)
            payload = {0, 0, 0, 1, 9, 0xF0};  // access unit delimiter
        payload.insert(payload.end(), call.before.begin(), call.before.end());
        m_sent.push_back({.pid = video ? 0x12u : 0x13u, .payload = std::move(payload)});
        if (!m_onlyPackets) return;
        Checked([&] { m_reader.Read(*call.packet); });
    }

    void AtEnd(const Fuzz::Output& /*output*/) override
    {
        if (!m_onlyPackets) return;
        Checked(
            [&]
            {
                const auto frames = m_reader.Frames();
                Require(frames.size() == m_sent.size(), "every frame comes back");
                for (std::size_t i = 0; i < frames.size(); ++i)
                {
                    Require(frames[i].pid == m_sent[i].pid, "a frame is in its stream");
                    Require(frames[i].payload == m_sent[i].payload, "a frame comes back");
                }
            });
    }

private:
    struct Sent
    {
        uint32_t pid;
        Bytes payload;
    };

    template <class Step>
    static void Checked(Step step)
    {
        try
        {
            step();
        }
        catch (const Readers::TsError& error)
        {
            Require(false, error.what());
        }
    }

    bool m_onlyPackets = true;
    Readers::TsReader m_reader;
    std::vector<Sent> m_sent;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Ts ts;
    Fuzz::RunCalls(Fuzz::ByteSource(data, size), ts);
    return 0;
}
