/**
 * @file Report.h
 * What the comparison writes, as Markdown.
 */
#ifndef WRAPTON_BENCHMARKS_REPORT_H
#define WRAPTON_BENCHMARKS_REPORT_H

#include <string>
#include <vector>

namespace Bench
{

/// Compiler, libraries, processor and its caches, kernel: what the figures depend on.
std::string MachineText();

/// A Markdown table whose columns line up in the text, too.
class Table
{
public:
    explicit Table(std::vector<std::string> head);
    void Add(std::vector<std::string> row);
    [[nodiscard]] std::string Text() const;

private:
    std::vector<std::vector<std::string>> m_rows;
};

/// @p value with @p digits behind the point.
std::string Number(double value, int digits);

}  // namespace Bench

#endif  // WRAPTON_BENCHMARKS_REPORT_H
