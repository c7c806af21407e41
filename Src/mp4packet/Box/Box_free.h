#ifndef WRAPTON_MP4PACKET_BOX_BOX_FREE_H
#define WRAPTON_MP4PACKET_BOX_BOX_FREE_H

#include <span>

#include "mp4packet/Box/Box.h"

namespace Orbel::Wrapton
{

/// free: room that readers skip, ISO/IEC 14496-12 8.1.2.
class CBox_free final : public CBox
{
public:
    explicit CBox_free(uint32_t nMode);

    /// @param nType length of the payload in bytes. Kept: 0 leaves the size field as it was, so a
    ///        hole that was filled exactly is still claimed whole by its 8-byte header
    void Init(uint32_t nType, void* pInfo) override;

    /// Lays out the part of the box that begins @p from bytes into it, for boxes larger than any
    /// buffer.
    void PutPiece(std::span<unsigned char> piece, uint32_t from) const;

protected:
    void PutData(CMsbCursor& w) const override;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MP4PACKET_BOX_BOX_FREE_H
