#include "FirstRecording.h"

#include <algorithm>
#include <array>
#include <stdexcept>

#include "AviChunks.h"
#include "Mp4Samples.h"
#include "Require.h"
#include "tool/StreamMatch.h"

namespace Fuzz
{
namespace
{

using namespace Orbel::Wrapton;

/// What other containers make of their frames is compared by the targets of these.
std::unique_ptr<StoredFrames> FramesOf(std::string_view type)
{
    constexpr std::array<std::string_view, 6> kMp4Family = {
        "mp4", "MP464", "mp4noseek", "mov", "mov64", "3gp"};
    if (type == "avi") return std::make_unique<AviChunks>();
    if (std::find(kMp4Family.begin(), kMp4Family.end(), type) == kMp4Family.end()) return nullptr;
    return std::make_unique<Mp4Samples>();
}

unsigned int Attribute(const FrameAttributes& attrs, const char* name)
{
    const auto found = attrs.find(name);
    return found != attrs.end() ? static_cast<unsigned int>(found->second) : 0;
}

}  // namespace

FirstRecording::FirstRecording(std::string_view type, bool plenty)
    : m_frames(plenty ? FramesOf(type) : nullptr), m_appendsOnly(type == "mp4noseek")
{
}

void FirstRecording::Opened(bool callable)
{
    if (m_open || !callable) m_frames = nullptr;
    m_open = true;
}

void FirstRecording::Take(const FrameAttributes& info, std::span<const unsigned char> block)
{
    ++m_blocks;
    if (m_frames == nullptr) return;

    Require(info.at("offsettype") == 0, "positions count from the start");
    const auto position = static_cast<uint64_t>(info.at("fileoffset"));
    // A sink that cannot seek leaves what comes for the front later.
    const bool late = m_appendsOnly && position == 0 && m_image.End() != 0;
    if (!late) m_image.Write(position, block);
}

void FirstRecording::Add(const FrameAttributes& attrs, std::span<const unsigned char> bytes)
{
    if (m_frames == nullptr || !m_open) return;

    SGFrameInfo record{};
    record.frame_type = ConvertFrameType(Attribute(attrs, "frametype"));
    record.frame_sub_type = ConvertFrameSubType(Attribute(attrs, "framesubtype"));
    record.frame_encode = ConvertEncodeType(Attribute(attrs, "encodetype"));
    m_frames->Add(record, bytes);
}

void FirstRecording::Closed()
{
    if (m_frames == nullptr || !m_open) return;
    try
    {
        m_frames->Compare(m_image.Flatten());
    }
    catch (const std::runtime_error& error)
    {
        Require(false, error.what());
    }
    m_frames = nullptr;
}

}  // namespace Fuzz
