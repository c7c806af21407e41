#ifndef WRAPTON_OMFPACKET_OMFTIME_H
#define WRAPTON_OMFPACKET_OMFTIME_H

#include <cstdint>
#include <optional>

namespace Orbel::Wrapton
{

/// A packed date taken apart, in the local time of the recorder.
struct OmfDate
{
    uint32_t year = 0;  // 2000 to 2063
    uint32_t month = 0;
    uint32_t day = 0;
    uint32_t hour = 0;
    uint32_t minute = 0;
    uint32_t second = 0;

    /// Seconds from 2000-01-01.
    [[nodiscard]] int64_t Seconds() const noexcept;
};

/// Empty when the word is no date; 0 is none.
std::optional<OmfDate> ReadOmfDate(uint32_t date) noexcept;

/// A frame on the time line of its recording.
struct OmfPoint
{
    int64_t time = 0;   // milliseconds
    uint32_t date = 0;  // packed
};

/**
 * Stamps are 16 bits of milliseconds and start over after 65.5 s; this gives times that go on.
 *
 * @param before the frame ahead of this one
 * @return the time that the dates of both frames say, when the stamp agrees with it; otherwise the
 *         next one with these 16 bits, or one up to 4 s ahead of @p before: pictures may be stamped
 *         out of order, and two streams do not begin in step
 */
int64_t UnwrapOmfStamp(const OmfPoint& before, uint16_t stamp, uint32_t date) noexcept;

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_OMFPACKET_OMFTIME_H
