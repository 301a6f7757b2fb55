#include "Platform/SharedText.h"

#include <algorithm>
#include <atomic>
#include <limits>
#include <new>
#include <ostream>
#include <stdexcept>
#include <utility>

namespace reelkeep {

/// Followed by its bytes.
struct SharedText::Block {
    std::atomic<std::uint32_t> users{0};
    std::uint32_t capacity;

    char* bytes() { return reinterpret_cast<char*>(this + 1); }
    /// Writes a text and the zero byte after it.
    void write(std::size_t place, std::string_view text)
    {
        *std::copy(text.begin(), text.end(), bytes() + place) = '\0';
    }

    static Block* make(std::size_t capacity)
    {
        if (capacity > std::numeric_limits<std::uint32_t>::max())
            throw std::length_error("SharedText");
        return new (::operator new(sizeof(Block) + capacity)) Block{.capacity = static_cast<std::uint32_t>(capacity)};
    }
    void release()
    {
        if (users.fetch_sub(1, std::memory_order_acq_rel) == 1) {
            this->~Block();
            ::operator delete(this);
        }
    }
};

SharedText::SharedText(Block* used, std::size_t first, std::size_t count) noexcept
    : block(used), begin(static_cast<std::uint32_t>(first)), length(static_cast<std::uint32_t>(count))
{
    if (block)
        block->users.fetch_add(1, std::memory_order_relaxed);
}

SharedText::SharedText(std::string_view text)
    : SharedText(text.empty() ? nullptr : Block::make(text.size() + 1), 0, text.size())
{
    if (block)
        block->write(0, text);
}

SharedText::SharedText(const SharedText& other) noexcept : SharedText(other.block, other.begin, other.length) {}

SharedText::SharedText(SharedText&& other) noexcept
    : block(std::exchange(other.block, nullptr)), begin(std::exchange(other.begin, 0)),
      length(std::exchange(other.length, 0))
{
}

SharedText& SharedText::operator=(SharedText other) noexcept
{
    std::swap(block, other.block);
    std::swap(begin, other.begin);
    std::swap(length, other.length);
    return *this;
}

SharedText::~SharedText()
{
    if (block)
        block->release();
}

const char* SharedText::c_str() const
{
    return block ? block->bytes() + begin : "";
}

SharedText SharedText::from(std::size_t count) const
{
    return count < length ? SharedText(block, begin + count, length - count) : SharedText();
}

std::string operator+(std::string_view one, const SharedText& other)
{
    return std::string(one) += other;
}

std::string operator+(const SharedText& one, std::string_view other)
{
    return std::string(one) += other;
}

std::ostream& operator<<(std::ostream& stream, const SharedText& text)
{
    return stream << std::string_view(text);
}

SharedText SharedTextMaker::joined(std::string_view one, std::string_view other)
{
    constexpr std::size_t usualCapacity = std::size_t(16) << 10;
    const std::size_t length = one.size() + other.size();
    if (!current.block || length >= current.block->capacity - used) {
        current = SharedText(SharedText::Block::make(std::max(length + 1, usualCapacity)), 0, 0);
        used = 0;
    }
    SharedText::Block* const block = current.block;
    block->write(used, one);
    block->write(used + one.size(), other);
    SharedText text(block, used, length);
    used += length + 1;
    return text;
}

} // namespace reelkeep
