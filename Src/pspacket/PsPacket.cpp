#include "pspacket/PsPacket.h"

#include "pspacket/PsHeaders.h"
#include "pspacket/gays/GaysPsPacket.h"
#include "pspacket/ps/StdsPsPacket.h"
#include "pspacket/qvps/QvPsPacket.h"

namespace Orbel::Wrapton
{
namespace
{

constexpr int kWorkLen = 0x300000;

std::unique_ptr<IPSPackaging> MakeFlavour(uint32_t nType)
{
    switch (nType)
    {
        case SG_STREAM_TYPE_PS:
            return std::make_unique<CStdsPsPacket>();
        case SG_STREAM_TYPE_QVPS:
            return std::make_unique<CQvPsPacket>();
        case SG_STREAM_TYPE_GAYSPS:
            return std::make_unique<CGaysPsPacket>();
        default:
            return nullptr;
    }
}

}  // namespace

CPsPacket::CPsPacket(uint32_t nType, const SGCreateParam* pCreateParam)
    : CPackage(nType, pCreateParam),
      m_pPSPackage(MakeFlavour(nType)),
      m_pOutBuffer(Allocate(kWorkLen))
{
}

int CPsPacket::Init()
{
    return SG_ERR_NOERR;
}

int CPsPacket::Deinit()
{
    return SG_ERR_NOERR;
}

int CPsPacket::CreateHeader(SGHeaderInfo* /*pHeader*/, unsigned int /*nReserved*/)
{
    return SG_ERR_NOERR;
}

int CPsPacket::CreateTailer(SGTailerInfo* /*pTailer*/, unsigned int /*nReserved*/)
{
    return SG_ERR_NOERR;
}

int CPsPacket::GetFileHeader(SGOutputData* /*pOutput*/)
{
    return SG_ERR_NOERR;
}

int CPsPacket::InputData(SGFrameInfo* pFrame, unsigned int /*nReserved*/)
{
    CPsOutput output({m_pOutBuffer.get(), m_pOutBuffer != nullptr ? size_t{kWorkLen} : 0},
                     kPackHeaderLen + kPtsHeaderLen);
    return InputFrame(pFrame, output);
}

int CPsPacket::InputData(SGFrameInfo* pFrame, PacketBuffer& packet)
{
    CPsOutput output(packet);
    return InputFrame(pFrame, output);
}

int CPsPacket::InputFrame(const SGFrameInfo* pFrame, CPsOutput& output)
{
    if (!IsFrame(pFrame)) return SG_ERR_PARAM_ERR;
    if (!output.IsValid()) return SG_ERR_PARAM_ERR;

    switch (pFrame->frame_type)
    {
        case SG_FRAME_TYPE_VIDEO:
            InputVideoData(pFrame, output);
            return SG_ERR_NOERR;
        case SG_FRAME_TYPE_AUDIO:
            InputAudioData(pFrame, output);
            return SG_ERR_NOERR;
        default:
            return SG_ERR_PARAM_ERR;
    }
}

int CPsPacket::InputVideoData(const SGFrameInfo* pFrame, CPsOutput& output)
{
    if (m_pPSPackage == nullptr) return SG_ERR_PARAM_ERR;

    int length = 0;
    if (pFrame->frame_sub_type == SG_FRAME_SUB_TYPE_I)
    {
        m_bFirstIFrame = true;
        m_pPSPackage->Packet_I_frame(pFrame, output, length);
    }
    else
    {
        if (!m_bFirstIFrame) return SG_ERR_ENCODE_UNSUPPORT;
        m_pPSPackage->Packet_P_frame(pFrame, output, length);
    }
    return OutputData(output, length);
}

int CPsPacket::InputAudioData(const SGFrameInfo* pFrame, CPsOutput& output)
{
    if (m_pPSPackage == nullptr) return SG_ERR_PARAM_ERR;

    m_bFirstIFrame = true;
    int length = 0;
    m_pPSPackage->Packet_Audio_frame(pFrame, output, length, false);
    return OutputData(output, length);
}

int CPsPacket::OutputData(const CPsOutput& output, int length)
{
    // A refused frame's result is a code, which can look like a length.
    if (length == 0) return SG_ERR_ENCODE_UNSUPPORT;

    Emit(output.Data(), static_cast<uint32_t>(length), Origin::kCurrent, 0);
    return SG_ERR_NOERR;
}

}  // namespace Orbel::Wrapton
