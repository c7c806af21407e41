/**
 * @file wrapton.hpp
 * Wrapton for C++20: the eight functions of Wrapton.h with an owner for the handle, std::span for
 * frames, any callable for the output and std::error_code for what went wrong.
 *
 *     using namespace Orbel::Wrapton;
 *     FileSink file("camera.mp4", SG_STREAM_TYPE_MP4);
 *     Packager packager(SG_STREAM_TYPE_MP4, std::ref(file));
 *     SGFrameInfo key = VideoFrame(SG_ENCODE_VIDEO_HI_H264, SG_FRAME_SUB_TYPE_I, 640, 360, 25);
 *     packager.Header();
 *     packager.Input(bytes, key);    // for every coded frame
 *     packager.Tailer();
 *     file.Finish();
 *
 * Every operation that can fail has two forms, as in std::filesystem: one throws std::system_error,
 * the other is noexcept and takes a std::error_code, which it clears when all went well.
 *
 * The header adds nothing to the library and needs nothing beside it. The calls mean what Wrapton.h
 * says of them; threads too are as there.
 */
#ifndef WRAPTON_WRAPTON_HPP
#define WRAPTON_WRAPTON_HPP

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <new>
#include <optional>
#include <span>
#include <string>
#include <system_error>
#include <type_traits>
#include <utility>
#include <vector>

#include "Wrapton.h"
#include "wrapton_file.hpp"

/// @cond
template <>
struct std::is_error_code_enum<Orbel::Wrapton::SG_ERR_TYPE> : std::true_type
{
};
/// @endcond

namespace Orbel::Wrapton
{

/// The category of SG_ERR_TYPE. A packager's own code outside that enumeration stays as it is.
inline const std::error_category& PackagingCategory() noexcept
{
    class Category final : public std::error_category
    {
    public:
        [[nodiscard]] const char* name() const noexcept override { return "wrapton"; }
        [[nodiscard]] std::string message(int code) const override
        {
            switch (code)
            {
                case SG_ERR_NOERR:
                    return "done";
                case SG_ERR_HANDLE_EMPTY:
                    return "no packager";
                case SG_ERR_INIT_FAIL:
                    return "the packager could not be prepared";
                case SG_ERR_PARAM_ERR:
                    return "a bad argument, or a step that failed";
                case SG_ERR_MEMORY_OUT:
                    return "out of memory";
                case SG_ERR_ENCODE_UNSUPPORT:
                    return "the container cannot hold this encoding";
                case SG_ERR_EMPTY_POINTER:
                    return "a pointer was null";
                case -1:
                    return "the frame's encoding is not that of its track";
                default:
                    return "code " + std::to_string(code) + " of the packager";
            }
        }
        /// So that `error == std::errc::not_enough_memory` can be asked as of any other error.
        [[nodiscard]] std::error_condition default_error_condition(int code) const noexcept override
        {
            switch (code)
            {
                case SG_ERR_HANDLE_EMPTY:
                    return std::errc::bad_file_descriptor;
                case SG_ERR_PARAM_ERR:
                case SG_ERR_EMPTY_POINTER:
                    return std::errc::invalid_argument;
                case SG_ERR_MEMORY_OUT:
                    return std::errc::not_enough_memory;
                case SG_ERR_ENCODE_UNSUPPORT:
                    return std::errc::not_supported;
                default:
                    return {code, *this};
            }
        }
    };
    static const Category s_category;
    return s_category;
}

/// Found by std::error_code, so that `error == SG_ERR_PARAM_ERR` can be written. SG_ERR_NOERR is no
/// error, as clear() leaves it.
inline std::error_code make_error_code(SG_ERR_TYPE code) noexcept
{
    if (code == SG_ERR_NOERR) return {};
    return {static_cast<int>(code), PackagingCategory()};
}

/// The attributes of a picture; fields that are not asked for here are 0.
inline SGFrameInfo VideoFrame(SG_ENCODE_VIDEO_TYPE encode,
                              SG_FRAME_SUB_TYPE kind,
                              uint32_t width,
                              uint32_t height,
                              uint32_t rate,
                              std::chrono::milliseconds time = {}) noexcept
{
    SGFrameInfo frame = {};
    frame.frame_type = SG_FRAME_TYPE_VIDEO;
    frame.frame_sub_type = kind;
    frame.frame_encode = encode;
    frame.width = width;
    frame.heigth = height;
    frame.frame_rate = rate;
    frame.frame_time = static_cast<uint32_t>(time.count());  // wraps after 49 days, as the field
    return frame;
}

/// The attributes of a piece of sound.
inline SGFrameInfo AudioFrame(SG_ENCODE_AUDIO_TYPE encode,
                              uint32_t sample_rate,
                              uint32_t channels,
                              uint32_t bits_per_sample,
                              std::chrono::milliseconds time = {}) noexcept
{
    SGFrameInfo frame = {};
    frame.frame_type = SG_FRAME_TYPE_AUDIO;
    frame.frame_encode = encode;
    frame.sample_rate = sample_rate;
    frame.channels = channels;
    frame.bit_per_sample = bits_per_sample;
    frame.frame_time = static_cast<uint32_t>(time.count());
    return frame;
}

/// Owns one packager of the library.
class Packager
{
public:
    /// @param output called with every Block that has bytes, inside the call that made it. It gives
    ///        nothing, or the number of bytes that it stored, none when that is negative; one that
    ///        throws has stored none, and is not called again during the same call. It is copied,
    ///        so give std::ref of an object that is to be kept.
    template <typename Output>
    Packager(unsigned int type, Output output)
    {
        std::error_code error;
        Create(type, output, error);
        ThrowIf(error, "SG_CreateHandle");
    }

