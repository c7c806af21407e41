#ifndef WRAPTON_MKVPACKET_OBJECTS_TRACKS_H
#define WRAPTON_MKVPACKET_OBJECTS_TRACKS_H

#include <array>
#include <cstdint>
#include <span>

#include "mkvpacket/Objects/Basicatom.h"

namespace Orbel::Wrapton
{

/// Bytes of a codec ID, at most 20, and of codec private data, at most 256.
using CodecIdBytes = std::array<unsigned char, 20>;
using PrivateBytes = std::array<unsigned char, 256>;

/// What a video TrackEntry says.
struct VIDEOINFO
{
    uint8_t trackNum = 0;
    uint8_t trackType = 0;
    CodecIdBytes codeIDdata{};
    uint32_t codeIDdatalen = 0;
    PrivateBytes privatedata{};
    uint32_t privatedatalen = 0;
    uint32_t nFramerate = 0;  // 0: not known
    uint16_t width = 0;
    uint16_t heigth = 0;  // spelled so in the interface
};

/// What an audio TrackEntry says.
struct AUDIOINFO
{
    uint8_t trackNum = 0;
    CodecIdBytes codeIDdata{};
    uint32_t codeIDdatalen = 0;
    PrivateBytes privatedata{};  // used with A_AAC only
    uint32_t privatedatalen = 0;
    uint8_t channels = 0;
    uint8_t bit_per_sample = 0;
    double sample_rate = 0;
};

/// Tracks, RFC 9559 5.1.4: the ID of the list, and one TrackEntry after another.
class CTracks final : public CBasicatom
{
public:
    /// @param nType MKV_TRACK_TYPE
    /// @param pInfo a VIDEOINFO or an AUDIOINFO, by the type; not read for other types
    void Init(uint32_t nType, const void* pInfo) override;
    void Update() override;
    uint32_t WriteID(CMsbCursor& w) override;
    /// One TrackEntry; of another type than video and audio it is empty.
    uint32_t WriteData(CMsbCursor& w) override;
    /// ID and entries written so far.
    uint32_t Size() override;

private:
    uint32_t m_nType = 0;
    uint32_t m_TrackDatlen = 0;  // the entry written last
    VIDEOINFO m_videoInfo;
    AUDIOINFO m_audioInfo;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MKVPACKET_OBJECTS_TRACKS_H
