#pragma once

#include <unistd.h>
#include <utility>

namespace tallyroom {

/// Owns one open file descriptor and closes it at the end of its life.
class FileDescriptor {
public:
    FileDescriptor() = default;

    explicit FileDescriptor(int descriptor) noexcept : m_descriptor(descriptor) {}

    FileDescriptor(FileDescriptor&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}

    FileDescriptor& operator=(FileDescriptor&& other) noexcept
    {
        if (this != &other) {
            reset();
            m_descriptor = std::exchange(other.m_descriptor, -1);
        }
        return *this;
    }

    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    ~FileDescriptor() { reset(); }

    [[nodiscard]] bool isOpen() const noexcept { return m_descriptor >= 0; }

    /// The number, for one system call; the owner stays this object.
    [[nodiscard]] int get() const noexcept { return m_descriptor; }

    void reset() noexcept
    {
        if (m_descriptor >= 0) {
            ::close(std::exchange(m_descriptor, -1));
        }
    }

private:
    int m_descriptor = -1;
};

} // namespace tallyroom
