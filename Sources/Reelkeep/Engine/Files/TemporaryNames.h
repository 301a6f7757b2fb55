#pragma once

#include <string>
#include <string_view>
#include <sys/vfs.h>

namespace reelkeep {

/// The hidden names under which a file waits for its final name `name`. They are the same for the same name, so that
/// a leftover is found again, and no longer than the file system allows. They keep what they can of the name: a disk
/// that does not admit it then refuses before the copy and not after it.
std::string growingName(std::string_view name, const struct statfs& fileSystem);
/// The name of the complete file while it replaces its own placeholder at the final name.
std::string sealedName(std::string_view name, const struct statfs& fileSystem);

/// The same with a random part, for when something that is not ours stands at the usual one.
std::string spareGrowingName(std::string_view name, const struct statfs& fileSystem);
std::string spareSealedName(std::string_view name, const struct statfs& fileSystem);

} // namespace reelkeep
