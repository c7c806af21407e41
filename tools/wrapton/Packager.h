#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include <wrapton/wrapton.hpp>

#include "Containers.h"
#include "Face.h"
#include "OutputFile.h"
#include "PcapFile.h"
#include "RtpStream.h"

namespace Orbel::Wrapton::Command
{

/// A packager of the library whose blocks go to an output file.
class Packager
{
public:
    /// @param as_pcap writes packets of RTP into a capture file
    /// Throws Failure when the library has none.
    Packager(const Container& container, OutputFile& output, bool as_pcap);
    Packager(const Packager&) = delete;
    Packager& operator=(const Packager&) = delete;
    ~Packager() = default;

    /// Each gives the library's own code.
    int DescribeRtp(const RtpStream& stream);
    int CreateHeader(const SGHeaderInfo& header);
    int InputFrame(std::span<unsigned char> bytes, const SGFrameInfo& frame);
    int CreateTailer();

    /// True when the last call emitted anything but a rewrite of the file's beginning: the library
    /// also answers 0 for a frame that it drops.
    [[nodiscard]] bool LastCallStored() const { return m_bStored; }

private:
    std::size_t Place(Block block);
    std::size_t Write(const Block& block);

    const Container& m_container;
    OutputFile& m_output;
    std::optional<PcapFile> m_capture;
    uint32_t m_nTime = 0;  ///< of the frame at hand, in milliseconds
    std::unique_ptr<Face> m_face;
    bool m_bStored = false;
    bool m_bClosing = false;
};

}  // namespace Orbel::Wrapton::Command
