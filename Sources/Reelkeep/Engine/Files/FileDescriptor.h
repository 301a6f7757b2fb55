#pragma once

#include <unistd.h>
#include <utility>

namespace reelkeep {

/// Owns one open file of the operating system and closes it.
class FileDescriptor {
public:
    FileDescriptor() = default;
    /// Takes what `openat` returned; a negative number means none.
    explicit FileDescriptor(int descriptor) : number(descriptor) {}
    FileDescriptor(FileDescriptor&& other) noexcept : number(std::exchange(other.number, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept
    {
        if (this != &other) {
            close();
            number = std::exchange(other.number, -1);
        }
        return *this;
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor() { close(); }

    int get() const { return number; }
    explicit operator bool() const { return number >= 0; }

    /// Errors of close() are ignored: data that matters was synced before.
    void close()
    {
        if (number >= 0)
            ::close(std::exchange(number, -1));
    }

private:
    int number = -1;
};

} // namespace reelkeep
