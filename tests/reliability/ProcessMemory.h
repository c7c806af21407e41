/**
 * @file ProcessMemory.h
 * What this process has in memory, and what its allocator has given out.
 */
#ifndef WRAPTON_TESTS_RELIABILITY_PROCESSMEMORY_H
#define WRAPTON_TESTS_RELIABILITY_PROCESSMEMORY_H

#include <malloc.h>
#include <unistd.h>

#include <cstdint>
#include <fstream>

namespace Reliability
{

/// The sanitizers' own memory would be counted, too.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kMemoryCounts = false;
#else
constexpr bool kMemoryCounts = true;
#endif

/// Bytes of this process in physical memory.
inline uint64_t ResidentBytes()
{
    std::ifstream file("/proc/self/statm");
    uint64_t total = 0;
    uint64_t resident = 0;
    file >> total >> resident;
    return resident * static_cast<uint64_t>(sysconf(_SC_PAGESIZE));
}

/// Bytes that are allocated and not given back.
inline uint64_t AllocatedBytes()
{
    const auto info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

}  // namespace Reliability

#endif  // WRAPTON_TESTS_RELIABILITY_PROCESSMEMORY_H
