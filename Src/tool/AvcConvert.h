#ifndef WRAPTON_TOOL_AVCCONVERT_H
#define WRAPTON_TOOL_AVCCONVERT_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace Orbel::Wrapton
{

/**
 * Reads H.264 byte streams, ISO/IEC 14496-10 Annex B: NAL units behind the start codes 00 00 01 and
 * 00 00 00 01. Any length is accepted and no byte outside the input is read. A three-byte start
 * code in the very last three bytes is not seen as one.
 */
class CAvcConvert
{
public:
    virtual ~CAvcConvert() = default;

    /// Copies the first sequence parameter set, NAL header included.
    /// @return its length; 0 when there is none or it does not fit; -1 when @p out is null or
    ///         @p outCap is 0
    int32_t getSPS(const unsigned char* data,
                   unsigned int len,
                   unsigned char* out,
                   unsigned int outCap) const noexcept;

    /// The same for the first picture parameter set.
    /// @return as for getSPS(), but -1 only when @p out is null and @p outCap is 0 together. A null
    ///         @p out alone is no room: 0
    int32_t getPPS(const unsigned char* data,
                   unsigned int len,
                   unsigned char* out,
                   unsigned int outCap) const noexcept;

    /// Replaces the start code of every NAL unit by its length in 4 bytes, big-endian.
    /// @return the bytes written; a unit that no longer fits and all behind it are left out. -1
    /// when
    ///         @p out is null or @p outCap is 0
    int32_t H264ToAvc(const unsigned char* data,
                      unsigned int len,
                      unsigned char* out,
                      unsigned int outCap) const noexcept;

    /// Bytes of the length that takes a start code's place.
    static constexpr size_t kLengthLen = 4;

    /// The most that a frame of @p size bytes converts to: empty units behind start codes of 3
    /// bytes grow by a third.
    static constexpr size_t MostConverted(size_t size) noexcept { return size + size / 3; }

    /// What H264ToAvc() made of a frame.
    struct Conversion
    {
        size_t written = 0;   ///< bytes at the output
        size_t left_out = 0;  ///< bytes of the first unit that did not fit, length included; 0:
                              ///< every unit fitted
    };

    /// H264ToAvc() for users that have to know where it stopped.
    static Conversion ConvertUnits(std::span<const unsigned char> data,
                                   std::span<unsigned char> out) noexcept;

    /// H264ToAvc() for users that store whole frames only: nothing when a unit did not fit.
    static std::optional<size_t> ConvertWhole(std::span<const unsigned char> data,
                                              std::span<unsigned char> out) noexcept;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_TOOL_AVCCONVERT_H
