#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Codecs.h"

namespace Orbel::Wrapton::Command
{

/// By what the library packages for a container.
enum class FaceKind
{
    kFlat,    ///< the eight functions
    kStream,  ///< the stream component, block by block
    kPacket,  ///< the stream component, into a packet
    kFile,    ///< the file component
};

/// What the command has to know of a container beyond its number.
struct Container
{
    std::string_view name;  ///< for --to
    unsigned int type;      ///< SG_STREAM_TYPE
    std::span<const std::string_view> extensions;
    std::span<const Codec> video;
    std::span<const Codec> audio;
    /// Audio is dropped until the first I picture, so audio alone is stored nowhere.
    bool audio_needs_video;
    /// Pictures get one duration for all and no composition times.
    bool constant_rate;
    /// The streams come from the frames alone: a header record would declare absent ones, too.
    bool streams_from_frames = false;
    /// H.264 units are found by start codes of 4 bytes only, or there is room for so many codes of
    /// 3 bytes to grow only.
    bool needs_long_start_codes = false;
    /// SGHeaderInfo::pre_header_len has a meaning.
    bool takes_reserve;
    /// The header says 8000 Hz, mono, 16-bit PCM whatever is in the file.
    bool labels_8000_mono_pcm;
    /// The header takes the place of a file's first frame.
    bool loses_first_frame = false;
    /// Sound without data has a place in the index and no block.
    bool indexes_empty_sound = false;
    /// Packets of RTP: one stream with one clock, and no file around it.
    bool is_rtp = false;
    /// H.264 pictures are split at start codes of four bytes, and what stands ahead of the first
    /// one is left out.
    bool splits_units = false;
    /// An MPEG-4 I picture that carries its headers is cut by their length.
    bool cuts_mpeg4_pictures = false;
    /// Each picture lasts a whole number of milliseconds.
    bool whole_milliseconds = false;
    /// A-law and mu-law sound takes twice its time.
    bool doubles_g711_times = false;
    /// Sound is labelled as 5500 Hz, but for 11000, 22000 and 44000 Hz.
    bool labels_round_rates = false;
    /// B pictures have to be announced as P: others are not packaged, or not fragmented.
    bool takes_b_as_p = false;
    /// The header declares sound whether there is any or not, and knows of it only what came ahead
    /// of the first picture.
    bool declares_sound = false;
    FaceKind face = FaceKind::kFlat;
    std::string_view component = {};  ///< name of its type, where the face is a component
};

/// Every container the command knows, whether or not the library at hand builds it.
std::span<const Container> AllContainers();

/// True when the library packages for the container.
bool IsOffered(const Container& container);

/// The offered containers.
std::vector<Container> OfferedContainers();

/// Finds the container for a recording: by its name when that is given, otherwise by the extension
/// of the output. Throws Failure when there is none, or the library does not build it.
const Container& ChooseContainer(const std::string& name, const std::string& output);

/// What the name of a file ends with that the command names: a variant has the extension of what it
/// is a variant of.
std::string_view FileExtension(const Container& container);

bool Accepts(std::span<const Codec> accepted, Codec codec);

}  // namespace Orbel::Wrapton::Command
