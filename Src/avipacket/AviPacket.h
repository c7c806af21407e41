#ifndef WRAPTON_AVIPACKET_AVIPACKET_H
#define WRAPTON_AVIPACKET_AVIPACKET_H

#include <cstdint>
#include <memory>

#include "Package.h"
#include "avipacket/AviRiff.h"
#include "avipacket/AviXRiff.h"

namespace Orbel::Wrapton
{

/**
 * Packages frames as an AVI file, with the OpenDML extension once it passes 1 GiB.
 *
 * Every block has an absolute position. The header list is emitted at the beginning and, complete,
 * once more at the end.
 */
class CAviPacket final : public CPackage
{
public:
    CAviPacket(uint32_t nType, const SGCreateParam* pCreateParam);
    ~CAviPacket() override = default;

    int Init() override;
    int Deinit() override;
    /// Refused inside a recording; after a tailer it begins another file at position 0. Frames that
    /// came ahead of the first header have been counted, and the streams they brought are there.
    int CreateHeader(SGHeaderInfo* pHeader, unsigned int nReserved) override;
    using CPackage::InputData;
    int InputData(SGFrameInfo* pFrame, unsigned int nReserved) override;
    int CreateTailer(SGTailerInfo* pTailer, unsigned int nReserved) override;

private:
    static void RiffCallback(const unsigned char* data,
                             uint32_t length,
                             uint64_t position,
                             void* user);
    void OutputData(const unsigned char* data, uint32_t length, uint64_t position);

    /// Takes account of a RIFF that was closed: its length, and its indexes in the header.
    void NoteClosed(const CAviRiffBase& closed);
    void InputEntry(eAviStream stream, const CAviRiffBase& closed);
    /// Opens the next extension RIFF; false, with none open, when there is no memory.
    bool OpenExtRiff();

    CAviRiff m_mainRiff;
    std::unique_ptr<CAviXRiff> m_pExtRiff;
    uint32_t m_nExtRiffCount = 0;   // kept: stays 1 however many there are
    uint64_t m_nCurRiffOffset = 0;  // of the next RIFF
    bool m_bRecording = false;      // a header was written, its tailer was not
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_AVIPACKET_AVIPACKET_H
