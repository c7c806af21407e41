#include "AviChunks.h"

#include "Require.h"
#include "readers/AviReader.h"

namespace Fuzz
{

using namespace Orbel::Wrapton;

void AviChunks::Add(const SGFrameInfo& record, std::span<const unsigned char> bytes)
{
    m_stored.push_back({.code = record.frame_type == SG_FRAME_TYPE_VIDEO ? "00dc" : "01wb",
                        .bytes = {bytes.begin(), bytes.end()}});
}

void AviChunks::Compare(std::span<const unsigned char> file) const
{
    const auto read = Readers::ReadAvi(file);
    Require(read.chunks.size() == m_stored.size(), "every frame comes back");
    for (std::size_t i = 0; i < m_stored.size(); ++i)
    {
        Require(read.chunks[i].code == m_stored[i].code, "a frame is in its stream");
        Require(read.chunks[i].data == m_stored[i].bytes, "a frame comes back");
    }
}

}  // namespace Fuzz
