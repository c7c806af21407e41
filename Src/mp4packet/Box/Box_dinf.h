#ifndef WRAPTON_MP4PACKET_BOX_BOX_DINF_H
#define WRAPTON_MP4PACKET_BOX_BOX_DINF_H

#include <memory>

#include "mp4packet/Box/Box.h"
#include "mp4packet/Box/Box_dref.h"

namespace Orbel::Wrapton
{

/// dinf: data information, ISO/IEC 14496-12 8.7.1.
class CBox_dinf final : public CBox
{
public:
    explicit CBox_dinf(uint32_t nMode);
    void Init(uint32_t nType, void* pInfo) override;
    void Update() override;

protected:
    void PutData(CMsbCursor& w) const override;

private:
    std::unique_ptr<CBox_dref> m_pDref;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MP4PACKET_BOX_BOX_DINF_H
