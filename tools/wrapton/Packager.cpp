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
    : m_container(container),
      m_output(output),
      m_face(MakeFace(container, [this](SGOutputData& block) { Place(block); }))
{
    if (m_face == nullptr)
        throw Failure("the library gives no packager for " + std::string(container.name));
    if (!as_pcap) return;
    m_capture.emplace(output);
    m_capture->Begin();
}

int Packager::DescribeRtp(const RtpStream& stream)
{
    return m_face->DescribeRtp(stream);
}

int Packager::CreateHeader(SGHeaderInfo& header)
{
    m_bStored = false;
    return m_face->CreateHeader(m_container.streams_from_frames ? nullptr : &header);
}

int Packager::InputFrame(SGFrameInfo& frame)
{
    m_bStored = false;
    m_nTime = frame.frame_time;
    return m_face->InputFrame(frame);
}

int Packager::CreateTailer()
{
    m_bStored = false;
    m_bClosing = true;
    return m_face->CreateTailer();
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
