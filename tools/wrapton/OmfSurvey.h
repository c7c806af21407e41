#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "omfpacket/OmfReader.h"

namespace Orbel::Wrapton::Command
{

/// "video", "audio" or "ext".
const char* StreamName(OmfStream stream);
/// What the frame is coded in; empty for extension data.
std::string EncodingName(const OmfFrame& frame);
/// "I", "P", "B" or "-" of a picture; the sub type's number of an ext frame; empty for sound.
std::string FrameKind(const OmfFrame& frame);
/// The date as its recorder's clock showed it, "2024-05-01T12:34:56"; empty when there is none.
std::string DateText(uint32_t date);

/// A stretch of a recording from which nothing, or nothing reliable, was read.
struct OmfDamage
{
    uint64_t offset = 0;
    uint64_t bytes = 0;
    std::string frame;  ///< "video frame 12" when it is a frame that fails its check; else empty
};

/// What was found of one stream of a recording.
struct OmfStreamSurvey
{
    std::vector<std::string> encodings;  ///< in the order of their appearance
    OmfVideo video;                      ///< as the first whole frame says
    OmfAudio audio;
    bool described = false;
    uint64_t frames = 0;
    uint64_t frames_i = 0;
    uint64_t frames_p = 0;
    uint64_t frames_b = 0;
    uint64_t frames_damaged = 0;
    uint64_t bytes = 0;    ///< of payloads
    int64_t start_ms = 0;  ///< time of the first frame
    int64_t end_ms = 0;    ///< time of the last one

    void Add(const OmfFrame& frame);
};

/// What was found of a recording.
class OmfSurvey
{
public:
    /// Places of damage that are told one by one; the others are only counted.
    static constexpr std::size_t kMostPlaces = 1000;

    void Add(const OmfFrame& frame);
    /// @param position of the end, with @p bytes right ahead of it that belong to no frame
    void End(uint64_t position, uint64_t bytes);

    [[nodiscard]] const OmfStreamSurvey& Of(OmfStream stream) const
    {
        return m_streams[static_cast<std::size_t>(stream)];
    }
    [[nodiscard]] uint64_t Frames() const;
    /// From the first frame of any stream to the last, milliseconds.
    [[nodiscard]] int64_t Duration() const;
    [[nodiscard]] uint64_t FramesDamaged() const;
    [[nodiscard]] uint64_t BytesSkipped() const { return m_nSkipped; }
    [[nodiscard]] bool IsDamaged() const { return m_nPlaces > 0; }
    [[nodiscard]] const std::vector<OmfDamage>& Damage() const { return m_damage; }
    [[nodiscard]] uint64_t Places() const { return m_nPlaces; }
    [[nodiscard]] std::string FirstDate() const { return DateText(m_nFirstDate); }
    [[nodiscard]] std::string LastDate() const { return DateText(m_nLastDate); }

private:
    void Note(OmfDamage damage);

    std::array<OmfStreamSurvey, 3> m_streams;
    std::vector<OmfDamage> m_damage;
    uint64_t m_nPlaces = 0;
    uint64_t m_nSkipped = 0;
    uint32_t m_nFirstDate = 0;  // packed
    uint32_t m_nLastDate = 0;
};

}  // namespace Orbel::Wrapton::Command
