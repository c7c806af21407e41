#include "Wrapton.h"

#include <cstring>
#include <new>

#include "PackageImpl.h"
#include "rtppacket/RtpPacket.h"

using namespace Orbel::Wrapton;

namespace
{

constexpr unsigned int kFrameInfoSize = 112;
static_assert(sizeof(SGFrameInfo) == kFrameInfoSize);

constexpr unsigned int kRtpPackageParamSize = 64;
static_assert(sizeof(SGRtpPackageParam) == kRtpPackageParamSize);

CPackage* Packager(void* handle)
{
    return static_cast<CPackage*>(handle);
}

/// The packager whose parameters @p nParamType names; null when there are none.
CRtpPacket* PackagerWithParam(void* handle, unsigned int nParamType)
{
    CPackage* const package = Packager(handle);
    if (package->GetType() != SG_STREAM_TYPE_RTP) return nullptr;
    if (nParamType != SG_RTP_PARAM_TYPE_PACKAGE) return nullptr;
    return static_cast<CRtpPacket*>(package);
}

void Apply(CRtpPacket& rtp, const SGRtpPackageParam& param)
{
    // The only step that needs memory comes first: when it fails nothing has changed. It may also
    // refuse the extension, which then stays as it was while the rest is set.
    rtp.SetParam(param.extension_data, static_cast<int>(param.extension_data_length));
    // Kept: 8 bits of the length count, with a sign.
    rtp.AppendHeader(param.custom_data, static_cast<signed char>(param.custom_data_length));
    rtp.m_nMaxPacketSize = static_cast<int>(param.max_packet_length);
    // Kept: the number of the last packet is what is stored, and what is read back.
    rtp.m_nSeqNumber = static_cast<uint16_t>(param.sequence_number - 1);
    rtp.m_nTimestamp = param.timestamp;
    rtp.m_nSsrc = param.ssrc;
    rtp.SetAudioSample(param.audio_sample);
    rtp.SetPayloadTypeEx(param.payload_type);
    rtp.m_rtpOutputAllFlag = param.rtp_output_all_flag;
}

SGRtpPackageParam Describe(CRtpPacket& rtp)
{
    SGRtpPackageParam param{};
    param.struct_size = kRtpPackageParamSize;
    param.max_packet_length = static_cast<uint32_t>(
        rtp.m_nMaxPacketSize != 0 ? rtp.m_nMaxPacketSize : CRtpPacket::kDefaultMaxPacketSize);
    param.sequence_number = rtp.m_nSeqNumber;
    param.timestamp = rtp.m_nTimestamp;
    param.ssrc = rtp.m_nSsrc;
    param.audio_sample = rtp.GetAudioSample();
    param.payload_type = rtp.GetPayloadTypeEx();
    void* extension = nullptr;
    int extension_length = 0;
    rtp.GetParam(extension, extension_length);
    param.extension_data = static_cast<const unsigned char*>(extension);
    param.extension_data_length = static_cast<uint32_t>(extension_length);
    rtp.GetHeader(param.custom_data, param.custom_data_length);
    param.rtp_output_all_flag = rtp.m_rtpOutputAllFlag;
    return param;
}

/// Runs a step of a packager. Nothing but a failed allocation is thrown inside the library.
template <class Step>
int Guarded(Step step) noexcept
{
    try
    {
        return step();
    }
    catch (const std::bad_alloc&)
    {
        return SG_ERR_MEMORY_OUT;
    }
}

int Folded(int result)
{
    return result == SG_ERR_NOERR ? SG_ERR_NOERR : SG_ERR_PARAM_ERR;
}

}  // namespace

void* SG_CreateHandle(unsigned int nType, SGCreateParam* pCreateParam) noexcept
{
    try
    {
        return CreatePackage(nType, pCreateParam).release();
    }
    catch (const std::bad_alloc&)
    {
        return nullptr;
    }
}

int SG_CreateHeader(void* handle, SGHeaderInfo* pHeader) noexcept
{
    if (handle == nullptr) return SG_ERR_HANDLE_EMPTY;

    return Guarded(
        [&]
        {
            CPackage* const package = Packager(handle);
            if (package->Init() != SG_ERR_NOERR) return int{SG_ERR_PARAM_ERR};
            return Folded(package->CreateHeader(pHeader, 0));
        });
}

int SG_InputFrame(void* handle, SGFrameInfo* pFrame) noexcept
{
    if (handle == nullptr) return SG_ERR_HANDLE_EMPTY;
    if (pFrame == nullptr) return SG_ERR_PARAM_ERR;
    if (pFrame->struct_size != kFrameInfoSize) return SG_ERR_PARAM_ERR;

    return Guarded([&] { return Packager(handle)->InputData(pFrame, 0); });
}

int SG_CreateTailer(void* handle, SGTailerInfo* /*pTailer*/) noexcept
{
    if (handle == nullptr) return SG_ERR_HANDLE_EMPTY;

    return Guarded(
        [&]
        {
            CPackage* const package = Packager(handle);
            if (package->CreateTailer(nullptr, 0) != SG_ERR_NOERR) return int{SG_ERR_PARAM_ERR};
            return Folded(package->Deinit());
        });
}

int SG_GetBackup(void* handle, SGOutputData* backup) noexcept
{
    if (handle == nullptr) return SG_ERR_HANDLE_EMPTY;

    return Guarded([&] { return Packager(handle)->GetFileHeader(backup); });
}

int SG_SetParam(void* handle,
                unsigned int nParamType,
                void* pParam,
                unsigned int nParamLength) noexcept
{
    if (handle == nullptr) return SG_ERR_HANDLE_EMPTY;
    if (pParam == nullptr) return SG_ERR_PARAM_ERR;
    CRtpPacket* const rtp = PackagerWithParam(handle, nParamType);
    if (rtp == nullptr) return SG_ERR_NOERR;
    if (nParamLength < kRtpPackageParamSize) return SG_ERR_PARAM_ERR;

    return Guarded(
        [&]
        {
            SGRtpPackageParam param;  // a copy: the caller's bytes need not be aligned
            std::memcpy(&param, pParam, sizeof(param));
            Apply(*rtp, param);
            return int{SG_ERR_NOERR};
        });
}

int SG_GetParam(void* handle,
                unsigned int nParamType,
                void* pParam,
                unsigned int* pParamLength) noexcept
{
    if (handle == nullptr) return SG_ERR_HANDLE_EMPTY;
    if (pParam == nullptr) return SG_ERR_PARAM_ERR;
    if (pParamLength == nullptr) return SG_ERR_PARAM_ERR;
    CRtpPacket* const rtp = PackagerWithParam(handle, nParamType);
    if (rtp == nullptr)
    {
        *pParamLength = 0;
        return SG_ERR_NOERR;
    }
    if (*pParamLength < kRtpPackageParamSize) return SG_ERR_PARAM_ERR;

    const SGRtpPackageParam param = Describe(*rtp);
    std::memcpy(pParam, &param, sizeof(param));
    *pParamLength = kRtpPackageParamSize;
    return SG_ERR_NOERR;
}

int SG_DestroyHandle(void* handle) noexcept
{
    if (handle == nullptr) return SG_ERR_HANDLE_EMPTY;

    delete Packager(handle);
    return SG_ERR_NOERR;
}
