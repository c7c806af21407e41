#ifndef WRAPTON_FUZZ_CALLSEQUENCE_H
#define WRAPTON_FUZZ_CALLSEQUENCE_H

#include <cstdint>
#include <span>
#include <vector>

#include "BlockSink.h"
#include "ByteSource.h"
#include "FrameMaker.h"
#include "Wrapton.h"

namespace Fuzz
{

/// A frame that was handed in, and what became of it.
struct FrameCall
{
    const Orbel::Wrapton::SGFrameInfo& record;
    const Bytes& before;  ///< the frame's bytes ahead of the call
    const Bytes& after;
    int result;
    const std::vector<Block>& blocks;
    const Bytes* packet;  ///< what a caller's packet holds; null: it was handed in without one
    bool plenty;          ///< no allocation fails
};

/// Calls other than frames, all of one container on one handle.
struct Output
{
    const std::vector<Block>& blocks;  ///< of this call
    const SparseImage& file;
    bool honest;  ///< the file holds what was offered
    bool plenty;  ///< no allocation fails
};

/// What a backup's record says ahead of the call.
constexpr int32_t kNoBackup = -5;

/// One container: how its handles and frames are made, and what it promises beyond what all do.
class Container
{
public:
    virtual ~Container() = default;

    [[nodiscard]] virtual void* Create(ByteSource& source,
                                       Orbel::Wrapton::SGCreateParam& create) = 0;
    [[nodiscard]] virtual Palette Frames() const = 0;
    [[nodiscard]] virtual SinkRules Rules() const { return {}; }
    /// Whether a frame can be handed in with a packet of the caller.
    [[nodiscard]] virtual bool TakesPackets() const { return false; }
    /// Whether it is never handed in without one.
    [[nodiscard]] virtual bool TakesOnlyPackets() const { return false; }
    /// Whether a call may write to the frame's bytes.
    [[nodiscard]] virtual bool WritesToFrames() const { return false; }

    /// Attributes that only this container looks at. What they point to lives until the next call.
    virtual void Adorn(Orbel::Wrapton::SGFrameInfo& /*record*/, ByteSource& /*source*/) {}
    /// A call of parameters; by default such that there are none.
    virtual void Parameters(void* handle, ByteSource& source);
    virtual void AfterHeader(int /*result*/, const Output& /*output*/) {}
    virtual void AfterFrame(const FrameCall& /*call*/) {}
    virtual void AfterTailer(int /*result*/, const Output& /*output*/) {}
    virtual void AfterBackup(int /*size*/,
                             const Orbel::Wrapton::SGOutputData& /*backup*/,
                             const Output& /*output*/)
    {
    }
    virtual void AtEnd(const Output& /*output*/) {}
};

/**
 * Reads calls from @p source and makes them, until it is used up or the output has become large.
 * The first bytes choose the sink's answers and which allocations fail.
 */
void RunCalls(ByteSource source, Container& container);

}  // namespace Fuzz

#endif  // WRAPTON_FUZZ_CALLSEQUENCE_H
