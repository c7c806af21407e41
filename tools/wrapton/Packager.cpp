#include "Packager.h"

#include <string>

#include "Failure.h"

namespace Orbel::Wrapton::Command
{

Packager::Packager(const Container& container, OutputFile& output, bool as_pcap)
    : m_container(container),
      m_output(output),
      m_face(MakeFace(container, [this](const Block& block) { return Place(block); }))
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

int Packager::CreateHeader(const SGHeaderInfo& header)
{
    m_bStored = false;
    return m_face->CreateHeader(m_container.streams_from_frames ? nullptr : &header);
}

int Packager::InputFrame(std::span<unsigned char> bytes, const SGFrameInfo& frame)
{
    m_bStored = false;
    m_nTime = frame.frame_time;
    return m_face->InputFrame(bytes, frame);
}

int Packager::CreateTailer()
{
    m_bStored = false;
    m_bClosing = true;
    return m_face->CreateTailer();
}

std::size_t Packager::Write(const Block& block)
{
    if (!m_capture) return m_output.Place(block);

    // A block is one packet behind its length.
    constexpr std::size_t kLengthLen = 2;
    m_capture->Put(m_nTime, block.bytes.subspan(kLengthLen));
    return m_output.Good() ? block.bytes.size() : 0;
}

std::size_t Packager::Place(Block block)
{
    block.closing = m_bClosing;
    const bool at_start = block.origin == Origin::kStart && block.offset == 0;
    const uint64_t size_before = m_output.Size();
    const std::size_t written = Write(block);
    // A header at the start may have the first frame behind it.
    m_bStored = m_bStored || !at_start || m_output.Size() > size_before;
    return written;
}

}  // namespace Orbel::Wrapton::Command
