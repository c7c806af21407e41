#include "SparseImage.h"

#include <algorithm>

#include "Require.h"

namespace Fuzz
{
namespace
{

constexpr uint64_t kPage = 64 * 1024;
constexpr std::size_t kMostPages = 2048;

}  // namespace

void SparseImage::Write(uint64_t position, std::span<const unsigned char> bytes)
{
    while (!bytes.empty())
    {
        const uint64_t inside = position % kPage;
        const auto count =
            static_cast<std::size_t>(std::min<uint64_t>(kPage - inside, bytes.size()));
        auto& page = m_pages[position / kPage];
        page.resize(kPage);
        std::copy_n(bytes.begin(), count, page.begin() + static_cast<std::ptrdiff_t>(inside));
        position += count;
        bytes = bytes.subspan(count);
        Require(m_pages.size() <= kMostPages, "the output stays small for a small input");
    }
    m_end = std::max(m_end, position);
}

std::vector<unsigned char> SparseImage::Flatten() const
{
    Require(m_end <= kPage * kMostPages, "the output has no huge gaps");
    std::vector<unsigned char> bytes(static_cast<std::size_t>(m_end));
    for (const auto& [number, page] : m_pages)
    {
        const auto at = static_cast<std::size_t>(number * kPage);
        const std::size_t count = std::min(page.size(), bytes.size() - at);
        std::copy_n(page.begin(), count, bytes.begin() + static_cast<std::ptrdiff_t>(at));
    }
    return bytes;
}

}  // namespace Fuzz
