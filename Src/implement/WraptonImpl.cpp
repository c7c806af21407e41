#include "implement/WraptonImpl.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <new>
#include <string_view>

#include "implement/Defs.h"
#include "implement/FilePackageImpl.h"
#include "rtppacket/RtpPacket.h"
#include "tool/FactoryRegistry.h"

namespace Orbel::Wrapton
{
namespace
{

constexpr std::array kTypes = {
    ComponentType{"asf", "ASF", SG_STREAM_TYPE_STREAM_ASF},
    ComponentType{"flv", "FLV", SG_STREAM_TYPE_STREAM_FLV},
    ComponentType{"omf", "OMF", SG_STREAM_TYPE_OMF},
    ComponentType{"rtp", "RTP", SG_STREAM_TYPE_RTP},
    ComponentType{"ts", "TS", SG_STREAM_TYPE_TS},
    ComponentType{"ps", "PS", SG_STREAM_TYPE_PS},
    ComponentType{"qvps", "QVPS", SG_STREAM_TYPE_QVPS},
    ComponentType{"gaysps", "GAYSPS", SG_STREAM_TYPE_GAYSPS},
};

constexpr char kExtensionData[] = "rtp_extension_data";

struct RtpParameter
{
    std::string_view name;
    void (*set)(CRtpPacket& rtp, long value);
    long (*get)(CRtpPacket& rtp);  // null: cannot be read back
};

uint32_t Word(long value)
{
    return static_cast<uint32_t>(value);
}

/// Values are cut to the width of what they set.
constexpr std::array<RtpParameter, 8> kRtpParameters = {{
    {"max_rtp_packet_length",
     [](CRtpPacket& rtp, long value) { rtp.m_nMaxPacketSize = static_cast<int>(value); },
     [](CRtpPacket& rtp)
     {
         return long{rtp.m_nMaxPacketSize != 0 ? rtp.m_nMaxPacketSize
                                               : CRtpPacket::kDefaultMaxPacketSize};
     }},
    // Kept: the number of the last packet is what is stored, and what is read back.
    {"rtp_sequence_number",
     [](CRtpPacket& rtp, long value) { rtp.m_nSeqNumber = static_cast<uint16_t>(Word(value) - 1); },
     [](CRtpPacket& rtp) { return long{rtp.m_nSeqNumber}; }},
    {"rtp_timestamp",
     [](CRtpPacket& rtp, long value) { rtp.m_nTimestamp = Word(value); },
     [](CRtpPacket& rtp) { return long{rtp.m_nTimestamp}; }},
    {"rtp_ssrc",
     [](CRtpPacket& rtp, long value) { rtp.m_nSsrc = Word(value); },
     [](CRtpPacket& rtp) { return long{rtp.m_nSsrc}; }},
    {"rtp_audio_sample",
     [](CRtpPacket& rtp, long value) { rtp.SetAudioSample(Word(value)); },
     [](CRtpPacket& rtp) { return long{rtp.GetAudioSample()}; }},
    {"rtp_payload_type",
     [](CRtpPacket& rtp, long value) { rtp.SetPayloadTypeEx(Word(value)); },
     [](CRtpPacket& rtp) { return long{rtp.GetPayloadTypeEx()}; }},
    {"rtp_packet_output_all_flag",
     [](CRtpPacket& rtp, long value) { rtp.m_rtpOutputAllFlag = Word(value); },
     [](CRtpPacket& rtp) { return long{rtp.m_rtpOutputAllFlag}; }},
    {"rtp_encode_type", [](CRtpPacket& /*rtp*/, long /*value*/) {}, nullptr},
}};

/// Null for an unknown name.
const RtpParameter* FindParameter(const char* name)
{
    if (name == nullptr) return nullptr;
    for (const RtpParameter& parameter : kRtpParameters)
    {
        if (parameter.name == name) return &parameter;
    }
    return nullptr;
}

/// Whether a byte of the frame is one of the packet's, too.
bool Overlap(const void* data, unsigned int len, const PacketBuffer& packet)
{
    const auto frame = reinterpret_cast<uintptr_t>(data);
    const auto bytes = reinterpret_cast<uintptr_t>(packet.Data());
    return frame < bytes ? len > bytes - frame : frame - bytes < packet.Size();
}

}  // namespace

const char* rtpExtensionDataName() noexcept
{
    return kExtensionData;
}

CWrapton::CWrapton(const std::string& type) : m_handle(CreateComponentPackage(kTypes, type))
{
    if (m_handle == nullptr) return;

    m_handle->SetDataCallBack(DataCallBack, this);
    m_handle->Init();
}

CWrapton::~CWrapton()
{
    if (m_handle != nullptr) m_handle->Deinit();
}

VersionInfo CWrapton::getVersion() const
{
    return ComponentVersion();
}

void CWrapton::DataCallBack(SGOutputData* block, void* user)
{
    auto& self = *static_cast<CWrapton*>(user);
    self.m_packet.setBuffer(block->data_pointer, static_cast<uint32_t>(block->data_size));
    self.m_datacount = 1;
    if (self.m_bIntoPacket) self.KeepBlock();
}

CRtpPacket* CWrapton::Rtp() const noexcept
{
    return m_handle->GetType() == SG_STREAM_TYPE_RTP ? static_cast<CRtpPacket*>(m_handle.get())
                                                     : nullptr;
}

void CWrapton::KeepBlock() noexcept
{
    const unsigned char* const bytes = m_packet.getBuffer();
    const size_t size = m_packet.getLen();
    if (m_datacount == 0 || size == 0 || bytes == m_kept.Data()) return;

    if (!m_kept.Resize(size))
    {
        m_datacount = 0;  // better none than one whose bytes change
        return;
    }
    std::memcpy(m_kept.Data(), bytes, size);
    m_packet.setPointer(m_kept.Data());
}

bool CWrapton::inputFrame(const void* data, unsigned int len, const FrameAttributes& attrs)
{
    if (m_handle == nullptr) return false;

    KeepBlock();
    return Guarded(
        [&]
        {
            CFrameRecord record(data, len, attrs, DateForm::kSeconds, MakerKeys::kLeft);
            if (m_handle->InputData(record.Get(), 0) == SG_ERR_NOERR) return true;

            setLastError(errorParam);
            return false;
        });
}

bool CWrapton::inputFrameEx(const void* data,
                            unsigned int len,
                            const FrameAttributes& attrs,
                            PacketBuffer& packet)
{
    if (m_handle == nullptr) return false;
    if (!packet.IsValid()) return false;

    KeepBlock();
    m_bIntoPacket = true;
    const bool done = Guarded(
        [&]
        {
            PacketBuffer moved;  // the frame, out of a packet that is written to and may grow
            const void* frame = data;
            if (data != nullptr && len != 0 && Overlap(data, len, packet))
            {
                if (!moved.ResizeUnset(len)) throw std::bad_alloc();
                std::memcpy(moved.Data(), data, len);
                frame = moved.Data();
            }
            CFrameRecord record(frame, len, attrs, DateForm::kPacked, MakerKeys::kRead);
            if (m_handle->InputData(record.Get(), packet) == SG_ERR_NOERR) return true;

            setLastError(errorParam);
            return false;
        });
    m_bIntoPacket = false;
    return done;
}

bool CWrapton::getPacket(SharedPtr<IWraptonData>& out)
{
    if (m_datacount == 0)
    {
        setLastError(errorNoOutPut);
        return false;
    }
    return Guarded(
        [&]
        {
            out = std::make_shared<CWraptonDataImpl>(m_packet);
            m_datacount = 0;
            return true;
        });
}

bool CWrapton::setParam(const char* name, long value)
{
    if (m_handle == nullptr) return false;
    CRtpPacket* const rtp = Rtp();
    if (rtp == nullptr) return true;

    const RtpParameter* const parameter = FindParameter(name);
    if (parameter != nullptr) parameter->set(*rtp, value);
    return true;
}

bool CWrapton::getParam(const char* name, long& value)
{
    if (m_handle == nullptr) return false;
    CRtpPacket* const rtp = Rtp();
    if (rtp == nullptr) return true;

    const RtpParameter* const parameter = FindParameter(name);
    if (parameter != nullptr && parameter->get != nullptr) value = parameter->get(*rtp);
    return true;
}

bool CWrapton::setExtInfo(const char* name, const void* data, unsigned int len)
{
    if (m_handle == nullptr) return false;
    CRtpPacket* const rtp = Rtp();
    if (rtp == nullptr) return true;
    if (name == nullptr) return true;

    const std::string_view wanted = name;
    // Kept: 8 bits of the length count, with a sign.
    if (wanted == "rtp_custom_data") return rtp->AppendHeader(data, static_cast<signed char>(len));
    if (wanted != kExtensionData) return true;
    return Guarded([&] { return rtp->SetParam(data, static_cast<int>(len)) != 0; });
}

bool CWrapton::getExtInfo(const char* name, SharedPtr<IWraptonData>& out)
{
    if (m_handle == nullptr) return false;
    CRtpPacket* const rtp = Rtp();
    if (rtp == nullptr) return true;
    if (name != kExtensionData) return true;  // Kept: the pointer counts, not the text

    void* bytes = nullptr;
    int length = 0;
    rtp->GetParam(bytes, length);
    return Guarded(
        [&]
        {
            out = std::make_shared<CWraptonDataImpl>(static_cast<unsigned char*>(bytes),
                                                     static_cast<uint32_t>(length));
            return true;
        });
}

CWrapton::CFactory::CFactory() noexcept : IComponentFactory(kWraptonClsid) {}

CWrapton::CFactory::~CFactory()
{
    remove(*this);  // ahead of the base class: until then it is whole
}

IWrapton* CWrapton::CFactory::create(const std::string& type)
{
    return CreateComponent<CWrapton>(type);
}

}  // namespace Orbel::Wrapton

void initWraptonComponentLibrary(void) noexcept
{
    using namespace Orbel::Wrapton;

    const CFactoryRegistryLock lock;  // nobody finds a factory that is not whole yet
    static CWrapton::CFactory s_streams;
    static CFilePackage::CFactory s_files;
}
