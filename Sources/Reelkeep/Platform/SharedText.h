#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>

namespace reelkeep {

/// An immutable text that may share its storage with others, such as a path with the name at its end. Copying it, and
/// taking its end, makes no new text. A value like any other: any thread may hold a copy.
class SharedText {
public:
    SharedText() = default;
    SharedText(std::string_view text);
    SharedText(const std::string& text) : SharedText(std::string_view(text)) {}
    SharedText(const char* text) : SharedText(std::string_view(text)) {}
    SharedText(const SharedText& other) noexcept;
    SharedText(SharedText&& other) noexcept;
    SharedText& operator=(SharedText other) noexcept;
    ~SharedText();

    /// Ends with a zero byte that is not counted.
    const char* c_str() const;
    std::size_t size() const { return length; }
    bool empty() const { return length == 0; }
    char back() const { return c_str()[length - 1]; }
    operator std::string_view() const { return {c_str(), length}; }
    operator std::string() const { return {c_str(), length}; }

    /// What follows the first `count` bytes, sharing their storage.
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
    friend class SharedTextMaker;
    struct Block;
    SharedText(Block* used, std::size_t first, std::size_t count) noexcept;

    Block* block = nullptr; ///< None for the empty text.
    std::uint32_t begin = 0;
    std::uint32_t length = 0;
};

/// Makes many texts that share a few large blocks: a block for each would take more room than most texts, and time.
/// One thread at a time; the texts may go anywhere.
class SharedTextMaker {
public:
    SharedText joined(std::string_view one, std::string_view other);

private:
    SharedText current; ///< Keeps the block that is being filled.
    std::size_t used = 0;
};

} // namespace reelkeep

template <>
struct std::hash<reelkeep::SharedText> {
    std::size_t operator()(const reelkeep::SharedText& text) const { return std::hash<std::string_view>{}(text); }
};
