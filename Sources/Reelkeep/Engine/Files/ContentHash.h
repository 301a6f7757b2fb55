#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

struct XXH3_state_s;

namespace reelkeep {

/// The XXH3 hash of what was read so far: 64 bits, as fast as memory. It detects damage, not forgery.
class ContentHash {
public:
    ContentHash();
    ~ContentHash();
    ContentHash(const ContentHash&) = delete;
    ContentHash& operator=(const ContentHash&) = delete;

    void add(std::span<const std::byte> bytes);
    std::uint64_t value() const;

private:
    XXH3_state_s* state;
};

} // namespace reelkeep
