#include "FlvHeader.h"

namespace Orbel::Wrapton::Command
{

std::size_t FlvHeaderLength(std::span<const unsigned char> bytes)
{
    constexpr std::size_t kFileHeader = 9 + 4;  // and the size of no tag ahead of the first
    constexpr std::size_t kTagHeader = 11;
    constexpr std::size_t kTagTrail = 4;
    constexpr unsigned char kScript = 18;

    if (bytes.size() < kFileHeader + kTagHeader) return 0;
    if (bytes[0] != 'F' || bytes[1] != 'L' || bytes[2] != 'V') return 0;
    const auto tag = bytes.subspan(kFileHeader);
    if (tag[0] != kScript) return 0;
    const std::size_t data_size =
        std::size_t{tag[1]} << 16 | std::size_t{tag[2]} << 8 | std::size_t{tag[3]};
    const std::size_t length = kFileHeader + kTagHeader + data_size + kTagTrail;
    return length <= bytes.size() ? length : 0;
}

}  // namespace Orbel::Wrapton::Command
