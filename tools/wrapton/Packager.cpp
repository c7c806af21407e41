#include "Packager.h"

#include "Failure.h"
#include "FlvHeader.h"

namespace Orbel::Wrapton::Command
{

namespace
{

constexpr int kOriginStart = 0;

}  // namespace

Packager::Packager(const Container& container, OutputFile& output, bool as_pcap)
    : m_container(container), m_output(output)
{
    SGCreateParam create = {};
    create.struct_size = sizeof create;
    create.user = this;
    create.sg_datacb = OnBlock;
    m_pHandle = SG_CreateHandle(container.type, &create);
    if (m_pHandle == nullptr)
        throw Failure("the library gives no packager for " + std::string(container.name));
    if (!as_pcap) return;
    m_capture.emplace(output);
    m_capture->Begin();
}

Packager::~Packager()
{
    SG_DestroyHandle(m_pHandle);
}

int Packager::DescribeRtp(const RtpStream& stream)
{
    SGRtpPackageParam param = {};
    unsigned int length = sizeof param;
    const int got = SG_GetParam(m_pHandle, SG_RTP_PARAM_TYPE_PACKAGE, &param, &length);
    if (got != SG_ERR_NOERR) return got;

    ++param.sequence_number;  // a get tells that of the last packet, a set takes that of the next
    param.payload_type = stream.payload_type;
    param.audio_sample = stream.clock;
    return SG_SetParam(m_pHandle, SG_RTP_PARAM_TYPE_PACKAGE, &param, sizeof param);
}

int Packager::CreateHeader(SGHeaderInfo& header)
{
    m_bStored = false;
    return SG_CreateHeader(m_pHandle, m_container.streams_from_frames ? nullptr : &header);
}

int Packager::InputFrame(SGFrameInfo& frame)
{
    m_bStored = false;
    m_nTime = frame.frame_time;
    return SG_InputFrame(m_pHandle, &frame);
}

int Packager::CreateTailer()
{
    m_bStored = false;
    m_bClosing = true;
    return SG_CreateTailer(m_pHandle, nullptr);
}

void Packager::OnBlock(SGOutputData* block, void* self) noexcept
{
    static_cast<Packager*>(self)->Place(*block);
}

std::size_t Packager::Write(const SGOutputData& block)
{
    const auto size = static_cast<std::size_t>(block.data_size);
    const std::span<const unsigned char> bytes(block.data_pointer, size);
    if (m_container.repeats_header_at_end && ReplacesHeader(bytes))
        return m_output.Place(0, kOriginStart, bytes);
    if (!m_capture) return m_output.Place(block.offset_pos64, block.offset_type, bytes);

    // A block is one packet behind its length.
    constexpr std::size_t kLengthLen = 2;
    m_capture->Put(m_nTime, bytes.subspan(kLengthLen));
    return m_output.Good() ? size : 0;
}

void Packager::Place(SGOutputData& block)
{
    if (block.data_pointer == nullptr || block.data_size <= 0) return;

    const bool at_start = block.offset_type == 0 && block.offset_pos64 == 0;
    if (at_start && m_bClosing && m_container.ignores_closing_block_at_start) return;

    const uint64_t size_before = m_output.Size();
    block.data_size = static_cast<int32_t>(Write(block));
    // A header at the start may have the first frame behind it.
    m_bStored = m_bStored || !at_start || m_output.Size() > size_before;
}

bool Packager::ReplacesHeader(std::span<const unsigned char> bytes)
{
    if (m_nHeaderLen == 0) m_nHeaderLen = FlvHeaderLength(bytes);
    return m_bClosing && m_output.CanGoBack() && bytes.size() == m_nHeaderLen &&
           FlvHeaderLength(bytes) == m_nHeaderLen;
}

}  // namespace Orbel::Wrapton::Command
