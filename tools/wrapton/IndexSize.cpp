#include "IndexSize.h"

#include <algorithm>
#include <system_error>

#include <wrapton/wrapton.hpp>

#include "FrameRecord.h"

namespace Orbel::Wrapton::Command
{
namespace
{

/// A recording that goes nowhere.
class Trial
{
public:
    explicit Trial(unsigned int type)
        : m_packager(
              type, [](const Block&) {}, m_error)
    {
        if (!m_error) m_packager.Header(SGHeaderInfo{}, m_error);
    }

    /// Hands the specimen over once more, and gives the bytes by which that made the box longer.
    uint64_t Grow(const Specimen& specimen, SG_FRAME_SUB_TYPE kind)
    {
        SGFrameInfo record = RecordOf(specimen.info, specimen.frame, 0);
        record.frame_sub_type = kind;
        if (!m_error) m_packager.Input(specimen.frame.bytes, record, m_error);
        const uint64_t before = m_nBytes;
        if (m_error) return 0;
        const auto box = m_packager.Backup(m_error);
        m_nBytes = box ? box->bytes.size() : 0;
        return m_nBytes - std::min(before, m_nBytes);
    }

    [[nodiscard]] bool Good() const { return !m_error && m_nBytes > 0; }
    [[nodiscard]] uint64_t Bytes() const { return m_nBytes; }

private:
    std::error_code m_error;
    Wrapton::Packager m_packager;
    uint64_t m_nBytes = 0;
};

}  // namespace

uint64_t IndexModel::BytesFor(uint64_t key_pictures, uint64_t other_pictures, uint64_t sounds) const
{
    const auto behind_first = [](uint64_t count) { return count > 0 ? count - 1 : 0; };
    return fixed + behind_first(key_pictures) * per_key_picture +
           other_pictures * per_other_picture + behind_first(sounds) * per_sound;
}

std::optional<IndexModel> ModelIndex(const Container& container,
                                     const Specimen& video,
                                     const std::optional<Specimen>& audio)
{
    if (!container.takes_reserve) return std::nullopt;
    Trial trial(container.type);
    IndexModel model;
    trial.Grow(video, SG_FRAME_SUB_TYPE_I);
    if (audio) trial.Grow(*audio, SG_FRAME_SUB_TYPE_I);
    model.fixed = trial.Bytes();
    model.per_key_picture = trial.Grow(video, SG_FRAME_SUB_TYPE_I);
    model.per_other_picture = trial.Grow(video, SG_FRAME_SUB_TYPE_P);
    if (audio) model.per_sound = trial.Grow(*audio, SG_FRAME_SUB_TYPE_I);
    if (!trial.Good()) return std::nullopt;
    return model;
}

}  // namespace Orbel::Wrapton::Command
