/**
 * @file TemporaryDirectory.h
 * A place for a test's files.
 */
#ifndef WRAPTON_TESTS_SUPPORT_TEMPORARYDIRECTORY_H
#define WRAPTON_TESTS_SUPPORT_TEMPORARYDIRECTORY_H

#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <string>

namespace Support
{

/// A directory that is removed, with everything in it, when the object ends.
class TemporaryDirectory
{
public:
    TemporaryDirectory()
    {
        std::string name = (std::filesystem::temp_directory_path() / "wrapton-XXXXXX").string();
        m_path = mkdtemp(name.data());
    }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
    ~TemporaryDirectory() { std::filesystem::remove_all(m_path); }

    [[nodiscard]] std::string Path(const std::string& name) const
    {
        return (m_path / name).string();
    }

private:
    std::filesystem::path m_path;
};

/// The file descriptors that the process has open.
inline std::ptrdiff_t OpenDescriptors()
{
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

}  // namespace Support

#endif  // WRAPTON_TESTS_SUPPORT_TEMPORARYDIRECTORY_H
