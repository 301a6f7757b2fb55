#pragma once

#include <string>
#include <string_view>
#include <sys/vfs.h>

namespace reelkeep {

/// The hidden names of a file that will get the name `name`. The same name always gives the same ones, so that a
/// leftover is found again. They are as long as the file system allows and contain as much of the name as fits, so that
/// a disk that does not allow the name refuses it before the copy and not after it.
std::string growingName(std::string_view name, const struct statfs& fileSystem);
/// The name of the complete file while it replaces its own reservation of the final name.
std::string sealedName(std::string_view name, const struct statfs& fileSystem);

/// The same with a random part, for when the usual one is taken by something that is not ours.
std::string spareGrowingName(std::string_view name, const struct statfs& fileSystem);
std::string spareSealedName(std::string_view name, const struct statfs& fileSystem);

} // namespace reelkeep
