#ifndef WRAPTON_MP4PACKET_BOX_BOX_STBL_H
#define WRAPTON_MP4PACKET_BOX_BOX_STBL_H

#include <memory>

#include "mp4packet/Box/Box.h"
#include "mp4packet/Box/Box_co64.h"
#include "mp4packet/Box/Box_stco.h"
#include "mp4packet/Box/Box_stsc.h"
#include "mp4packet/Box/Box_stsd.h"
#include "mp4packet/Box/Box_stss.h"
#include "mp4packet/Box/Box_stsz.h"
#include "mp4packet/Box/Box_stts.h"

namespace Orbel::Wrapton
{

/// stbl: the tables that index a track's samples, ISO/IEC 14496-12 8.5.1.
class CBox_stbl final : public CBox
{
public:
    explicit CBox_stbl(uint32_t nMode);
    void Init(uint32_t nType, void* pInfo) override;

    /// Notes an Mp4_Sample in every table; the sample description may shorten it first.
    void InputData(uint32_t nType, void* pInfo) override;
    void Update() override;

    /// Makes room for one more sample in every table, so that none of them can miss it.
    /// @return false, with nothing lost, when there is no memory
    bool Reserve();

    /// In media units.
    [[nodiscard]] uint32_t getTotalDuration() const noexcept { return m_pStts->getTotalDuration(); }

protected:
    void PutData(CMsbCursor& w) const override;

private:
    /// The boxes of this track in file order.
    template <class Visit>
    void ForEachChild(Visit visit) const;

    uint32_t m_nType = 0;        // eTrakType
    uint32_t m_nEntryCount = 1;  // number of the next sample
    std::unique_ptr<CBox_stsd> m_pStsd;
    std::unique_ptr<CBox_stts> m_pStts;
    std::unique_ptr<CBox_stss> m_pStss;
    std::unique_ptr<CBox_stsc> m_pStsc;
    std::unique_ptr<CBox_stsz> m_pStsz;
    std::unique_ptr<CBox_stco> m_pStco;  // null in the 64-bit modes
    std::unique_ptr<CBox_co64> m_pCo64;  // null in the others
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MP4PACKET_BOX_BOX_STBL_H
