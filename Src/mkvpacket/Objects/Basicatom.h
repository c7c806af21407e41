#ifndef WRAPTON_MKVPACKET_OBJECTS_BASICATOM_H
#define WRAPTON_MKVPACKET_OBJECTS_BASICATOM_H

#include <cstdint>

#include "tool/ByteCursor.h"

namespace Orbel::Wrapton
{

/// TrackType, RFC 9559 5.1.4.1.3.
enum MKV_TRACK_TYPE : uint32_t
{
    TRACK_TYPE_VIDEO = 1,
    TRACK_TYPE_AUDIO = 2,
    TRACK_TYPE_COMPLEX = 3,
    TRACK_TYPE_LOGO = 16,
    TRACK_TYPE_SUBTITLE = 17,
    TRACK_TYPE_BUTTONS = 18,
    TRACK_TYPE_CONTROL = 32
};

/**
 * Writes one element.
 *
 * Init() takes a description, InputData() what is to be written next, and the Write operations
 * return how many bytes the layout has.
 */
class CBasicatom
{
public:
    CBasicatom() = default;
    virtual ~CBasicatom() = default;
    CBasicatom(const CBasicatom&) = delete;
    CBasicatom& operator=(const CBasicatom&) = delete;

    virtual void Init(uint32_t nType, const void* pInfo);
    virtual void InputData(uint32_t nType, const void* pData);
    /// Adds what was written last to the payload.
    virtual void Update();
    /// WriteID() and WriteData().
    virtual uint32_t Write(CMsbCursor& w);
    virtual uint32_t Size();
    virtual uint32_t WriteID(CMsbCursor& w);
    virtual uint32_t WriteData(CMsbCursor& w);

protected:
    uint32_t m_nDataLen = 0;  // payload bytes so far
    uint32_t m_size = 12;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MKVPACKET_OBJECTS_BASICATOM_H
