// A handle costs no more physical memory than it uses.
#include <unistd.h>

#include <fstream>
#include <vector>

#include "golden/mkv/Recording.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;

/// Resident memory of the process in bytes.
std::size_t Resident()
{
    std::ifstream statm("/proc/self/statm");
    std::size_t size = 0;
    std::size_t resident = 0;
    statm >> size >> resident;
    return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kMeasurable = false;  // shadow memory counts, too
#else
constexpr bool kMeasurable = true;
#endif

TEST(MkvMemory, FreshHandleTouchesLessThan200KiBEvenWithItsHeader)
{
    if (!kMeasurable) GTEST_SKIP() << "not under sanitizers";

    constexpr std::size_t kCount = 100;
    std::vector<void*> handles;
    handles.reserve(kCount);
    const std::size_t before = Resident();
    for (std::size_t at = 0; at < kCount; ++at)
    {
        handles.push_back(SG_CreateHandle(SG_STREAM_TYPE_MKV, nullptr));
        ASSERT_EQ(SG_CreateHeader(handles.back(), nullptr), SG_ERR_NOERR);
    }
    const std::size_t after = Resident();
    for (void* handle : handles)
        SG_DestroyHandle(handle);
    EXPECT_LT((after - before) / kCount, 200u * 1024);
}

}  // namespace
}  // namespace Golden
