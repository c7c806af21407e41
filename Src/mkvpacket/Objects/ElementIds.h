#ifndef WRAPTON_MKVPACKET_OBJECTS_ELEMENTIDS_H
#define WRAPTON_MKVPACKET_OBJECTS_ELEMENTIDS_H

#include "mkvpacket/Ebml.h"

namespace Orbel::Wrapton
{

// RFC 8794 11.2
inline constexpr EbmlId kEbml(0x1A45DFA3);
inline constexpr EbmlId kEbmlVersion(0x4286);
inline constexpr EbmlId kEbmlReadVersion(0x42F7);
inline constexpr EbmlId kEbmlMaxIdLength(0x42F2);
inline constexpr EbmlId kEbmlMaxSizeLength(0x42F3);
inline constexpr EbmlId kDocType(0x4282);
inline constexpr EbmlId kDocTypeVersion(0x4287);
inline constexpr EbmlId kDocTypeReadVersion(0x4285);
inline constexpr EbmlId kVoid(0xEC);

// RFC 9559 5.1
inline constexpr EbmlId kSegment(0x18538067);
inline constexpr EbmlId kSeekHead(0x114D9B74);
inline constexpr EbmlId kSeek(0x4DBB);
inline constexpr EbmlId kSeekId(0x53AB);
inline constexpr EbmlId kSeekPosition(0x53AC);
inline constexpr EbmlId kInfo(0x1549A966);
inline constexpr EbmlId kTimecodeScale(0x2AD7B1);
inline constexpr EbmlId kDateUtc(0x4461);
inline constexpr EbmlId kMuxingApp(0x4D80);
inline constexpr EbmlId kWritingApp(0x5741);
inline constexpr EbmlId kCluster(0x1F43B675);
inline constexpr EbmlId kTimecode(0xE7);
inline constexpr EbmlId kSimpleBlock(0xA3);
inline constexpr EbmlId kTracks(0x1654AE6B);
inline constexpr EbmlId kTrackEntry(0xAE);
inline constexpr EbmlId kTrackNumber(0xD7);
inline constexpr EbmlId kTrackUid(0x73C5);
inline constexpr EbmlId kTrackType(0x83);
inline constexpr EbmlId kFlagLacing(0x9C);
inline constexpr EbmlId kDefaultDuration(0x23E383);
inline constexpr EbmlId kLanguage(0x22B59C);
inline constexpr EbmlId kCodecId(0x86);
inline constexpr EbmlId kCodecPrivate(0x63A2);
inline constexpr EbmlId kVideo(0xE0);
inline constexpr EbmlId kPixelWidth(0xB0);
inline constexpr EbmlId kPixelHeight(0xBA);
inline constexpr EbmlId kAudio(0xE1);
inline constexpr EbmlId kSamplingFrequency(0xB5);
inline constexpr EbmlId kChannels(0x9F);
inline constexpr EbmlId kBitDepth(0x6264);
inline constexpr EbmlId kCues(0x1C53BB6B);
inline constexpr EbmlId kCuePoint(0xBB);
inline constexpr EbmlId kCueTime(0xB3);
inline constexpr EbmlId kCueTrackPositions(0xB7);
inline constexpr EbmlId kCueTrack(0xF7);
inline constexpr EbmlId kCueClusterPosition(0xF1);
inline constexpr EbmlId kCueRelativePosition(0xF0);

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MKVPACKET_OBJECTS_ELEMENTIDS_H
