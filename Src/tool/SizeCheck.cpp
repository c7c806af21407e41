#include "tool/SizeCheck.h"

#include <cstdio>
#include <utility>

namespace Orbel::Wrapton
{

CSizeCheck::CSizeCheck(const CByteCursor& w,
                       uint32_t declared,
                       const char* line,
                       Order order) noexcept
    : m_cursor(w), m_begin(w.Produced()), m_declared(declared), m_line(line), m_order(order)
{
}

CSizeCheck::~CSizeCheck()
{
    const size_t produced = m_cursor.Produced() - m_begin;
    if (produced == m_declared) return;

    int first = static_cast<int>(m_declared);
    int second = static_cast<int>(produced);
    if (m_order == Order::kProducedFirst) std::swap(first, second);
    std::printf(m_line, first, second);
}

}  // namespace Orbel::Wrapton
