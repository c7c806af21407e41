#ifndef WRAPTON_AVIPACKET_AVIXRIFF_H
#define WRAPTON_AVIPACKET_AVIXRIFF_H

#include <cstdint>

#include "avipacket/AviRiffBase.h"

namespace Orbel::Wrapton
{

/**
 * One extension RIFF ("RIFF" "AVIX"), OpenDML AVI File Format Extensions 1.02.
 *
 * It takes every video and audio frame, whatever streams the header list knows, and counts none.
 */
class CAviXRiff : public CAviRiffBase
{
public:
    /// Emits the header. @param baseOffset position of the RIFF in the file
    int Init(uint64_t baseOffset, pRiffCallback callback, void* user) noexcept;
    /// Ignores a frame that is null or has no data pointer. Closes the RIFF once it is full.
    int InputFrame(const SGFrameInfo* pFrame) noexcept;
    /// Emits the indexes and the header. Kept: every call appends the indexes once more.
    void EndInput() noexcept;

private:
    int Package(eAviStream stream, const SGFrameInfo& frame) noexcept;
    void EmitHeader() const noexcept;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_AVIPACKET_AVIXRIFF_H
