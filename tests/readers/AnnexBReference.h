/**
 * @file AnnexBReference.h
 * The conversion of H.264 byte streams in its slowest and plainest form: every position is looked
 * at, every byte compared. What the library does fast must come out the same.
 */
#ifndef WRAPTON_TESTS_READERS_ANNEXBREFERENCE_H
#define WRAPTON_TESTS_READERS_ANNEXBREFERENCE_H

#include <cstdint>
#include <span>
#include <vector>

namespace Readers
{

struct ReferenceResult
{
    int32_t result = 0;
    std::vector<unsigned char> written;  ///< what stands at the front of the output afterwards
};

/// The first NAL unit of @p type (7 or 8) for an output of @p capacity bytes.
ReferenceResult ReferenceParameterSet(std::span<const unsigned char> data,
                                      unsigned type,
                                      std::size_t capacity);

/// All NAL units behind their lengths for an output of @p capacity bytes.
ReferenceResult ReferenceH264ToAvc(std::span<const unsigned char> data, std::size_t capacity);

/// The NAL units behind the start codes; the frame itself when it has none.
std::vector<std::span<const unsigned char>> ReferenceUnits(std::span<const unsigned char> data);

}  // namespace Readers

#endif  // WRAPTON_TESTS_READERS_ANNEXBREFERENCE_H
