#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "AvInput.h"
#include "FrameSource.h"

namespace Orbel::Wrapton::Command
{

struct InputRequest
{
    std::string video;               ///< file for the video, empty: from `files`
    std::string audio;               ///< file for the audio, empty: from `files`
    std::vector<std::string> files;  ///< searched in this order
    std::optional<unsigned int> frame_rate;
    std::optional<int> raw_rate;
    std::optional<int> raw_channels;

    [[nodiscard]] std::vector<std::string> AllFiles() const;
};

/// At most one video and one audio stream, and what was found beside them.
struct Inputs
{
    std::vector<std::unique_ptr<FrameSource>> sources;  ///< video first
    std::vector<std::string> left_out;                  ///< in words
};

/// Throws Failure when raw samples are described and none of the files holds any.
void CheckRawOptions(const InputRequest& request);

/// Opens what the request names. Throws Failure when a file cannot be read or gives nothing, and
/// Interrupted.
Inputs OpenInputs(const InputRequest& request);

}  // namespace Orbel::Wrapton::Command
