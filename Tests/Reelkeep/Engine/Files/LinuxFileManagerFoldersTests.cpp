#include "Files/FileError.h"
#include "Files/LinuxFileManager.h"
#include "Fixtures/TemporaryFolder.h"
#include "Fixtures/Unprivileged.h"

#include <cerrno>
#include <filesystem>
#include <gtest/gtest.h>

namespace reelkeep {
namespace {

namespace fs = std::filesystem;

std::string createDirectoryFailure(const Location& folder)
{
    try {
        LinuxFileManager().createDirectory(folder);
        return "none";
    } catch (const FileError& error) {
        return error.what();
    }
}

/// A path that is too long for a system call, of names that are not.
Location longPathBelow(const TemporaryFolder& root)
{
    Location path = root.location();
    while (path.path().size() < 5000)
        path = path.appending(std::string(200, 'n'));
    return path;
}

TEST(LinuxFileManagerFoldersCreateDirectory, makesEveryMissingFolder)
{
    const TemporaryFolder root;
    LinuxFileManager().createDirectory(root / "a/b/c");
    EXPECT_TRUE(fs::is_directory((root / "a/b/c").path()));
}

TEST(LinuxFileManagerFoldersCreateDirectory, acceptsFoldersThatExist)
{
    const TemporaryFolder root;
    root.folder("a");
    fs::create_directory_symlink("a", (root / "link").path());
    EXPECT_EQ(createDirectoryFailure(root / "a"), "none");
    EXPECT_EQ(createDirectoryFailure(root / "link"), "none");
    EXPECT_EQ(createDirectoryFailure(root / "link/b"), "none");
    EXPECT_TRUE(fs::is_directory((root / "a/b").path()));
    EXPECT_EQ(createDirectoryFailure(Location("/")), "none");
}

TEST(LinuxFileManagerFoldersCreateDirectory, worksBeyondTheLongestPath)
{
    const TemporaryFolder root;
    const Location deep = longPathBelow(root);
    EXPECT_EQ(createDirectoryFailure(deep), "none");
    EXPECT_TRUE(LinuxFileManager().fileExists(deep));
    EXPECT_EQ(createDirectoryFailure(deep), "none");
}

TEST(LinuxFileManagerFoldersCreateDirectory, reportsWhatIsInTheWay)
{
    const TemporaryFolder root;
    root.file("file");
    fs::create_symlink("nowhere", (root / "link").path());
    EXPECT_EQ(createDirectoryFailure(root / "file/a"),
              (root / "file").path() + ": hay un archivo donde hace falta una carpeta.");
    EXPECT_EQ(createDirectoryFailure(root / "file"),
              (root / "file").path() + ": hay un archivo donde hace falta una carpeta.");
    EXPECT_EQ(createDirectoryFailure(root / "link"),
              (root / "link").path() + ": hay un enlace roto donde hace falta una carpeta.");
}

TEST(LinuxFileManagerFoldersCreateDirectory, reportsThatANameIsTooLong)
{
    const TemporaryFolder root;
    const Location folder = root / std::string(256, 'n');
    EXPECT_EQ(createDirectoryFailure(folder), folder.path() + ": el nombre es demasiado largo.");
}

TEST(LinuxFileManagerFoldersCreateDirectory, reportsThatItIsNotAllowed)
{
    const TemporaryFolder root;
    fs::permissions(root.location().path(), fs::perms(0555));
    EXPECT_EQ(runUnprivileged([&] { return createDirectoryFailure(root / "a"); }),
              (root / "a").path() + ": no tienes permiso.");
}

TEST(LinuxFileManagerFoldersFileExists, seesEveryKindOfEntry)
{
    const TemporaryFolder root;
    fs::create_symlink("nowhere", (root / "link").path());
    EXPECT_TRUE(LinuxFileManager().fileExists(root.file("file")));
    EXPECT_TRUE(LinuxFileManager().fileExists(root.file("empty", "")));
    EXPECT_TRUE(LinuxFileManager().fileExists(root.folder("folder")));
    EXPECT_TRUE(LinuxFileManager().fileExists(root / "link"));
    EXPECT_TRUE(LinuxFileManager().fileExists(Location("/")));
}

TEST(LinuxFileManagerFoldersFileExists, isFalseIfNothingCanBeThere)
{
    const TemporaryFolder root;
    root.file("file");
    EXPECT_FALSE(LinuxFileManager().fileExists(root / "missing"));
    EXPECT_FALSE(LinuxFileManager().fileExists(root / "missing/below"));
    EXPECT_FALSE(LinuxFileManager().fileExists(root / "file/below"));
    EXPECT_FALSE(LinuxFileManager().fileExists(longPathBelow(root)));
    EXPECT_FALSE(LinuxFileManager().fileExists((root / "file").appending(longPathBelow(root).path())));
}

TEST(LinuxFileManagerFoldersFileExists, failsIfItCannotBeDetermined)
{
    const TemporaryFolder root;
    EXPECT_THROW(LinuxFileManager().fileExists(root / std::string(256, 'n')), FileError);
    root.file("locked/x.mov");
    fs::permissions((root / "locked").path(), fs::perms(0));
    EXPECT_EQ(
        runUnprivileged([&] { return LinuxFileManager().fileExists(root / "locked/x.mov") ? "there" : "not there"; }),
        (root / "locked/x.mov").path() + ": no tienes permiso.");
}

} // namespace
} // namespace reelkeep
