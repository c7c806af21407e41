/**
 * @file OmfFrames.h
 * Takes a whole native recording apart, strictly: a byte that is not as it must be throws.
 */
#ifndef WRAPTON_TESTS_READERS_OMFFRAMES_H
#define WRAPTON_TESTS_READERS_OMFFRAMES_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Readers
{

/// An extension header, its tag first.
using OmfExHeader = std::vector<unsigned char>;

struct OmfFrame
{
    std::size_t offset = 0;
    uint32_t type = 0;
    uint32_t subType = 0;
    uint32_t number = 0;
    uint32_t length = 0;
    uint32_t date = 0;   ///< packed
    uint32_t stamp = 0;  ///< milliseconds, 16 bits
    std::vector<OmfExHeader> exHeaders;
    std::vector<unsigned char> payload;

    /// The extension header with that tag; throws when there is none.
    [[nodiscard]] const OmfExHeader& Ex(uint32_t tag) const;
};

/// Frames of a recording in which nothing is damaged. Checks tags, channel, lengths, both
/// checksums and that extension headers stand in their order.
std::vector<OmfFrame> ReadOmf(const std::vector<unsigned char>& recording);

}  // namespace Readers

#endif  // WRAPTON_TESTS_READERS_OMFFRAMES_H
