#include "mkvpacket/Objects/SegInfo.h"

#include <string_view>

#include "mkvpacket/Objects/ElementIds.h"
#include "tool/Clock.h"

namespace Orbel::Wrapton
{
namespace
{

constexpr uint32_t kHeaderLen = 4 + 8;
constexpr uint32_t kNanosecondsPerTick = 1000000;
constexpr std::string_view kApplication = "Lavf55.33.100";

}  // namespace

uint32_t CSegInfo::Write(CMsbCursor& w)
{
    const size_t begin = w.Produced();
    {
        const CEbmlScope info(w, kInfo);
        PutUint24(w, kTimecodeScale, kNanosecondsPerTick);
        // Kept: seconds since 1970 where nanoseconds since 2001 are meant.
        PutUint64(w, kDateUtc, static_cast<uint64_t>(get_current_utc_time()));
        PutString(w, kMuxingApp, kApplication);
        PutString(w, kWritingApp, kApplication);
    }
    m_nDataLen = static_cast<uint32_t>(w.Produced() - begin) - kHeaderLen;
    return Size();
}

uint32_t CSegInfo::Size()
{
    m_size = m_nDataLen + kHeaderLen;
    return m_size;
}

}  // namespace Orbel::Wrapton
