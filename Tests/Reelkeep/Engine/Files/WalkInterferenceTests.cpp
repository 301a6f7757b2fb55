#include "Files/FileError.h"
#include "Fixtures/Faults.h"
#include "Fixtures/TemporaryFolder.h"
#include "Fixtures/Walks.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <string_view>
#include <sys/stat.h>

namespace reelkeep {
namespace {

namespace fs = std::filesystem;

/// There may have been a video in it, so the walk must not end as if nothing were missing.
TEST(WalkInterference, failsIfAFolderBecomesALinkBeforeItIsRead)
{
    const TemporaryFolder memory("/dev/shm");
    const auto isMovie = [](std::string_view name) { return name.ends_with(".mov"); };
    std::size_t failures = 0;
    const auto callsWith = [&](std::size_t number) {
        fs::remove_all((memory / "card").path());
        fs::remove_all((memory / "away").path());
        memory.file("card/1.mov");
        memory.file("card/a/2.mov");
        faults::arm({.occurrence = number, .deed = [&] {
                         fs::rename((memory / "card/a").path(), (memory / "away").path());
                         fs::create_symlink("nowhere", (memory / "card/a").path());
                     }});
        try {
            const std::size_t count = entriesBelow(memory / "card", isMovie, FixedWalkers(1)).size();
            const bool isListedAsALink = count == 1 && fs::is_symlink((memory / "card/a").path());
            EXPECT_TRUE(count == 2 || isListedAsALink) << number;
        } catch (const FileError& error) {
            ++failures;
            EXPECT_EQ(error.what(), (memory / "card/a").path() + ": hay un archivo donde hace falta una carpeta.");
        }
        return faults::disarm().size();
    };
    const std::size_t calls = callsWith(0);
    ASSERT_EQ(failures, 0U);
    for (std::size_t number = 1; number <= calls; ++number)
        callsWith(number);
    EXPECT_GT(failures, 0U);
}

/// In the middle of a walk a folder is replaced by another, or by a pipe, which would block a reader that opens it.
class WalkInterferenceReplacement : public testing::TestWithParam<bool> {
protected:
    WalkInterferenceReplacement()
    {
        // At this depth, folders are closed while others are read, and found again by their path.
        for (int depth = 0; depth < 40; ++depth) {
            deep += "/d";
            for (const char* waiting : {"/a", "/z"})
                memory.folder(deep + waiting);
        }
    }
    void fill(const std::string& folder, const std::string& name) const
    {
        for (const char* below : {"/a/", "/b/", "/c/"})
            memory.file(folder + below + name);
    }
    void prepare() const
    {
        for (const std::string& place : {deep, std::string("other"), std::string("away")})
            fs::remove_all((memory / place).path());
        fill(deep, "old.mov");
        if (GetParam())
            EXPECT_EQ(::mkfifo((memory / "other").path().c_str(), 0600), 0);
        else
            fill("other", "new.mov");
    }
    /// How often each name is found; empty if the walk fails.
    std::map<std::string, int> walk(std::size_t number)
    {
        const auto isMovie = [](std::string_view name) { return name.ends_with(".mov"); };
        std::map<std::string, int> found;
        faults::arm({.occurrence = number, .deed = [this] {
                         fs::rename((memory / deep).path(), (memory / "away").path());
                         fs::rename((memory / "other").path(), (memory / deep).path());
                     }});
        try {
            for (const auto& entry : entriesBelow(memory / "card", isMovie, FixedWalkers(1)))
                ++found[std::string(entry.url.lastPathComponent())];
        } catch (const FileError& error) {
            ++failures;
            EXPECT_EQ(error.code(), GetParam() ? ENOTDIR : ENOENT);
            found.clear();
        }
        calls = faults::disarm().size();
        return found;
    }

    TemporaryFolder memory{"/dev/shm"};
    std::string deep = "card";
    std::size_t failures = 0;
    std::size_t calls = 0;
};

TEST_P(WalkInterferenceReplacement, isNeverMistakenForTheFolderThatWasThere)
{
    prepare();
    walk(0);
    const std::size_t moments = calls;
    for (std::size_t number = 1; number <= moments; ++number) {
        SCOPED_TRACE(number);
        prepare();
        const auto found = walk(number);
        EXPECT_LE(found.size(), 1U) << "videos of both folders";
        EXPECT_TRUE(found.empty() || found.begin()->second == 3);
    }
    EXPECT_GT(failures, 0U);
}

INSTANTIATE_TEST_SUITE_P(By, WalkInterferenceReplacement, testing::Bool(),
                         [](const auto& tested) { return std::string(tested.param ? "aPipe" : "aFolder"); });

} // namespace
} // namespace reelkeep
