/**
 * @file FailingNew.h
 * The allocation functions of this executable, which can be told to find no memory.
 */
#ifndef WRAPTON_TESTS_UNIT_FAILINGNEW_H
#define WRAPTON_TESTS_UNIT_FAILINGNEW_H

#include <cstddef>

namespace Support
{

/**
 * For its lifetime the @p number-th allocation of this thread, counted from 1, finds no memory, and
 * with @p onwards all behind it neither. 0 lets every one succeed and counts only.
 */
class FailingNew
{
public:
    explicit FailingNew(std::size_t number, bool onwards = false);
    FailingNew(const FailingNew&) = delete;
    FailingNew& operator=(const FailingNew&) = delete;
    ~FailingNew();

    /// Allocations asked for since the construction.
    [[nodiscard]] static std::size_t Asked();
};

}  // namespace Support

#endif  // WRAPTON_TESTS_UNIT_FAILINGNEW_H
