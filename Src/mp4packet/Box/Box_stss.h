#ifndef WRAPTON_MP4PACKET_BOX_BOX_STSS_H
#define WRAPTON_MP4PACKET_BOX_BOX_STSS_H

#include "mp4packet/Box/Box.h"
#include "mp4packet/Box/EntryTable.h"

namespace Orbel::Wrapton
{

/// stss: sync samples, ISO/IEC 14496-12 8.6.2.
class CBox_stss final : public CBox
{
public:
    explicit CBox_stss(uint32_t nMode);

    /// @param nType number of a sync sample, from 1
    void InputData(uint32_t nType, void* pInfo) override;
    void Update() override;

    [[nodiscard]] bool Reserve() noexcept { return m_table.Reserve(); }

protected:
    void PutData(CMsbCursor& w) const override;

private:
    CEntryTable m_table;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MP4PACKET_BOX_BOX_STSS_H
