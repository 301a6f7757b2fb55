#include "Files/TemporaryNames.h"

#include <algorithm>
#include <cstddef>

namespace reelkeep {

namespace {

std::string hiddenName(std::string_view name, std::string_view suffix, const struct statfs& fileSystem)
{
    constexpr std::size_t usualLimit = 255;
    const auto told = static_cast<std::size_t>(fileSystem.f_namelen);
    const std::size_t limit = told >= 64 ? std::min(told, usualLimit) : usualLimit;
    std::size_t length = std::min(name.size(), limit - 1 - suffix.size());
    const auto isInsideCharacter = [&](std::size_t at) {
        return at < name.size() && (static_cast<unsigned char>(name[at]) & 0xC0U) == 0x80U;
    };
    while (length > 0 && isInsideCharacter(length))
        --length;
    return "." + std::string(name.substr(0, length)) + std::string(suffix);
}

} // namespace

std::string growingName(std::string_view name, const struct statfs& fileSystem)
{
    return hiddenName(name, ".reelkeep-copia", fileSystem);
}

std::string sealedName(std::string_view name, const struct statfs& fileSystem)
{
    return hiddenName(name, ".reelkeep-lista", fileSystem);
}

} // namespace reelkeep
