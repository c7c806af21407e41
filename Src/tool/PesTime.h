#ifndef WRAPTON_TOOL_PESTIME_H
#define WRAPTON_TOOL_PESTIME_H

#include <cstdint>

#include "tool/ByteCursor.h"

namespace Orbel::Wrapton
{

/// Which time stamp of a PES header follows: the four bits ahead of it.
enum class PesTime : uint32_t
{
    kPtsAlone = 2,
    kPtsBeforeDts = 3,
    kDts = 1
};

/// A time stamp of a PES header in 90 kHz units, 33 bits in 5 bytes, ISO/IEC 13818-1 table 2-21.
inline void PutPesTime(CMsbCursor& w, PesTime kind, uint64_t time)
{
    w.Bits<40>(Field<4>(static_cast<uint32_t>(kind)),
               Field<3>(static_cast<uint32_t>(time >> 30)),
               Field<1>(1),  // marker
               Field<15>(static_cast<uint32_t>(time >> 15)),
               Field<1>(1),
               Field<15>(static_cast<uint32_t>(time)),
               Field<1>(1));
}

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_TOOL_PESTIME_H
