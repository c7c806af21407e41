#include "pspacket/gays/PackVideo.h"

#include "Wrapton.h"
#include "pspacket/PsHeaders.h"

namespace Orbel::Wrapton
{
namespace
{

constexpr uint32_t kGaysMuxRate = 6106;

/// Kept: the length counts two bytes more than the map has.
constexpr uint32_t kGaysMapLength = 32;

PsMap Map(const ps_pack_param& param)
{
    return {.length = kGaysMapLength,
            .video_stream_type =
                param.encode_type == SG_ENCODE_VIDEO_MPEG4 ? kStreamTypeMpeg4 : kStreamTypeH264,
            .frame_rate = static_cast<uint32_t>(param.frame_rate),
            .width = static_cast<uint32_t>(param.width),
            .height = static_cast<uint32_t>(param.height)};
}

}  // namespace

void ps_pack_video(CMsbCursor& w, const ps_pack_param& param, const unsigned char* payload)
{
    const auto scr = static_cast<uint64_t>(param.scr);
    if (param.first_packet_of_frame)
    {
        PutPackHeader(w, scr, kGaysMuxRate);
        if (param.frame_type == kGaysIFrame)
        {
            PutSystemHeader(w);
            PutStreamMap(w, Map(param));
        }
        PutPtsHeader(w, kVideoStreamId, param.payload_len, scr);
    }
    else
    {
        PutStuffedHeader(w, kVideoStreamId, param.payload_len);
    }
    w.Bytes({payload, param.payload_len});
}

}  // namespace Orbel::Wrapton
