#ifndef WRAPTON_FUZZ_SPARSEIMAGE_H
#define WRAPTON_FUZZ_SPARSEIMAGE_H

#include <cstdint>
#include <map>
#include <span>
#include <vector>

namespace Fuzz
{

/// A file in memory that keeps only the pages that were written to.
class SparseImage
{
public:
    void Write(uint64_t position, std::span<const unsigned char> bytes);

    /// One behind the last byte that was written.
    [[nodiscard]] uint64_t End() const { return m_end; }

    /// Everything from the first byte on; what was never written is 0.
    [[nodiscard]] std::vector<unsigned char> Flatten() const;

private:
    std::map<uint64_t, std::vector<unsigned char>> m_pages;
    uint64_t m_end = 0;
};

}  // namespace Fuzz

#endif  // WRAPTON_FUZZ_SPARSEIMAGE_H
