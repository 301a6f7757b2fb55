#pragma once

#include <atomic>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>
#include <utility>

namespace reelkeep {

/// An immutable text that may share its storage with others, such as a path with the name at its end. Neither copying
/// it nor taking its end allocates. It is a plain value: any thread may hold a copy.
class SharedText {
public:
    SharedText() = default;
    SharedText(std::string_view text);
    SharedText(const std::string& text) : SharedText(std::string_view(text)) {}
    SharedText(const char* text) : SharedText(std::string_view(text)) {}
    SharedText(const SharedText& other) noexcept : SharedText(other.block, other.begin, other.length) {}
    SharedText(SharedText&& other) noexcept
        : block(std::exchange(other.block, nullptr)), begin(std::exchange(other.begin, 0)),
          length(std::exchange(other.length, 0))
    {
    }
    SharedText& operator=(SharedText other) noexcept
    {
        std::swap(block, other.block);
        std::swap(begin, other.begin);
        std::swap(length, other.length);
        return *this;
    }
    ~SharedText()
    {
        if (block)
            block->release();
    }

    /// Ends with a zero byte that `size` does not count.
    const char* c_str() const { return block ? block->bytes() + begin : ""; }
    std::size_t size() const { return length; }
    bool empty() const { return length == 0; }
    char back() const { return c_str()[length - 1]; }
    operator std::string_view() const { return {c_str(), length}; }
    operator std::string() const { return {c_str(), length}; }

    /// The text after its first `count` bytes, in the same storage.
    SharedText from(std::size_t count) const;

    template <std::convertible_to<std::string_view> Other>
    bool operator==(const Other& other) const
    {
        return std::string_view(*this) == std::string_view(other);
    }
    friend std::string operator+(std::string_view one, const SharedText& other);
    friend std::string operator+(const SharedText& one, std::string_view other);
    friend std::ostream& operator<<(std::ostream& stream, const SharedText& text);

private:
    friend class SharedTextArena;
    /// Reference-counted storage; its bytes follow it in memory.
    struct Block {
        std::atomic<std::uint32_t> users{0};
        std::uint32_t capacity = 0;

        static Block* make(std::size_t capacity);
        char* bytes() { return reinterpret_cast<char*>(this + 1); }
        /// Writes a text, followed by a zero byte.
        void write(std::size_t offset, std::string_view text);
        void release()
        {
            if (users.fetch_sub(1, std::memory_order_acq_rel) == 1)
                destroy();
        }
        void destroy();
    };
    SharedText(Block* used, std::size_t first, std::size_t count) noexcept
        : block(used), begin(static_cast<std::uint32_t>(first)), length(static_cast<std::uint32_t>(count))
    {
        if (block)
            block->users.fetch_add(1, std::memory_order_relaxed);
    }

    Block* block = nullptr; ///< Null for the empty text.
    std::uint32_t begin = 0;
    std::uint32_t length = 0;
};

/// Makes many texts in a few large blocks, because a block for each would take more memory than most texts, and time.
/// Not thread-safe itself; the texts may go to any thread.
class SharedTextArena {
public:
    SharedText joined(std::string_view one, std::string_view other);

private:
    SharedText current; ///< Owns the block being filled.
    std::size_t used = 0;
};

} // namespace reelkeep

template <>
struct std::hash<reelkeep::SharedText> {
    std::size_t operator()(const reelkeep::SharedText& text) const { return std::hash<std::string_view>{}(text); }
};
