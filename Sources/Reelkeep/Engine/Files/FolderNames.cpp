#include "Files/FolderListing.h"
#include "Text/TextOrder.h"

#include <algorithm>
#include <string_view>

namespace reelkeep {

namespace {

/// ASCII case-insensitive; `lowerCase` must be lower case already.
bool isEqual(std::string_view name, std::string_view lowerCase)
{
    return std::equal(name.begin(), name.end(), lowerCase.begin(), lowerCase.end(),
                      [](char one, char other) { return asciiLowercased(one) == other; });
}

} // namespace

bool isHidden(std::string_view name)
{
    return name.front() == '.' || isEqual(name, "$recycle.bin") || isEqual(name, "system volume information");
}

bool isPackage(std::string_view folderName)
{
    static constexpr std::string_view extensions[] = {
        "app",       "bundle",        "framework", "plugin",  "kext",         "photoslibrary", "aplibrary",
        "fcpbundle", "imovielibrary", "tvlibrary", "theater", "musiclibrary", "logicx",        "band"};
    const auto dot = folderName.rfind('.');
    if (dot == std::string_view::npos)
        return false;
    const std::string_view extension = folderName.substr(dot + 1);
    return std::any_of(std::begin(extensions), std::end(extensions),
                       [&](std::string_view known) { return isEqual(extension, known); });
}

} // namespace reelkeep
