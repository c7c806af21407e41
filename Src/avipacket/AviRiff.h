#ifndef WRAPTON_AVIPACKET_AVIRIFF_H
#define WRAPTON_AVIPACKET_AVIRIFF_H

#include <cstdint>

#include "avipacket/AviHdrlList.h"
#include "avipacket/AviIdx1Object.h"
#include "avipacket/AviRiffBase.h"

namespace Orbel::Wrapton
{

/// The first RIFF of the file ("RIFF" "AVI "), with the header list and the idx1 index.
class CAviRiff : public CAviRiffBase
{
public:
    CAviRiff() = default;
    CAviRiff(CAviRiff&&) = default;
    CAviRiff& operator=(CAviRiff&&) = default;
    ~CAviRiff() = default;

    /// Emits the headers. @param pHeader null: no stream is known beforehand
    int Init(const SGHeaderInfo* pHeader, pRiffCallback callback, void* user) noexcept;
    /// Ignores a frame that is null or has no data pointer.
    int InputFrame(const SGFrameInfo* pFrame) noexcept;
    /// Emits the indexes, once, and the headers with their sizes.
    void EndInput() noexcept;
    /// Emits the header list as it is now.
    void CreateHeader() noexcept { m_hdrlList.Write(); }
    int InputEntry(eAviStream stream, const superindex_entry* entry) noexcept;

private:
    int PackageVideoFrame(const SGFrameInfo& frame) noexcept;
    int PackageAudioFrame(const SGFrameInfo& frame) noexcept;
    int ReserveFor(eAviStream stream, uint32_t size) noexcept;
    void Package(eAviStream stream, const SGFrameInfo& frame, bool key) noexcept;
    void EmitRiffHeader() const noexcept;
    void EmitMovieList() const noexcept;

    uint64_t m_nMoviOffset = 0;
    bool m_bHasTailer = false;  // the indexes have been written
    CAviHdrlList m_hdrlList;
    CAviIdx1Object m_idx1Object;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_AVIPACKET_AVIRIFF_H
