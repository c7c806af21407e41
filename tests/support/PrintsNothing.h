/**
 * @file PrintsNothing.h
 * Fails the test when something is printed to standard output while it lives.
 */
#ifndef WRAPTON_TESTS_SUPPORT_PRINTSNOTHING_H
#define WRAPTON_TESTS_SUPPORT_PRINTSNOTHING_H

#include <gtest/gtest.h>

namespace Support
{

/// A writer that finds its size wrong says so on standard output and carries on.
class PrintsNothing
{
public:
    PrintsNothing() { ::testing::internal::CaptureStdout(); }
    PrintsNothing(const PrintsNothing&) = delete;
    PrintsNothing& operator=(const PrintsNothing&) = delete;
    ~PrintsNothing() { EXPECT_EQ(::testing::internal::GetCapturedStdout(), ""); }
};

}  // namespace Support

#endif  // WRAPTON_TESTS_SUPPORT_PRINTSNOTHING_H
