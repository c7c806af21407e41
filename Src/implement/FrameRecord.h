#ifndef WRAPTON_IMPLEMENT_FRAMERECORD_H
#define WRAPTON_IMPLEMENT_FRAMERECORD_H

#include <cstdint>
#include <vector>

#include "IWrapton.h"
#include "Wrapton.h"

namespace Orbel::Wrapton
{

/// How a frame's date reaches the packager. Kept: the operations differ in this.
enum class DateForm
{
    kSeconds,  // since 1970, from local time
    kPacked    // the word of get_current_omf_time()
};

/// Whether the keys of a foreign maker's stream are read.
enum class MakerKeys
{
    kLeft,
    kRead
};

/// The frame record that a frame and its attributes make. Read by a packager during one call.
class CFrameRecord
{
public:
    /// Throws std::bad_alloc.
    CFrameRecord(const void* data,
                 unsigned int len,
                 const FrameAttributes& attrs,
                 DateForm date,
                 MakerKeys maker);
    CFrameRecord(const CFrameRecord&) = delete;
    CFrameRecord& operator=(const CFrameRecord&) = delete;

    [[nodiscard]] SGFrameInfo* Get() noexcept { return &m_frame; }

private:
    void SetSplit(const FrameAttributes& attrs);

    SGFrameInfo m_frame{};  // struct_size stays 0: only the flat interface looks at it
    std::vector<SGBlockInfo> m_blocks;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_IMPLEMENT_FRAMERECORD_H
