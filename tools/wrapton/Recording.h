#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Containers.h"
#include "FrameSource.h"
#include "OutputSeries.h"
#include "Packager.h"
#include "Progress.h"
#include "Report.h"
#include "StreamHeaders.h"

namespace Orbel::Wrapton::Command
{

/// Brings the frames of up to two streams into one container, in the order of their times.
class Recording
{
public:
    /// @param sources video first; the report gets one entry for each
    Recording(const Container& container,
              std::vector<std::unique_ptr<FrameSource>> sources,
              ProgressMeter& meter,
              Report& report);

    /// True when at least one stream can go into the container.
    [[nodiscard]] bool HasSomething() const;

    /// Packages everything, and ends the file even when the input fails or the user stops it.
    /// Throws Failure; the report then has the counts so far.
    /// @param as_pcap writes packets of RTP into a capture file
    void Run(OutputSeries& series, bool as_pcap);

private:
    struct Track
    {
        std::unique_ptr<FrameSource> source;
        StreamReport* report;
        std::optional<Frame> next;
        StreamHeaders headers;
    };

    void Refuse(StreamReport& stream, const std::string& reason) const;
    void Judge(StreamReport& stream, bool has_video) const;
    [[nodiscard]] SGHeaderInfo Header() const;
    void Fetch(Track& track);
    void BeginFile();
    void EndFile();
    /// Shows the library the sound ahead of the first picture.
    void DeclareSound();
    void PackAll();
    void PackNext(Track& track);
    /// True for an ADTS header alone: the index tells of a sample of no bytes, so no block comes.
    [[nodiscard]] bool IsEmptySample(const StreamInfo& info, const Frame& frame) const;
    /// Goes on in the next file when this one is full and a decoder can begin with the frame.
    void CutAhead(Track& track);
    Track* Earliest();
    /// True when a frame came out of an input.
    [[nodiscard]] bool HasFrames() const;
    void JudgeOutcome();
    void ShowProgress();

    const Container& m_container;
    ProgressMeter& m_meter;
    Report& m_report;
    std::vector<Track> m_tracks;  ///< those that go into the container
    bool m_bOpened = false;       ///< an I picture has gone in
    OutputSeries* m_pSeries = nullptr;
    bool m_bPcap = false;
    std::unique_ptr<OutputFile> m_pOutput;
    std::unique_ptr<Packager> m_pPackager;  ///< writes to the output
    int64_t m_nFileStart = 0;               ///< time of the file's first frame
    bool m_bFileBegun = false;              ///< it has a first frame
};

}  // namespace Orbel::Wrapton::Command
