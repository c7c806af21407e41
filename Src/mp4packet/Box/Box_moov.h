#ifndef WRAPTON_MP4PACKET_BOX_BOX_MOOV_H
#define WRAPTON_MP4PACKET_BOX_BOX_MOOV_H

#include <array>
#include <memory>

#include "mp4packet/Box/Box.h"
#include "mp4packet/Box/Box_mvhd.h"
#include "mp4packet/Box/Box_trak.h"

namespace Orbel::Wrapton
{

/// moov: the movie, ISO/IEC 14496-12 8.2.1.
class CBox_moov final : public CBox
{
public:
    explicit CBox_moov(uint32_t nMode);

    /// Opens the track of type @p nType. Kept: without a description nothing happens, and since the
    /// ext track has none it never becomes part of the movie.
    void Init(uint32_t nType, void* pInfo) override;

    /// Passes an Mp4_Sample to the track of type @p nType.
    void InputData(uint32_t nType, void* pInfo) override;
    /// InputData() that leaves settling the sizes to the next Update(): for every frame, walking
    /// over all boxes costs more than the tables do.
    void Note(uint32_t nType, Mp4_Sample& sample);
    void Update() override;

    /// Makes room for one more sample of the track in every table that will note it.
    /// @return false, with nothing changed, when there is no memory or the movie box would outgrow
    ///         what one block of output can carry
    bool Reserve(uint32_t nType);

protected:
    void PutData(CMsbCursor& w) const override;

private:
    /// A track and whether it is part of the movie.
    struct Track
    {
        std::unique_ptr<CBox_trak> box;
        bool open = false;
    };

    [[nodiscard]] Track* Find(uint32_t nType);
    void NoteDuration(const CBox_trak& trak);

    std::unique_ptr<CBox_mvhd> m_pMvhd;
    std::array<Track, 3> m_tracks;  // in the order of eTrakType
    uint32_t m_nTrackCnt = 0;
    uint32_t m_nTotalDuration = 0;  // movie units; never becomes smaller
    uint64_t m_nUnsettled = 0;      // the most that Size() is behind by
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MP4PACKET_BOX_BOX_MOOV_H
