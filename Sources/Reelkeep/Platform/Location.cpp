#include "Platform/Location.h"

#include <utility>

namespace reelkeep {

Location::Location(std::string absolutePath) : text(std::move(absolutePath))
{
    while (text.size() > 1 && text.back() == '/')
        text.pop_back();
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
    const auto separator = text.rfind('/');
    return Location(separator == 0 || separator == std::string::npos ? std::string("/") : text.substr(0, separator));
}

Location Location::appending(std::string_view relative) const
{
    const auto first = relative.find_first_not_of('/');
    if (first == std::string_view::npos)
        return *this;
    std::string joined = text;
    if (joined.empty() || joined.back() != '/')
        joined += '/';
    joined += relative.substr(first);
    return Location(std::move(joined));
}

} // namespace reelkeep
