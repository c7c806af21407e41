#include "PackageImpl.h"

#include "asfpacket/AsfPacket.h"
#include "avipacket/AviPacket.h"
#include "flvpacket/FlvPacket.h"
#include "mkvpacket/Mkvpacket.h"
#include "mp4packet/Mp4Packet.h"
#include "omfpacket/OmfPacket.h"
#include "pspacket/PsPacket.h"
#include "rtppacket/RtpPacket.h"
#include "wavpacket/WavPacket.h"

namespace Orbel::Wrapton
{

std::unique_ptr<CPackage> CreatePackage(unsigned int nType, const SGCreateParam* pCreateParam)
{
    switch (nType)
    {
        case SG_STREAM_TYPE_ASF:
        case SG_STREAM_TYPE_STREAM_ASF:
            return std::make_unique<CAsfPacket>(nType, pCreateParam);
        case SG_STREAM_TYPE_FLV:
        case SG_STREAM_TYPE_STREAM_FLV:
            return std::make_unique<CFlvPacket>(nType, pCreateParam);
        case SG_STREAM_TYPE_AVI:
            return std::make_unique<CAviPacket>(nType, pCreateParam);
        case SG_STREAM_TYPE_MKV:
            return std::make_unique<CMkvPacket>(nType, pCreateParam);
        case SG_STREAM_TYPE_MP4:
        case SG_STREAM_TYPE_MOV:
        case SG_STREAM_TYPE_MP4_NOSEEK:
        case SG_STREAM_TYPE_MP4_64:
        case SG_STREAM_TYPE_MOV_64:
            return std::make_unique<CMp4Packet>(nType, pCreateParam);
        case SG_STREAM_TYPE_OMF:
            return std::make_unique<COmfPacket>(nType, pCreateParam);
        case SG_STREAM_TYPE_PS:
        case SG_STREAM_TYPE_QVPS:
        case SG_STREAM_TYPE_GAYSPS:
            return std::make_unique<CPsPacket>(nType, pCreateParam);
        case SG_STREAM_TYPE_RTP:
            return std::make_unique<CRtpPacket>(nType, pCreateParam);
        case SG_STREAM_TYPE_WAV:
            return std::make_unique<CWavPacket>(nType, pCreateParam);
        default:
            return nullptr;
    }
}

}  // namespace Orbel::Wrapton
