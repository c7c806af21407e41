#ifndef WRAPTON_FUZZ_FIRSTRECORDING_H
#define WRAPTON_FUZZ_FIRSTRECORDING_H

#include <memory>
#include <span>
#include <string_view>

#include "IWrapton.h"
#include "SparseImage.h"
#include "StoredFrames.h"

namespace Fuzz
{

/// The first recording of a file component, as a callable gets it.
class FirstRecording
{
public:
    /// @param plenty whether there is memory for everything
    FirstRecording(std::string_view type, bool plenty);

    /// The component was opened, for a callable or for a path. Another opening ends the first.
    void Opened(bool callable);

    /// A block that the callable was given.
    void Take(const Orbel::Wrapton::FrameAttributes& info, std::span<const unsigned char> block);
    [[nodiscard]] unsigned Blocks() const { return m_blocks; }

    /// A frame for which blocks came.
    void Add(const Orbel::Wrapton::FrameAttributes& attrs, std::span<const unsigned char> bytes);

    /// The component was closed: everything is read back.
    void Closed();

private:
    std::unique_ptr<StoredFrames> m_frames;  // null: it is not read back
    bool m_appendsOnly;
    bool m_open = false;
    unsigned m_blocks = 0;
    SparseImage m_image;
};

}  // namespace Fuzz

#endif  // WRAPTON_FUZZ_FIRSTRECORDING_H
