/**
 * @file SmallDisks.h
 * Places in which a file cannot grow.
 */
#ifndef WRAPTON_TESTS_SUPPORT_SMALLDISKS_H
#define WRAPTON_TESTS_SUPPORT_SMALLDISKS_H

#include <csignal>
#include <cstdint>
#include <string>

#include <sys/resource.h>

#include <gtest/gtest.h>

#include "support/TemporaryDirectory.h"

namespace Support
{

/// For its lifetime no file of this process grows past @p bytes: writes beyond fail with EFBIG.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(uint64_t bytes) : m_handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        EXPECT_EQ(getrlimit(RLIMIT_FSIZE, &m_former), 0);
        const rlimit tight = {bytes, m_former.rlim_max};
        EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &tight), 0);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;
    ~FileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &m_former);
        static_cast<void>(std::signal(SIGXFSZ, m_handler));
    }

private:
    void (*m_handler)(int);
    rlimit m_former{};
};

/**
 * A file system in memory of its own size, in a namespace of this process. Not everybody may mount:
 * Mounted() says whether it is there.
 */
class SmallDisk
{
public:
    explicit SmallDisk(uint64_t bytes);
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;
    ~SmallDisk();

    [[nodiscard]] bool Mounted() const { return m_bMounted; }
    [[nodiscard]] std::string Path(const std::string& name) const { return m_place.Path(name); }

    /// From now on nothing can be written to it.
    void MakeReadOnly();

private:
    TemporaryDirectory m_place;
    bool m_bMounted = false;
};

}  // namespace Support

#endif  // WRAPTON_TESTS_SUPPORT_SMALLDISKS_H
