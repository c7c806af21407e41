// Call sequences on an RTP handle. Packets are compared with the frame that went in.
#include <algorithm>
#include <array>
#include <memory>
#include <optional>

#include "CallSequence.h"
#include "Require.h"
#include "readers/AnnexBReference.h"
#include "readers/RtpReader.h"

using namespace Orbel::Wrapton;
using Fuzz::Bytes;
using Fuzz::Require;

namespace
{

constexpr std::array<uint32_t, 8> kEncodings = {SG_ENCODE_VIDEO_HI_H264,
                                                SG_ENCODE_VIDEO_HI_H264,
                                                SG_ENCODE_VIDEO_QV_H264,
                                                SG_ENCODE_VIDEO_MPEG4,
                                                SG_ENCODE_VIDEO_JPEG,
                                                SG_ENCODE_AUDIO_AAC,
                                                SG_ENCODE_AUDIO_G711A,
                                                SG_ENCODE_VIDEO_STD_H264};
/// Around full packets of the usual length, and what takes more than the first buffer in short
/// ones.
constexpr std::array<uint32_t, 8> kSizes = {984, 985, 986, 987, 999, 2000, 20000, 70000};
constexpr std::array<uint32_t, 12> kPacketLengths = {
    0, 0, 1, 2, 14, 16, 17, 18, 1400, 65537, 65538, 0xFFFFFFFF};
constexpr std::array<uint32_t, 8> kExtensions = {0, 1, 3, 4, 5, 900, 262140, 262141};

using Packets = std::vector<Readers::RtpPacket>;

void Append(Bytes& to, const Bytes& from, std::size_t skipped)
{
    const auto begin = from.begin() + static_cast<std::ptrdiff_t>(std::min(skipped, from.size()));
    to.insert(to.end(), begin, from.end());
}

/// The payloads of packets put together, without their first @p skipped bytes.
Bytes Joined(std::span<const Readers::RtpPacket> packets, std::size_t skipped)
{
    Bytes joined;
    for (const Readers::RtpPacket& packet : packets)
    {
        Append(joined, packet.payload, skipped);
    }
    return joined;
}

bool Same(const Bytes& bytes, std::span<const unsigned char> other)
{
    return std::equal(bytes.begin(), bytes.end(), other.begin(), other.end());
}

/// Whether packets carry a unit, as it is or in FU-A fragments, which end with a byte of 0 more.
bool Carry(std::span<const Readers::RtpPacket> packets, std::span<const unsigned char> unit)
{
    if (Same(Joined(packets, 0), unit)) return true;
    if (unit.empty()) return false;

    Bytes behind(unit.begin() + 1, unit.end());
    behind.push_back(0);
    return Joined(packets, 2) == behind;
}

class Rtp final : public Fuzz::Container
{
public:
    void* Create(Fuzz::ByteSource& /*source*/, SGCreateParam& create) override
    {
        return SG_CreateHandle(SG_STREAM_TYPE_RTP, &create);
    }

    [[nodiscard]] Fuzz::Palette Frames() const override
    {
        return {.encodings = kEncodings, .sizes = kSizes};
    }

    [[nodiscard]] bool TakesPackets() const override { return true; }

    void Parameters(void* handle, Fuzz::ByteSource& source) override
    {
        SGRtpPackageParam param{};
        param.max_packet_length = source.Choose(kPacketLengths);
        param.sequence_number = source.U16();
        param.timestamp = source.U32();
        param.ssrc = source.U8();
        param.audio_sample = source.U32();
        param.payload_type = source.U8();
        param.rtp_output_all_flag = source.U8() & 1u;
        param.extension_data_length = source.Choose(kExtensions);
        param.custom_data_length = source.U8() % 2 != 0 ? source.U8() : 0u;
        const Bytes extension(param.extension_data_length, 0xE7);
        const Bytes custom(param.custom_data_length, 0xC5);
        param.extension_data = extension.empty() ? nullptr : extension.data();
        param.custom_data = custom.empty() ? nullptr : custom.data();
        const int result = SG_SetParam(handle, 0, &param, sizeof(param));
        Require(result == 0 || result == SG_ERR_MEMORY_OUT, "result of setting parameters");

        SGRtpPackageParam read{};
        unsigned int length = sizeof(read);
        Require(SG_GetParam(handle, 0, &read, &length) == 0, "result of getting parameters");
        Require(length == sizeof(read) && read.struct_size == length, "a record is filled");
        if (result != 0) return;

        Require(read.sequence_number == ((param.sequence_number - 1) & 0xFFFF), "one lower");
        Require(read.custom_data_length == (custom.size() < 128 ? custom.size() : 0), "8 bits");
        Require(read.extension_data_length == extension.size() || extension.size() > 262140,
                "an extension is taken");
        m_custom = read.custom_data_length;
        m_last = static_cast<uint16_t>(read.sequence_number);
        const uint32_t most = read.max_packet_length;
        m_limit = std::min(most, 65537u) - 2;
        m_all = param.rtp_output_all_flag == 1;
    }

    void AfterFrame(const Fuzz::FrameCall& call) override
    {
        if (call.blocks.empty()) return;

        Bytes bytes;
        for (const Fuzz::Block& block : call.blocks)
        {
            bytes.insert(bytes.end(), block.bytes.begin(), block.bytes.end());
        }
        Require(call.packet == nullptr || *call.packet == bytes, "the packet has all packets");
        try
        {
            Check(call, Readers::ReadRtpPackets(bytes, m_custom));
        }
        catch (const Readers::RtpError& error)
        {
            Require(false, error.what());
        }
    }

private:
    void Check(const Fuzz::FrameCall& call, const Packets& packets)
    {
        Require(call.blocks.size() == (m_all ? 1 : packets.size()), "a block is a packet, or all");
        for (const Readers::RtpPacket& packet : packets)
        {
            Require(packet.length + m_custom <= m_limit, "a packet is no longer than it may be");
            Require(!m_last || packet.sequence == ((*m_last + 1) & 0xFFFF), "packets are numbered");
            Require(packet.timestamp == packets.front().timestamp, "a frame has one time");
            m_last = packet.sequence;
        }
        Require(packets.back().marker, "a frame ends with a marker");
        const bool video = call.record.frame_type == SG_FRAME_TYPE_VIDEO;
        const bool units = video && (call.record.frame_encode == SG_ENCODE_VIDEO_HI_H264 ||
                                     call.record.frame_encode == SG_ENCODE_VIDEO_QV_H264);
        units ? CheckUnits(call.before, packets)
              : Require(Joined(packets, 0) == call.before, "a frame is kept");
    }

    /// Every marker ends a unit.
    static void CheckUnits(const Bytes& frame, const Packets& packets)
    {
        std::span<const Readers::RtpPacket> left(packets);
        for (const auto unit : Readers::ReferenceUnits(frame))
        {
            const auto last = std::find_if(
                left.begin(), left.end(), [](const auto& packet) { return packet.marker; });
            Require(last != left.end(), "a unit has its packets");
            const auto count = static_cast<std::size_t>(last - left.begin()) + 1;
            Require(Carry(left.first(count), unit), "a unit is kept");
            left = left.subspan(count);
        }
        Require(left.empty(), "packets are of units");
    }

    std::size_t m_custom = 0;
    std::size_t m_limit = 998;
    bool m_all = false;
    std::optional<uint32_t> m_last;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Rtp rtp;
    Fuzz::RunCalls(Fuzz::ByteSource(data, size), rtp);
    return 0;
}
