#include "Files/ContentHash.h"

#include <new>
#include <xxhash.h>

namespace reelkeep {

ContentHash::ContentHash() : state(XXH3_createState())
{
    if (!state)
        throw std::bad_alloc();
    XXH3_64bits_reset(state);
}

ContentHash::~ContentHash()
{
    XXH3_freeState(state);
}

void ContentHash::add(std::span<const std::byte> bytes)
{
    XXH3_64bits_update(state, bytes.data(), bytes.size());
}

std::uint64_t ContentHash::value() const
{
    return XXH3_64bits_digest(state);
}

} // namespace reelkeep