    /// An empty packager when there is no handle: every call then gives SG_ERR_HANDLE_EMPTY.
    template <typename Output>
    Packager(unsigned int type, Output output, std::error_code& error) noexcept
    {
        Create(type, output, error);
    }

    /// Discards the output.
    explicit Packager(unsigned int type) : Packager(type, [](const Block&) {}) {}

    [[nodiscard]] explicit operator bool() const noexcept { return Handle() != nullptr; }

    /// For calls to the eight functions; stays this object's. Null: empty.
    [[nodiscard]] void* Handle() const noexcept { return m_pState ? m_pState->handle : nullptr; }

    /// SG_CreateHeader().
    void Header(const SGHeaderInfo& header)
    {
        Throwing("SG_CreateHeader", [&](std::error_code& error) { Header(header, error); });
    }
    void Header(const SGHeaderInfo& header, std::error_code& error) noexcept
    {
        SGHeaderInfo record = header;
        record.struct_size = sizeof record;
        Judge(SG_CreateHeader(Begin(false), &record), error);
    }

    /// SG_CreateHeader() without a record: the streams are those of the frames.
    void Header()
    {
        Throwing("SG_CreateHeader", [&](std::error_code& error) { Header(error); });
    }
    void Header(std::error_code& error) noexcept
    {
        Judge(SG_CreateHeader(Begin(false), nullptr), error);
    }

    /// SG_InputFrame(). Matroska turns start codes into lengths inside @p bytes.
    void InputInPlace(std::span<unsigned char> bytes, const SGFrameInfo& attributes)
    {
        Throwing("SG_InputFrame",
                 [&](std::error_code& error) { InputInPlace(bytes, attributes, error); });
    }
    void InputInPlace(std::span<unsigned char> bytes,
                      const SGFrameInfo& attributes,
                      std::error_code& error) noexcept
    {
        void* const handle = Begin(false);
        if (bytes.size() > UINT32_MAX)
        {
            error = SG_ERR_PARAM_ERR;
            return;
        }
        SGFrameInfo record = attributes;
        record.struct_size = sizeof record;
        record.frame_pointer = bytes.data();
        record.frame_size = static_cast<uint32_t>(bytes.size());
        Judge(SG_InputFrame(handle, &record), error);
    }

    /// The same for bytes that must stay as they are: Matroska gets a copy, all others only read.
    void Input(std::span<const unsigned char> bytes, const SGFrameInfo& attributes)
    {
        Throwing("SG_InputFrame", [&](std::error_code& error) { Input(bytes, attributes, error); });
    }
    void Input(std::span<const unsigned char> bytes,
               const SGFrameInfo& attributes,
               std::error_code& error) noexcept
    {
        std::span<unsigned char> given(const_cast<unsigned char*>(bytes.data()), bytes.size());
        const bool is_changed = m_pState && m_pState->type == SG_STREAM_TYPE_MKV;
        if (is_changed && bytes.size() <= UINT32_MAX)
        {
            try
            {
                m_pState->copy.assign(bytes.begin(), bytes.end());
            }
            catch (const std::bad_alloc&)
            {
                Begin(false);
                error = SG_ERR_MEMORY_OUT;
                return;
            }
            given = m_pState->copy;
        }
        InputInPlace(given, attributes, error);
    }

    /// SG_CreateTailer(). What it emits is marked as Block::closing.
    void Tailer()
    {
        Throwing("SG_CreateTailer", [&](std::error_code& error) { Tailer(error); });
    }
    void Tailer(std::error_code& error) noexcept
    {
        Judge(SG_CreateTailer(Begin(true), nullptr), error);
    }

    /// SG_GetBackup(): the file's header as it would be written now, valid until the next call.
    /// Nothing when the container has none.
    [[nodiscard]] std::optional<Block> Backup()
    {
        std::optional<Block> backup;
        Throwing("SG_GetBackup", [&](std::error_code& error) { backup = Backup(error); });
        return backup;
    }
    [[nodiscard]] std::optional<Block> Backup(std::error_code& error) noexcept
    {
        SGOutputData block = {};
        const int result = SG_GetBackup(Begin(false), &block);
        const bool has_one = block.data_pointer != nullptr && block.data_size > 0;
        Judge(has_one ? 0 : result, error);  // a snapshot's result is its size
        if (!has_one) return std::nullopt;
        return BlockOf(block, false);
    }

