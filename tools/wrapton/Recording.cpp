#include "Recording.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "Adts.h"
#include "Failure.h"
#include "FrameRecord.h"
#include "Interrupt.h"
#include "StartCodes.h"
#include "UnitGroup.h"

namespace Orbel::Wrapton::Command
{
namespace
{

/// Audio encoders begin a frame or two ahead of the pictures. A container that drops audio ahead of
/// the first I picture keeps those if the picture goes first.
constexpr int64_t kOpeningLead = 100'000;

/// An input that broke off: what was read before it is kept.
class InputFailure : public Failure
{
public:
    using Failure::Failure;
};

std::string WithKind(const StreamInfo& info)
{
    return info.codec_name + (info.is_video ? " video" : " audio");
}

}  // namespace

Recording::Recording(const Container& container,
                     std::vector<std::unique_ptr<FrameSource>> sources,
                     ProgressMeter& meter,
                     Report& report)
    : m_container(container), m_meter(meter), m_report(report)
{
    m_report.streams.resize(sources.size());
    bool has_video = false;
    for (std::size_t i = 0; i < sources.size(); ++i)
    {
        StreamReport& stream = m_report.streams[i];
        stream.info = sources[i]->Info();
        Judge(stream, has_video);
        if (!stream.refusal.empty()) continue;
        has_video = has_video || stream.info.is_video;
        m_tracks.push_back(
            {std::move(sources[i]), &stream, std::nullopt, StreamHeaders(stream.info.codec)});
    }
}

bool Recording::HasSomething() const
{
    return !m_tracks.empty();
}

void Recording::Refuse(StreamReport& stream, const std::string& reason) const
{
    stream.refusal =
        WithKind(stream.info) + " cannot be stored in " + std::string(m_container.name) + reason;
}

void Recording::Judge(StreamReport& stream, bool has_video) const
{
    const StreamInfo& info = stream.info;
    const auto accepted = info.is_video ? m_container.video : m_container.audio;
    if (!info.codec || !Accepts(accepted, *info.codec))
        Refuse(stream, "");
    else if (!info.unusable.empty())
        Refuse(stream, ": " + info.unusable);
    else if (!info.is_video && m_container.audio_needs_video && !has_video)
        Refuse(stream, " without video");
    else if (m_container.is_rtp && !m_tracks.empty())
        Refuse(stream, " beside another stream: one session carries one");
}

SGHeaderInfo Recording::Header() const
{
    SGHeaderInfo header = {};
    header.pre_header_len = m_report.reserve;
    header.struct_size = sizeof header;
    for (const Track& track : m_tracks)
    {
        const StreamInfo& info = track.report->info;
        const auto encode = static_cast<int32_t>(EntryOf(*info.codec).encode);
        if (info.is_video)
            header.video = {1,
                            encode,
                            info.width,
                            info.height,
                            static_cast<int32_t>(WholeRate(info.frame_rate))};
        else
            header.audio = {1,
                            encode,
                            static_cast<int32_t>(info.channels),
                            static_cast<int32_t>(info.bits_per_sample),
                            static_cast<int32_t>(info.sample_rate)};
    }
    return header;
}

void Recording::Fetch(Track& track)
{
    try
    {
        track.next = track.source->Next();
    }
    catch (const Failure& failure)
    {
        throw InputFailure(failure.what());
    }
    track.report->info = track.source->Info();
}

Recording::Track* Recording::Earliest()
{
    Track* earliest = nullptr;
    int64_t earliest_time = 0;
    for (Track& track : m_tracks)  // video stands first and wins a tie
    {
        if (!track.next) continue;
        const bool opens = track.report->info.is_video && !m_bOpened;
        const int64_t time = track.next->time_us - (opens ? kOpeningLead : 0);
        if (earliest != nullptr && time >= earliest_time) continue;
        earliest = &track;
        earliest_time = time;
    }
    return earliest;
}

void Recording::CutAhead(Track& track)
{
    const Frame& frame = *track.next;
    const bool is_video = track.report->info.is_video;
    const bool has_video = m_tracks.front().report->info.is_video;
    const bool can_begin = is_video ? frame.sub_type == SG_FRAME_SUB_TYPE_I : !has_video;
    if (is_video) track.headers.Note(frame.bytes);
    if (!m_bFileBegun || !can_begin ||
        !m_pSeries->IsFull(frame.time_us - m_nFileStart, m_pOutput->Size()))
        return;
    EndFile();
    BeginFile();
    if (is_video) track.headers.Complete(track.next->bytes);
}

void Recording::PackNext(Track& track)
{
    CutAhead(track);
    Frame& frame = *track.next;
    StreamReport& report = *track.report;
    if (!m_bFileBegun) m_nFileStart = m_pSeries->IsSplit() ? frame.time_us : 0;
    report.bytes_in += frame.bytes.size();
    if (m_container.splits_units && report.info.codec == Codec::kH264) GroupUnits(frame.bytes);
    if (m_container.needs_long_start_codes && report.info.codec == Codec::kH264)
        frame.bytes = WithLongStartCodes(frame.bytes);
    SGFrameInfo record = RecordOf(report.info, frame, m_nFileStart);
    // The sub-type says nothing else here, and receivers need the B pictures as well.
    if (m_container.takes_b_as_p && record.frame_sub_type == SG_FRAME_SUB_TYPE_B)
        record.frame_sub_type = SG_FRAME_SUB_TYPE_P;
    if (m_container.declares_sound && !m_bFileBegun) DeclareSound();
    // The container's header takes the place of a file's first frame: it goes in once more.
    if (m_container.loses_first_frame && !m_bFileBegun)
        m_pPackager->InputFrame(frame.bytes, record);
    m_bFileBegun = true;
    const int code = m_pPackager->InputFrame(frame.bytes, record);

    ++report.frames_in;
    report.frames_damaged += frame.damaged ? 1 : 0;
    report.end_us = frame.time_us;
    const bool stored = code == SG_ERR_NOERR &&
                        (m_pPackager->LastCallStored() || IsEmptySample(report.info, frame));
    if (stored)
        ++report.frames_stored;
    else if (code == SG_ERR_NOERR)
        ++report.frames_dropped;
    else
        ++report.refused[code];
    if (stored && frame.sub_type == SG_FRAME_SUB_TYPE_B) ++report.frames_b;
    m_bOpened = m_bOpened || (report.info.is_video && frame.sub_type == SG_FRAME_SUB_TYPE_I);
}

bool Recording::IsEmptySample(const StreamInfo& info, const Frame& frame) const
{
    return m_container.indexes_empty_sound && m_bOpened && info.codec == Codec::kAac &&
           IsEmptyAdts(frame.bytes);
}

void Recording::DeclareSound()
{
    // Readers take no sound of 0 Hz, so there is always one to tell of.
    StreamInfo info;
    info.codec = Codec::kS16le;
    info.sample_rate = 8000;
    info.channels = 1;
    info.bits_per_sample = 16;
    for (const Track& track : m_tracks)
    {
        if (!track.report->info.is_video) info = track.report->info;
    }
    // Too short to last, and not stored: there was no picture yet.
    Frame opening;
    opening.bytes.resize(1);
    m_pPackager->InputFrame(opening.bytes, RecordOf(info, opening, 0));
}

void Recording::PackAll()
{
    for (Track& track : m_tracks)
        Fetch(track);
    // Behind the first frame, which may know the sample rate better than the file does.
    if (m_container.is_rtp &&
        m_pPackager->DescribeRtp(RtpStreamOf(m_tracks.front().report->info)) != SG_ERR_NOERR)
        throw Failure(m_pOutput->Path() + ": the library refused the parameters of the stream");
    while (Track* track = Earliest())
    {
        PackNext(*track);
        if (!m_pOutput->Good()) return;
        Fetch(*track);
        if (m_meter.IsDue()) ShowProgress();
    }
}

void Recording::BeginFile()
{
    m_pOutput = m_pSeries->Next();
    m_pPackager = std::make_unique<Packager>(m_container, *m_pOutput, m_bPcap);
    m_bFileBegun = false;
    const int begun = m_pPackager->CreateHeader(Header());
    if (!m_pOutput->Good()) m_pOutput->Finish();
    if (begun != SG_ERR_NOERR)
        throw Failure(m_pOutput->Path() + ": the library refused to begin (code " +
                      std::to_string(begun) + "); what is left on disk does not play");
}

void Recording::EndFile()
{
    const uint64_t before_tailer = m_pOutput->Size();
    const int ended = m_pOutput->Good() ? m_pPackager->CreateTailer() : SG_ERR_NOERR;
    m_report.index_at_end = m_report.index_at_end || m_pOutput->Size() > before_tailer;
    m_report.bytes += m_pOutput->Size();
    if (m_pSeries->IsSplit()) m_report.segments.push_back({m_pOutput->Path(), m_pOutput->Size()});
    if (m_pOutput->Good() && ended != SG_ERR_NOERR)
        throw Failure(m_pOutput->Path() + ": the library refused to end (code " +
                      std::to_string(ended) + "); what is left on disk does not play");
    m_pOutput->Finish();
}

void Recording::Run(OutputSeries& series, bool as_pcap)
{
    m_pSeries = &series;
    m_bPcap = as_pcap;
    BeginFile();

    std::string input_error;
    try
    {
        PackAll();
    }
    catch (const Interrupted&)
    {
        m_report.signal = CaughtSignal();
    }
    catch (const InputFailure& failure)
    {
        input_error = failure.what();
    }

    ShowProgress();
    EndFile();
    m_report.output_complete = true;
    JudgeOutcome();
    if (m_report.signal == 0 && !HasFrames())
        throw Failure(m_pOutput->Path() + ": no frame was there to be stored, it does not play");
    if (!input_error.empty())
        throw Failure(input_error + "; " + m_pOutput->Path() +
                      " holds the frames read before that");
}

bool Recording::HasFrames() const
{
    return std::any_of(m_tracks.begin(),
                       m_tracks.end(),
                       [](const Track& track) { return track.report->frames_in > 0; });
}

void Recording::JudgeOutcome()
{
    for (Track& track : m_tracks)
    {
        StreamReport& report = *track.report;
        if (report.frames_in == 0 || report.frames_stored > 0) continue;
        if (report.frames_dropped == 0)
            Refuse(report,
                   ": all frames were refused with code " +
                       std::to_string(report.refused.begin()->first));
        else
            Refuse(report, ": it dropped all " + std::to_string(report.frames_dropped) + " frames");
    }
}

void Recording::ShowProgress()
{
    Progress progress;
    for (const Track& track : m_tracks)
    {
        progress.frames_in += track.report->frames_in;
        progress.time_ms = std::max(progress.time_ms, track.report->end_us / 1000);
        progress.input_read += track.source->BytesRead();
        progress.input_total += track.source->BytesTotal();
    }
    progress.bytes_written = m_report.bytes + m_pOutput->Size();
    m_meter.Show(progress);
}

}  // namespace Orbel::Wrapton::Command
