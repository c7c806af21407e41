#ifndef WRAPTON_MP4PACKET_BOX_HEADERFIELDS_H
#define WRAPTON_MP4PACKET_BOX_HEADERFIELDS_H

#include <cstdint>

#include "tool/ByteCursor.h"

namespace Orbel::Wrapton
{

/// Version and flags of a full box, ISO/IEC 14496-12 4.2.
void PutFullBox(CMsbCursor& w, uint32_t version, uint32_t flags) noexcept;

/// The transformation matrix of movie and track headers that changes nothing, ISO/IEC 14496-12
/// 6.2.2.
void PutUnityMatrix(CMsbCursor& w) noexcept;

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MP4PACKET_BOX_HEADERFIELDS_H
