#ifndef WRAPTON_MP4PACKET_BOX_BOX_STSZ_H
#define WRAPTON_MP4PACKET_BOX_BOX_STSZ_H

#include "mp4packet/Box/Box.h"
#include "mp4packet/Box/EntryTable.h"

namespace Orbel::Wrapton
{

/// stsz: sample sizes, ISO/IEC 14496-12 8.7.3.2. A table always follows, equal sizes or not.
class CBox_stsz final : public CBox
{
public:
    explicit CBox_stsz(uint32_t nMode);

    /// @param nType size of the next sample in bytes
    void InputData(uint32_t nType, void* pInfo) override;
    void Update() override;

    [[nodiscard]] bool Reserve() noexcept { return m_table.Reserve(); }

protected:
    void PutData(CMsbCursor& w) const override;

private:
    CEntryTable m_table;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MP4PACKET_BOX_BOX_STSZ_H
