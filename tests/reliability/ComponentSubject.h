/**
 * @file ComponentSubject.h
 * One component of any type, driven in the same way whatever it is.
 */
#ifndef WRAPTON_TESTS_RELIABILITY_COMPONENTSUBJECT_H
#define WRAPTON_TESTS_RELIABILITY_COMPONENTSUBJECT_H

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "reliability/Subject.h"
#include "support/Components.h"

namespace Reliability
{

/// A type of stream or file component.
struct ComponentKind
{
    const char* type;
    bool isFile;

    /// "StreamPs", "FileMp4"
    [[nodiscard]] std::string Name() const;
};

extern const std::vector<ComponentKind> kComponents;

/// A block on its way out of a component: its place in a file, or -1 in a stream.
using Take = std::function<void(int64_t position, const unsigned char* bytes, std::size_t size)>;

class ComponentSubject
{
public:
    /// @param guard is told of every call of the library; null: of none
    ComponentSubject(const ComponentKind& kind, Take take, CallGuard* guard = nullptr);
    ComponentSubject(const ComponentSubject&) = delete;
    ComponentSubject& operator=(const ComponentSubject&) = delete;

    [[nodiscard]] bool Exists() const { return m_stream != nullptr || m_file != nullptr; }

    /// Opens a file component on a callable; a stream needs nothing.
    bool Begin();
    /// As for Subject. What waits is taken out of a stream at once; false, too, when that fails for
    /// another reason than that nothing waits.
    bool Input(const Support::Frame& frame);
    /// Asks a file component for a backup.
    void Backup();
    bool End();

private:
    template <class Call>
    bool Guarded(Call call);
    bool InputIntoStream(const Support::Frame& frame);
    bool TakeWaiting();

    ComponentKind m_kind;
    Take m_take;
    CallGuard* m_guard;
    Support::Stream m_stream;
    Support::File m_file;
};

/// The first frames of the script: of all kinds, and small.
std::vector<Support::Frame> SmallFrames();

/// A sum over blocks and their places, FNV-1a: what came out, compared without keeping it.
class BlockSum
{
public:
    void Add(int64_t position, const unsigned char* bytes, std::size_t size);
    [[nodiscard]] uint64_t Value() const { return m_value; }

private:
    void Add(uint64_t number) { m_value = (m_value ^ number) * 0x100000001B3; }

    uint64_t m_value = 0xCBF29CE484222325;
};

}  // namespace Reliability

#endif  // WRAPTON_TESTS_RELIABILITY_COMPONENTSUBJECT_H
