#ifndef WRAPTON_MP4PACKET_BOX_BOX_HDLR_H
#define WRAPTON_MP4PACKET_BOX_BOX_HDLR_H

#include <array>
#include <string_view>

#include "mp4packet/Box/Box.h"

namespace Orbel::Wrapton
{

struct Mp4_HDLR
{
    uint8_t version = 0;
    uint32_t flags = 0;
    uint32_t pre_define = 0;
    std::array<unsigned char, 4> component_subtype{};
    std::string_view component_name;
};

/// hdlr: handler reference, ISO/IEC 14496-12 8.4.3; the QuickTime modes write the same.
class CBox_hdlr final : public CBox
{
public:
    explicit CBox_hdlr(uint32_t nMode);
    void Init(uint32_t nType, void* pInfo) override;
    void Update() override;

protected:
    void PutData(CMsbCursor& w) const override;

private:
    static constexpr uint32_t kFixedLen = 1 + 3 + 4 + 4 + 3 * 4;  // all but the name

    Mp4_HDLR m_Data;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MP4PACKET_BOX_BOX_HDLR_H
