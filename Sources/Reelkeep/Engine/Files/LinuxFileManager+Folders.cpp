#include "Files/FileError.h"
#include "Files/LinuxFileManager.h"
#include "Files/SystemCalls.h"
#include "Files/TemporaryFile.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <utility>

namespace reelkeep {

namespace {

FileDescriptor openPlace(int folder, const char* path)
{
    return openAt(folder, path, O_PATH | O_DIRECTORY);
}

/// Makes one folder and puts its entry on the disk: publishing a file later syncs the folder that holds it, but not the
/// folders above. `path` is for the error.
FileDescriptor makeFolder(int above, const std::string& name, const std::string& path)
{
    const bool isNew = ::mkdirat(above, name.c_str(), 0777) == 0;
    if (!isNew && errno != EEXIST) // another program may have made it meanwhile
        throw creationError(above, path, errno);
    FileDescriptor made = openPlace(above, name.c_str());
    if (!made && errno == ENOENT)
        throw FileError(path, ENOENT, "hay un enlace roto donde hace falta una carpeta");
    if (!made)
        throw FileError(path, errno);
    if (isNew) {
        const FileDescriptor readable = openQuietly(above, ".", O_RDONLY);
        const FileDescriptor inside = openQuietly(made.get(), ".", O_RDONLY);
        if (syncFolder(readable.get(), inside.get()) != 0)
            throw FileError(path, errno);
    }
    return made;
}

} // namespace

void LinuxFileManager::createDirectory(const Location& folder)
{
    const ReachablePath whole(folder.path());
    if (openPlace(whole.folder(), whole.rest()))
        return;
    const std::string& path = folder.path();
    FileDescriptor above = openPlace(AT_FDCWD, "/");
    if (!above)
        throw FileError(path, errno);
    for (std::size_t begin = path.find_first_not_of('/'); begin < path.size();) {
        const std::size_t end = std::min(path.find('/', begin), path.size());
        const std::string name = path.substr(begin, end - begin);
        FileDescriptor next = openPlace(above.get(), name.c_str());
        if (!next && errno == ENOENT)
            next = makeFolder(above.get(), name, path.substr(0, end));
        if (!next)
            throw FileError(path.substr(0, end), errno);
        above = std::move(next);
        begin = std::min(path.find_first_not_of('/', end), path.size());
    }
}

bool LinuxFileManager::fileExists(const Location& place) const
{
    const ReachablePath reachable(place.path());
    struct stat status = {};
    if (::fstatat(reachable.folder(), reachable.rest(), &status, AT_SYMLINK_NOFOLLOW) == 0)
        return !isAbandonedReservation(place, status);
    if (errno == ENOENT || errno == ENOTDIR)
        return false;
    throw FileError(place.path(), errno);
}

} // namespace reelkeep
