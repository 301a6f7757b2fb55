#include "Files/TemporaryNames.h"

#include <algorithm>
#include <cstddef>
#include <iomanip>
#include <random>
#include <sstream>

namespace reelkeep {

namespace {

std::string hiddenName(std::string_view name, std::string_view suffix, const struct statfs& fileSystem)
{
    constexpr std::size_t usualLimit = 255;
    const auto reported = static_cast<std::size_t>(fileSystem.f_namelen);
    const std::size_t limit = reported >= 64 ? std::min(reported, usualLimit) : usualLimit;
    std::size_t length = std::min(name.size(), limit - 1 - suffix.size());
    const auto isInsideCharacter = [&](std::size_t at) {
        return at < name.size() && (static_cast<unsigned char>(name[at]) & 0xC0U) == 0x80U;
    };
    while (length > 0 && isInsideCharacter(length))
        --length;
    return "." + std::string(name.substr(0, length)) + std::string(suffix);
}

constexpr std::string_view growingSuffix = ".reelkeep-copia";
constexpr std::string_view sealedSuffix = ".reelkeep-lista";

std::string spareSuffix(std::string_view suffix)
{
    static thread_local std::mt19937_64 random{std::random_device{}()};
    std::ostringstream part;
    part << '.' << std::hex << std::setw(16) << std::setfill('0') << random() << suffix;
    return part.str();
}

} // namespace

std::string growingName(std::string_view name, const struct statfs& fileSystem)
{
    return hiddenName(name, growingSuffix, fileSystem);
}

std::string sealedName(std::string_view name, const struct statfs& fileSystem)
{
    return hiddenName(name, sealedSuffix, fileSystem);
}

std::string spareGrowingName(std::string_view name, const struct statfs& fileSystem)
{
    return hiddenName(name, spareSuffix(growingSuffix), fileSystem);
}

std::string spareSealedName(std::string_view name, const struct statfs& fileSystem)
{
    return hiddenName(name, spareSuffix(sealedSuffix), fileSystem);
}

} // namespace reelkeep
