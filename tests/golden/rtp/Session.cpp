#include "golden/rtp/Session.h"

#include <utility>

namespace Golden
{

using namespace Orbel::Wrapton;
using Support::Hex;
using Support::Join;
using Support::Msb16;
using Support::Msb32;
using Support::U8;

SGRtpPackageParam Params()
{
    SGRtpPackageParam params{};
    params.sequence_number = 1;
    params.ssrc = kSsrc;
    return params;
}

Bytes Packet::Rtp() const
{
    return Join({
        U8(0x80),                                 // version 2; no padding, extension, sources
        U8((marker ? 0x80u : 0u) | payloadType),  // marker, payload type
        Msb16(sequence),                          //
        Msb32(timestamp),                         //
        Msb32(ssrc),                              // synchronisation source
        payload,
    });
}

Bytes Packet::Unit() const
{
    return Join({Msb16(static_cast<uint32_t>(12 + payload.size())), Rtp()});
}

Session::Session(const SGRtpPackageParam& params) : m_calls(SG_STREAM_TYPE_RTP, m_sink)
{
    Set(params);
}

int Session::Set(const SGRtpPackageParam& params)
{
    SGRtpPackageParam copy = params;
    const int result = SG_SetParam(Handle(), SG_RTP_PARAM_TYPE_PACKAGE, &copy, sizeof(copy));
    EXPECT_EQ(result, SG_ERR_NOERR);
    m_customLength = Get().custom_data_length;
    return result;
}

SGRtpPackageParam Session::Get()
{
    SGRtpPackageParam params{};
    unsigned int length = sizeof(params);
    EXPECT_EQ(SG_GetParam(Handle(), SG_RTP_PARAM_TYPE_PACKAGE, &params, &length), SG_ERR_NOERR);
    EXPECT_EQ(length, 64u);
    return params;
}

int Session::Input(const Frame& frame)
{
    m_sink.ForgetBlocks();
    return m_calls.Input(frame);
}

std::vector<Bytes> Session::Blocks(const Frame& frame)
{
    EXPECT_EQ(Input(frame), SG_ERR_NOERR);
    return BytesOf(Seen());
}

std::vector<Readers::RtpPacket> Session::Packets(const Frame& frame)
{
    Bytes all;
    for (const Bytes& block : Blocks(frame))
    {
        Support::Append(all, block);
    }
    return Readers::ReadRtpPackets(all, m_customLength);
}

uint32_t Session::StampOf(Frame frame, uint32_t time)
{
    frame.time = time;
    return Packets(frame).at(0).timestamp;
}

std::vector<Bytes> BytesOf(const std::vector<Support::Block>& blocks)
{
    std::vector<Bytes> bytes;
    bytes.reserve(blocks.size());
    for (const Support::Block& block : blocks)
    {
        bytes.push_back(block.data);
    }
    return bytes;
}

Bytes Nal(uint32_t header, std::size_t count)
{
    Bytes unit = Support::Payload(count);
    if (count != 0) unit[0] = static_cast<unsigned char>(header);
    return unit;
}

Bytes Long(const Bytes& unit)
{
    return Join({Hex("00 00 00 01"), unit});
}

Bytes Short(const Bytes& unit)
{
    return Join({Hex("00 00 01"), unit});
}

Frame Sound(std::size_t count)
{
    return Support::Audio(SG_ENCODE_AUDIO_G711A, Support::Payload(count), 8000, 1, 8);
}

}  // namespace Golden
