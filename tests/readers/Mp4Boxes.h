/**
 * @file Mp4Boxes.h
 * The tree of boxes of an ISO base media or QuickTime file, ISO/IEC 14496-12 4.2.
 */
#ifndef WRAPTON_TESTS_READERS_MP4BOXES_H
#define WRAPTON_TESTS_READERS_MP4BOXES_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace Readers
{

/// The bytes are not what the standard asks for.
class Mp4Error : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

struct Mp4Box
{
    std::string type;
    std::size_t offset = 0;  ///< of the size field, from the start of the bytes
    std::size_t size = 0;    ///< header included
    std::size_t header = 8;  ///< 8, or 16 with a largesize
    std::vector<Mp4Box> children;

    [[nodiscard]] std::size_t Payload() const { return offset + header; }
    [[nodiscard]] std::size_t End() const { return offset + size; }
};

/// Boxes from the first byte to the last; throws Mp4Error when they do not fill the bytes.
std::vector<Mp4Box> ReadBoxes(std::span<const unsigned char> bytes);

/**
 * The box at @p path, null when there is none.
 *
 * @param path types with slashes between, "moov/trak[1]/tkhd"; a number counts boxes of that type
 */
const Mp4Box* FindBox(const std::vector<Mp4Box>& boxes, std::string_view path);

/// Types in file order, "ftyp free mdat moov".
std::string TypesOf(const std::vector<Mp4Box>& boxes);

}  // namespace Readers

#endif  // WRAPTON_TESTS_READERS_MP4BOXES_H