    /// SG_SetParam() and SG_GetParam(); of a container other than RTP they do nothing.
    void SetRtp(const SGRtpPackageParam& param)
    {
        Throwing("SG_SetParam", [&](std::error_code& error) { SetRtp(param, error); });
    }
    void SetRtp(const SGRtpPackageParam& param, std::error_code& error) noexcept
    {
        SGRtpPackageParam record = param;
        Judge(SG_SetParam(Begin(false), SG_RTP_PARAM_TYPE_PACKAGE, &record, sizeof record), error);
    }
    [[nodiscard]] SGRtpPackageParam Rtp()
    {
        SGRtpPackageParam param = {};
        Throwing("SG_GetParam", [&](std::error_code& error) { param = Rtp(error); });
        return param;
    }
    [[nodiscard]] SGRtpPackageParam Rtp(std::error_code& error) noexcept
    {
        SGRtpPackageParam param = {};
        unsigned int length = sizeof param;
        Judge(SG_GetParam(Begin(false), SG_RTP_PARAM_TYPE_PACKAGE, &param, &length), error);
        return param;
    }

    /// What the output threw during the last call; the throwing forms have thrown it already.
    [[nodiscard]] std::exception_ptr Thrown() const noexcept
    {
        return m_pState ? m_pState->thrown : nullptr;
    }

private:
    /// Stays where it is when the packager moves, because the library keeps its address.
    struct State
    {
        ~State() { SG_DestroyHandle(handle); }

        std::function<std::size_t(const Block&)> output;
        unsigned int type = 0;
        void* handle = nullptr;
        std::exception_ptr thrown;
        bool closing = false;
        std::vector<unsigned char> copy;
    };

    template <typename Output>
    static std::function<std::size_t(const Block&)> Counting(Output output)
    {
        static_assert(std::is_invocable_v<Output&, const Block&>,
                      "the output is called with a Block");
        using Result = std::invoke_result_t<Output&, const Block&>;
        // NOLINTBEGIN(bugprone-exception-escape): moving them may throw, which Create() expects
        if constexpr (std::is_void_v<Result>)
        {
            return [output = std::move(output)](const Block& block) mutable
            {
                output(block);
                return block.bytes.size();
            };
        }
        else
        {
            static_assert(std::is_integral_v<Result> && !std::is_same_v<Result, bool>,
                          "the output gives nothing, or how many bytes it stored");
            return [output = std::move(output)](const Block& block) mutable
            {
                const Result stored = output(block);
                return std::cmp_less(stored, 0) ? 0 : static_cast<std::size_t>(stored);
            };
        }
        // NOLINTEND(bugprone-exception-escape)
    }

    /// @param output by reference, so that a callable that throws when it is moved does it here
    template <typename Output>
    void Create(unsigned int type, Output& output, std::error_code& error) noexcept
    {
        error.clear();
        try
        {
            auto state = std::make_unique<State>();
            state->output = Counting(std::move(output));
            state->type = type;
            SGCreateParam create = {};
            create.struct_size = sizeof create;
            create.user = state.get();
            create.sg_datacb = OnBlock;
            state->handle = SG_CreateHandle(type, &create);
            if (state->handle == nullptr)
                error = SG_ERR_INIT_FAIL;
            else
                m_pState = std::move(state);
        }
        catch (const std::bad_alloc&)
        {
            error = SG_ERR_MEMORY_OUT;
        }
        catch (...)
        {
            error = SG_ERR_INIT_FAIL;  // the callable could not be moved
        }
    }

    static Block BlockOf(const SGOutputData& block, bool closing) noexcept
    {
        return {block.offset_pos64,
                static_cast<Origin>(block.offset_type),
                {block.data_pointer, static_cast<std::size_t>(std::max(block.data_size, 0))},
                closing};
    }

    static void OnBlock(SGOutputData* data, void* user) noexcept
    {
        State& state = *static_cast<State*>(user);
        const Block block = BlockOf(*data, state.closing);
        if (block.bytes.empty()) return;
        std::size_t stored = 0;
        try
        {
            if (!state.thrown) stored = state.output(block);
        }
        catch (...)
        {
            state.thrown = std::current_exception();
        }
        // Not more than was offered, so it fits the field again.
        data->data_size = static_cast<int32_t>(std::min(stored, block.bytes.size()));
    }

    void* Begin(bool closing) noexcept
    {
        if (!m_pState) return nullptr;
        m_pState->closing = closing;
        m_pState->thrown = nullptr;
        return m_pState->handle;
    }

    void Judge(int code, std::error_code& error) const noexcept
    {
        if (Thrown())
            error = std::make_error_code(std::errc::operation_canceled);
        else if (code == SG_ERR_NOERR)
            error.clear();
        else
            error.assign(code, PackagingCategory());
    }

    static void ThrowIf(const std::error_code& error, const char* function)
    {
        if (error) throw std::system_error(error, function);
    }

    template <typename Call>
    void Throwing(const char* function, Call call)
    {
        std::error_code error;
        call(error);
        if (Thrown()) std::rethrow_exception(Thrown());
        ThrowIf(error, function);
    }

    std::unique_ptr<State> m_pState;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_WRAPTON_HPP
