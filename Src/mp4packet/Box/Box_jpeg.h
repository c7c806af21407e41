#ifndef WRAPTON_MP4PACKET_BOX_BOX_JPEG_H
#define WRAPTON_MP4PACKET_BOX_BOX_JPEG_H

#include "mp4packet/Box/Box.h"
#include "mp4packet/Box/VisualEntry.h"

namespace Orbel::Wrapton
{

/// jpeg: motion JPEG sample entry, QuickTime File Format, "Video Media".
class CBox_jpeg final : public CBox
{
public:
    explicit CBox_jpeg(uint32_t nMode);
    void Init(uint32_t nType, void* pInfo) override;
    void Update() override;

protected:
    void PutData(CMsbCursor& w) const override;

private:
    Mp4_AVC1 m_Data;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MP4PACKET_BOX_BOX_JPEG_H
