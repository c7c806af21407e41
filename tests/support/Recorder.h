/**
 * @file Recorder.h
 * A recording through the eight functions.
 */
#ifndef WRAPTON_TESTS_SUPPORT_RECORDER_H
#define WRAPTON_TESTS_SUPPORT_RECORDER_H

#include <cstdint>

#include <wrapton/Wrapton.h>

#include "support/Frames.h"
#include "support/Sinks.h"

namespace Support
{

/// Owns one handle. Every call gives the function's own result.
class Recorder
{
public:
    Recorder(uint32_t type, Orbel::Wrapton::SGCreateParam create);
    /// Output goes to @p sink, which must live longer; memory comes from the default allocator.
    Recorder(uint32_t type, Sink& sink);
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;
    ~Recorder();

    [[nodiscard]] void* Handle() const { return m_handle; }

    /// SG_CreateHeader() with a record of zeros but for the reserve.
    int Header(uint32_t reserve = 0);
    int HeaderWith(Orbel::Wrapton::SGHeaderInfo* header);

    /**
     * SG_InputFrame() with the bytes in an allocation of exactly their size, so that a read beyond
     * them is seen. Fails the test when the call wrote to the bytes or to the record.
     */
    int Input(const Frame& frame);
    /// The same for a record with fields that Frame does not have; its pointer and size are set.
    int Input(Orbel::Wrapton::SGFrameInfo record, const Bytes& bytes);

    int Tailer();
    int Backup(Orbel::Wrapton::SGOutputData& backup);
    /// SG_DestroyHandle() ahead of the destructor.
    int Destroy();

private:
    void* m_handle;
};

/// A create record for @p sink with the default allocator.
Orbel::Wrapton::SGCreateParam CreateFor(Sink& sink);

}  // namespace Support

#endif  // WRAPTON_TESTS_SUPPORT_RECORDER_H
