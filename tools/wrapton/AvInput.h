#pragma once

#include <optional>
#include <string>

#include "AvTypes.h"

namespace Orbel::Wrapton::Command
{

/// How raw samples, which say nothing of themselves, are to be read.
struct RawAudio
{
    int rate = 8000;
    int channels = 1;
};

/// An opened input file.
class AvInput
{
public:
    /// Opens the file and finds its streams. Throws Failure, or Interrupted.
    AvInput(const std::string& path, const RawAudio& raw);

    /// The stream of that kind that a player would take; cover pictures are none.
    [[nodiscard]] std::optional<int> BestStream(AVMediaType kind) const;

    /// The next packet of the only stream that was kept; false at the end. Throws like the
    /// constructor.
    bool Read(AVPacket& packet);

    /// All other streams are left out from now on.
    void KeepOnly(int stream);

    [[nodiscard]] AVFormatContext& Context() const { return *m_pContext; }
    [[nodiscard]] AVStream& Stream(int index) const;
    [[nodiscard]] const std::string& Path() const { return m_path; }

    /// True when times are only counted out by the reader because the file carries none.
    [[nodiscard]] bool HasNoTimes() const;

private:
    [[noreturn]] void Fail(int code) const;

    std::string m_path;
    AvPtr<AVFormatContext> m_pContext;
};

/// True when the file name says raw samples, which alone need RawAudio.
bool IsRawAudio(const std::string& path);

}  // namespace Orbel::Wrapton::Command
