#include "Files/Location.h"

#include <algorithm>
#include <utility>

namespace reelkeep {

Location::Location(SharedText absolutePath) : text(std::move(absolutePath))
{
    if (text.size() < 2 || text.back() != '/')
        return;
    const std::string_view path = text;
    text = SharedText(path.substr(0, std::max<std::size_t>(path.find_last_not_of('/') + 1, 1)));
}

std::string_view Location::lastPathComponent() const
{
    const std::string_view path = text;
    return path.substr(path.rfind('/') + 1);
}

std::string_view Location::name() const
{
    const std::string_view last = lastPathComponent();
    return last.empty() ? std::string_view(text) : last;
}

Location Location::deletingLastPathComponent() const
{
    const std::string_view path = text;
    const auto separator = path.rfind('/');
    return Location(separator == 0 || separator == std::string_view::npos ? "/" : path.substr(0, separator));
}

Location Location::appending(std::string_view relative) const
{
    const auto first = relative.find_first_not_of('/');
    if (first == std::string_view::npos)
        return *this;
    std::string joined = path();
    if (joined.empty() || joined.back() != '/')
        joined += '/';
    joined += relative.substr(first);
    return Location(joined);
}

} // namespace reelkeep
