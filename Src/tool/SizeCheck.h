#ifndef WRAPTON_TOOL_SIZECHECK_H
#define WRAPTON_TOOL_SIZECHECK_H

#include <cstddef>
#include <cstdint>

#include "tool/ByteCursor.h"

namespace Orbel::Wrapton
{

/// Compares what a writer produced with what its record declared, at the end of its scope, and
/// prints the writer's line when they differ.
class CSizeCheck
{
public:
    /// Which of the two sizes a line names first.
    enum class Order
    {
        kDeclaredFirst,
        kProducedFirst
    };

    /// @param line a printf format; may take the two sizes as %d
    CSizeCheck(const CByteCursor& w, uint32_t declared, const char* line, Order order) noexcept;
    ~CSizeCheck();
    CSizeCheck(const CSizeCheck&) = delete;
    CSizeCheck& operator=(const CSizeCheck&) = delete;

private:
    const CByteCursor& m_cursor;
    const size_t m_begin;
    const uint32_t m_declared;
    const char* const m_line;
    const Order m_order;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_TOOL_SIZECHECK_H
