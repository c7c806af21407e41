#ifndef WRAPTON_TOOL_PESTIME_H
#define WRAPTON_TOOL_PESTIME_H

#include <cstdint>

#include "tool/ByteCursor.h"

namespace Orbel::Wrapton
{

/// The 9 bytes that PES headers here begin with, ISO/IEC 13818-1 table 2-21: marker, not scrambled,
/// and no flags but those of the time stamps.
inline void PutPesStart(CMsbCursor& w,
                        uint32_t stream_id,
                        uint32_t packet_len,
                        uint32_t pts_dts_flags,
                        uint32_t header_data_len)
{
    constexpr uint32_t kStartCodePrefix = 0x000001;

    w.Bits<64>(Field<24>(kStartCodePrefix),
               Field<8>(stream_id),
               Field<16>(packet_len),
               Field<2>(2),  // marker
               Field<6>(0),
               Field<2>(pts_dts_flags),
               Field<6>(0));
    w.U8(header_data_len);
}

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
