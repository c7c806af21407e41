/**
 * @file Shortages.h
 * One allocation out of many that finds no memory.
 */
#ifndef WRAPTON_TESTS_RELIABILITY_SHORTAGES_H
#define WRAPTON_TESTS_RELIABILITY_SHORTAGES_H

#include <cstddef>
#include <optional>

#include "reliability/Subject.h"
#include "support/FailingNew.h"

namespace Reliability
{

/// The number of an allocation that does not come.
constexpr std::size_t kNever = 1u << 30;

/// An allocation that finds no memory, and whether it has come.
class Failure : public CallGuard
{
public:
    [[nodiscard]] virtual bool HasCome() const = 0;
};

/// The n-th allocation of the library itself.
class LibrarysFailure final : public Failure
{
public:
    explicit LibrarysFailure(std::size_t number) : m_left(static_cast<long>(number) - 1) {}

    void Begin() override { m_shortage.emplace(m_left); }
    void End() override { m_shortage.reset(); }
    [[nodiscard]] bool HasCome() const override { return m_left < 0; }

private:
    long m_left;
    std::optional<Support::Shortage> m_shortage;
};

}  // namespace Reliability

#endif  // WRAPTON_TESTS_RELIABILITY_SHORTAGES_H
