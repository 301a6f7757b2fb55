#include "Text/SharedText.h"

#include <algorithm>
#include <limits>
#include <new>
#include <ostream>
#include <stdexcept>

namespace reelkeep {

SharedText::Block* SharedText::Block::make(std::size_t capacity)
{
    if (capacity > std::numeric_limits<std::uint32_t>::max())
        throw std::length_error("SharedText");
    auto* made = new (::operator new(sizeof(Block) + capacity)) Block;
    made->capacity = static_cast<std::uint32_t>(capacity);
    return made;
}

void SharedText::Block::write(std::size_t offset, std::string_view text)
{
    *std::copy(text.begin(), text.end(), bytes() + offset) = '\0';
}

void SharedText::Block::destroy()
{
    this->~Block();
    ::operator delete(this);
}

SharedText::SharedText(std::string_view text)
    : SharedText(text.empty() ? nullptr : Block::make(text.size() + 1), 0, text.size())
{
    if (block)
        block->write(0, text);
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

SharedText SharedTextArena::joined(std::string_view one, std::string_view other)
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
