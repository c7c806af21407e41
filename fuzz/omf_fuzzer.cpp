// Call sequences on a packager of native recordings, in both of its forms. Every frame is compared
// with what went in; the whole recording is read back at the end.
#include <algorithm>
#include <array>
#include <memory>
#include <vector>

#include "CallSequence.h"
#include "Require.h"
#include "omfpacket/OmfReader.h"
#include "readers/OmfFrames.h"

using namespace Orbel::Wrapton;
using Fuzz::Bytes;
using Fuzz::Require;

namespace
{

constexpr size_t kHeaderLen = 24;
constexpr size_t kLeastExHeader = 8;
constexpr size_t kTailerLen = 8;
/// Around the steps in which the buffer of a frame grows, with the headers of a plain one.
constexpr std::array<uint32_t, 6> kSizes = {16384 - 40, 16384, 32768 - 60, 65536, 256000, 400000};

bool EndsWith(const Bytes& block, const Bytes& payload)
{
    return block.size() >= kHeaderLen + payload.size() + kTailerLen &&
           std::equal(payload.begin(),
                      payload.end(),
                      block.end() - std::ssize(payload) - std::ptrdiff_t{kTailerLen});
}

class Omf final : public Fuzz::Container
{
public:
    void* Create(Fuzz::ByteSource& /*source*/, SGCreateParam& create) override
    {
        return SG_CreateHandle(SG_STREAM_TYPE_OMF, &create);
    }

    [[nodiscard]] Fuzz::Palette Frames() const override { return Fuzz::UsualFrames(kSizes); }
    [[nodiscard]] bool TakesPackets() const override { return true; }

    void Adorn(SGFrameInfo& record, Fuzz::ByteSource& source) override
    {
        const unsigned shape = source.U8();
        if ((shape & 1) != 0)
        {
            const int32_t n = source.U8() % 24;
            const int32_t m = source.U8() % 24;
            const auto count = static_cast<size_t>(n) * static_cast<size_t>(m);
            m_split = std::make_unique<SGBlockInfo[]>(count);
            record.split_info = {1, (shape & 2) != 0 ? -n : n, m, m_split.get()};
            for (size_t i = 0; i < count; ++i)
            {
                m_split[i].offset = static_cast<int32_t>(i);
            }
        }
        if ((shape & 4) != 0) record.rotation_angle = source.U16();
        if ((shape & 8) != 0) record.company_type = static_cast<uint16_t>(source.U16());
        if ((shape & 16) != 0) record.bit_rate = source.U8() * 1000u;
        if ((shape & 32) != 0) record.deinter_lace = source.U8();
    }

    void AfterHeader(int result, const Fuzz::Output& output) override
    {
        Require(result == 0 && output.blocks.empty(), "a header call emits nothing");
    }

    void AfterFrame(const Fuzz::FrameCall& call) override
    {
        const bool stored = Expected(call);
        if (stored)
        {
            Require(call.blocks.size() == 1, "a frame is one block");
            Require(call.blocks[0].origin == 1 && call.blocks[0].position == 0,
                    "a block is appended");
            m_lastLength = call.blocks[0].bytes.size();
            call.packet != nullptr ? CheckPacket(call) : CheckBlock(call);
        }
        if (call.packet != nullptr && call.plenty)
        {
            Require(call.packet->size() == m_lastLength, "a packet is as long as the last frame");
        }
    }

    void AfterTailer(int result, const Fuzz::Output& output) override
    {
        Require(result == 0 && output.blocks.empty(), "a tailer does nothing");
    }

    /// Reads everything that left outside packets.
    void AtEnd(const Fuzz::Output& /*output*/) override
    {
        COmfMemory input(m_recording);
        COmfReader reader(input);
        size_t frames = 0;
        while (const auto frame = reader.Next())
        {
            Require(frame->intact, "a frame is whole");
            Require(frames < m_payloads.size(), "no frame comes that did not go in");
            Require(std::equal(frame->payload.begin(),
                               frame->payload.end(),
                               m_payloads[frames].begin(),
                               m_payloads[frames].end()),
                    "a payload comes back");
            ++frames;
        }
        Require(frames == m_payloads.size(), "every frame comes back");
        Require(reader.Skipped() == 0, "nothing stands between frames");
    }

private:
    /// Whether the frame had to be stored and was; numbers it then.
    bool Expected(const Fuzz::FrameCall& call)
    {
        const SGFrameInfo& frame = call.record;
        const bool video = frame.frame_type == SG_FRAME_TYPE_VIDEO;
        const bool key = video && (frame.frame_sub_type == SG_FRAME_SUB_TYPE_I ||
                                   frame.frame_sub_type == SG_FRAME_SUB_TYPE_JPEG_FRAME);
        const bool other =
            frame.frame_type == SG_FRAME_TYPE_AUDIO || frame.frame_type == SG_FRAME_TYPE_EXT;
        const bool record = call.packet != nullptr || frame.struct_size == sizeof(frame);
        const bool valid = record && frame.frame_pointer != nullptr && frame.frame_size != 0 &&
                           (other || (video && (key || m_keySeen)));
        if (!valid)
        {
            Require(call.result == SG_ERR_PARAM_ERR, "a frame that is not one is refused");
            return false;
        }
        if (call.result == SG_ERR_MEMORY_OUT && !call.plenty) return false;

        Require(call.result == SG_ERR_NOERR, "a frame is taken");
        m_keySeen = m_keySeen || key;
        m_number = video ? ++m_pictures : ++m_others;
        return true;
    }

    void CheckBlock(const Fuzz::FrameCall& call)
    {
        const Bytes& block = call.blocks[0].bytes;
        Require(EndsWith(block, call.before), "a payload is kept");
        // The strict reader goes by the declared length, which wraps for a large split.
        if (call.record.split_info.flag == 0)
        {
            const auto frames = Readers::ReadOmf(block);
            Require(frames.size() == 1, "a block is one frame");
            Require(frames[0].number == m_number, "frames are numbered");
            Require(frames[0].payload == call.before, "a payload is told");
        }
        m_recording.insert(m_recording.end(), block.begin(), block.end());
        m_payloads.push_back(call.before);
    }

    /// Kept: in a packet the payload stands right behind the header.
    static void CheckPacket(const Fuzz::FrameCall& call)
    {
        const Bytes& block = call.blocks[0].bytes;
        Require(block.size() >= kHeaderLen + kLeastExHeader + call.before.size() + kTailerLen,
                "a packet has room for the whole frame");
        Require(
            std::equal(
                call.before.begin(), call.before.end(), block.begin() + std::ptrdiff_t{kHeaderLen}),
            "a payload stands at 24");
        Require(block == *call.packet, "the packet is what left through the callback");
    }

    bool m_keySeen = false;
    uint32_t m_pictures = 0;
    uint32_t m_others = 0;
    uint32_t m_number = 0;    // of the last frame
    size_t m_lastLength = 0;  // of the last frame
    std::unique_ptr<SGBlockInfo[]> m_split;
    Bytes m_recording;
    std::vector<Bytes> m_payloads;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Omf omf;
    Fuzz::RunCalls(Fuzz::ByteSource(data, size), omf);
    return 0;
}
