#ifndef WRAPTON_MP4PACKET_BOX_BOX_H
#define WRAPTON_MP4PACKET_BOX_BOX_H

#include <cstdint>

#include "mp4packet/atom.h"
#include "tool/ByteCursor.h"
#include "tool/SizeCheck.h"

namespace Orbel::Wrapton
{

/// Flavours of the file; every box keeps the one it was made for.
enum eBoxMode : uint32_t
{
    BoxMode_Mp4 = 0,
    BoxMode_Mov = 1,
    BoxMode_Mp4_64 = 2,
    BoxMode_Mov_64 = 3,
    BoxMode_Mp4_NoSeek = 4,
    BoxMode_Mov_NoSeek = 5,
    BoxMode_Empty = 6
};

constexpr bool IsQuickTime(uint32_t nMode)
{
    return nMode == BoxMode_Mov || nMode == BoxMode_Mov_64;
}

constexpr bool Is64Bit(uint32_t nMode)
{
    return nMode == BoxMode_Mp4_64 || nMode == BoxMode_Mov_64;
}

constexpr bool IsNoSeek(uint32_t nMode)
{
    return nMode == BoxMode_Mp4_NoSeek || nMode == BoxMode_Mov_NoSeek;
}

/// Tracks; the numbers are the track IDs, too.
enum eTrakType : uint32_t
{
    MP4_VIDEO_TRAK = 1,
    MP4_AUDIO_TRAK = 2,
    MP4_EXT_TRAK = 3
};

/// What opens a video track.
struct Mp4_VideoInfo
{
    const unsigned char* pointer = nullptr;  // the first frame as it came
    uint32_t size = 0;
    uint32_t width = 0;
    uint32_t heigth = 0;  // spelled so in the interface
    uint32_t frame_rate = 0;
    uint32_t encode_type = 0;
};

/// What opens an audio track.
struct Mp4_AudioInfo
{
    uint32_t encode_type = 0;
    uint32_t channels = 0;
    uint32_t bit_per_sample = 0;
    uint32_t sample_rate = 0;
};

/// One sample on its way into the tables. Boxes may shorten it.
struct Mp4_Sample
{
    const unsigned char* pointer = nullptr;
    uint32_t size = 0;
    int32_t frametype = 0;  // SG_FRAME_SUB_TYPE
    uint64_t postion = 0;   // of the first payload byte in the file; spelled so in the interface
};

/**
 * A box, ISO/IEC 14496-12 4.2.
 *
 * Init() takes the description once, InputData() each sample, Update() settles the sizes from the
 * leaves up, and the Put operations write what was settled. A container box owns its children.
 */
class CBox
{
public:
    CBox(eBoxType type, uint32_t nMode);
    virtual ~CBox() = default;
    CBox(const CBox&) = delete;
    CBox& operator=(const CBox&) = delete;

    /// @param nType a track, or a length where a box says so
    /// @param pInfo a description, Mp4_VideoInfo or Mp4_AudioInfo; null: none
    virtual void Init(uint32_t nType, void* pInfo);
    /// @param nType a track, or a number where a box says so
    /// @param pInfo an Mp4_Sample where a box says so
    virtual void InputData(uint32_t nType, void* pInfo);
    virtual void Update();

    /// The pointer forms write what the cursor forms lay out; @p pBuffer has room for it.
    /// @return the bytes written, 0 for null
    virtual uint32_t Write(unsigned char* pBuffer);
    /// The size field of the header.
    virtual uint32_t Size();
    virtual uint32_t WriteAtom(unsigned char* pBuffer);
    virtual uint32_t WriteData(unsigned char* pBuffer);

    /// Header and payload.
    void Put(CMsbCursor& w) const;

    /// How many bytes Put() produces. A media data box claims more than that: its samples.
    [[nodiscard]] uint32_t Length() const;

protected:
    virtual void PutAtom(CMsbCursor& w) const;
    virtual void PutData(CMsbCursor& w) const;

    uint32_t m_nDataLen = 0;  // payload behind the header, in bytes
    bool m_bInited = false;   // of boxes that are initialised once
    Catom m_atom;
    uint32_t m_nMode;
};

/// Compares the payload that a box's writer produced with what the box declared.
class CPayloadCheck : public CSizeCheck
{
public:
    /// @param line a printf format; may take the produced and the declared length as %d
    CPayloadCheck(const CByteCursor& w, uint32_t declared, const char* line) noexcept
        : CSizeCheck(w, declared, line, Order::kProducedFirst)
    {
    }
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MP4PACKET_BOX_BOX_H
