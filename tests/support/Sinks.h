/**
 * @file Sinks.h
 * Receivers of the output blocks: one that seeks, one that only appends, one that takes less than
 * it is offered, and one that keeps positions only.
 */
#ifndef WRAPTON_TESTS_SUPPORT_SINKS_H
#define WRAPTON_TESTS_SUPPORT_SINKS_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include <wrapton/Wrapton.h>

#include "support/Bytes.h"

namespace Support
{

/// One output block as it came.
struct Block
{
    uint32_t structSize = 0;
    int32_t size = 0;      ///< as offered, before the sink changed it
    int32_t origin = 0;    ///< 0 start, 1 current, 2 end
    uint32_t narrow = 0;   ///< offset_pos
    int64_t position = 0;  ///< offset_pos64
    Bytes data;
};

/// A block as a packager must give it: origin 0 and both positions.
::testing::AssertionResult IsBlockAt(const Block& block, uint64_t position, const Bytes& bytes);

/// Base of the sinks: keeps the list of blocks. Give Callback and the sink's address to a packager.
class Sink
{
public:
    Sink() = default;
    Sink(const Sink&) = delete;
    Sink& operator=(const Sink&) = delete;
    virtual ~Sink() = default;

    static void Callback(Orbel::Wrapton::SGOutputData* block, void* user);

    [[nodiscard]] const std::vector<Block>& Blocks() const { return m_blocks; }

    /// Forgets the blocks seen so far, so that a test can look at one call's output.
    void ForgetBlocks() { m_blocks.clear(); }

protected:
    /// How many bytes of a block the log keeps.
    [[nodiscard]] virtual std::size_t Kept(std::size_t size) const { return size; }
    virtual void Place(Orbel::Wrapton::SGOutputData& block) = 0;

private:
    std::vector<Block> m_blocks;
};

/// Places every block where its origin and position say, like a file.
class SeekingSink : public Sink
{
public:
    [[nodiscard]] const Bytes& Image() const { return m_image; }

protected:
    void Place(Orbel::Wrapton::SGOutputData& block) override;

private:
    Bytes m_image;
    int64_t m_current = 0;
};

/// Appends every block, whatever position it has.
class AppendingSink : public Sink
{
public:
    [[nodiscard]] const Bytes& Image() const { return m_image; }

protected:
    void Place(Orbel::Wrapton::SGOutputData& block) override;

private:
    Bytes m_image;
};

/// A seeking sink that answers with another data_size and stores no more than that.
class ResizingSink : public SeekingSink
{
public:
    /// Gets the number of the block, from 0, and its size; gives the size to answer with.
    using Policy = std::function<int32_t(std::size_t, int32_t)>;

    explicit ResizingSink(Policy policy) : m_policy(std::move(policy)) {}

protected:
    void Place(Orbel::Wrapton::SGOutputData& block) override;

private:
    Policy m_policy;
};

/// Stores nothing; the log keeps the bytes of blocks up to 64 KiB only.
class DiscardingSink : public Sink
{
protected:
    [[nodiscard]] std::size_t Kept(std::size_t size) const override;
    void Place(Orbel::Wrapton::SGOutputData& block) override;
};

}  // namespace Support

#endif  // WRAPTON_TESTS_SUPPORT_SINKS_H
