#include "CopyJob.h"
#include "Files/FileError.h"
#include "Files/Stopped.h"
#include "Fixtures/FaultPlans.h"
#include "Fixtures/LongRuns.h"
#include "Fixtures/RealFiles.h"
#include "Fixtures/TemporaryFolder.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <set>
#include <stop_token>
#include <string>
#include <vector>

namespace reelkeep {
namespace {

namespace fs = std::filesystem;

/// Three videos that are published together. Without threads, so that each run makes the same calls in the same order.
class CopyGroupTest : public testing::Test {
protected:
    CopyGroupTest() : memory("/dev/shm")
    {
        for (const std::string& name : names)
            memory.file("card/" + name, "content of " + name);
    }

    CopyJob job() const
    {
        std::vector<VideoFile> videos;
        for (const std::string& name : names)
            videos.push_back(
                {.id = name, .url = {}, .relativePath = name, .fileName = name, .size = 16, .createdAt = std::nullopt});
        return {.videos = VideoList(std::move(videos)), .sourceRoot = memory / "card", .destinationRoot = disk()};
    }
    Location disk() const { return memory / "disk"; }
    void emptyDisk() const
    {
        fs::remove_all(disk().path());
        memory.folder("disk");
    }
    /// The index of the video that the failure names, or none if it names their folder; their count if nothing failed.
    std::optional<std::size_t> failing(const faults::Plan& plan)
    {
        faults::Plan alone = plan;
        alone.hasNoThreads = true;
        emptyDisk();
        faults::arm(alone);
        std::optional<std::size_t> first = names.size();
        try {
            runOnRealFiles(job());
        } catch (const FileError& error) {
            failure = error.what();
            first.reset();
            for (std::size_t i = 0; i < names.size(); ++i)
                if (error.path().find(names[i]) != std::string::npos)
                    first = i;
        }
        calls = faults::disarm();
        return first;
    }
    /// How many of the first videos are complete on the disk; expects none after them.
    std::size_t publishedInOrder() const
    {
        std::size_t count = 0;
        while (count < names.size() && fs::exists(disk().appending(names[count]).path()))
            ++count;
        for (std::size_t i = 0; i < names.size(); ++i) {
            EXPECT_EQ(fs::exists(disk().appending(names[i]).path()), i < count) << names[i];
            const std::string expected = "content of " + names[i];
            EXPECT_TRUE(i >= count || contentOf(disk().appending(names[i])) == expected);
        }
        return count;
    }
    std::size_t hiddenCount() const
    {
        const auto found = everythingBelow(disk());
        return static_cast<std::size_t>(
            std::count_if(found.begin(), found.end(), [](const std::string& name) { return name.front() == '.'; }));
    }

    const std::vector<std::string> names = {"1.mov", "2.mov", "3.mov"};
    TemporaryFolder memory;
    std::vector<std::string> calls;
    std::string failure;
};

TEST_F(CopyGroupTest, publishesAllBeforeTheFirstFailureAndNothingAfterIt)
{
    ASSERT_EQ(failing({}), names.size());
    auto plans = plansFor(calls);
    const auto deaths = deathsDuring(calls);
    plans.insert(plans.end(), deaths.begin(), deaths.end());
    const std::size_t step = stride(3);
    std::size_t injected = 0;
    for (std::size_t number = 0; number < plans.size() && !HasFailure(); number += step) {
        const faults::Plan& plan = plans[number];
        if ((plan.call == "fstatat" || plan.call == "statx") && plan.errorNumber == ENOENT)
            continue; // not a failure but a wrong answer
        SCOPED_TRACE(describe(plan));
        const std::optional<std::size_t> first = failing(plan);
        injected += faults::struck() ? 1 : 0;
        const std::size_t published = publishedInOrder();
        EXPECT_GE(published, first.value_or(0)) << failure;
        // The last step is to sync the folder: before it, videos may have names but are not counted yet.
        const bool isAfterNaming = plan.call.empty() || plan.call == "fsync" || plan.call == "syncfs" ||
                                   plan.call == "fstat" || plan.call == "fstatat" || plan.call == "statx";
        EXPECT_TRUE(isAfterNaming || !first || published <= *first + 1) << failure;
        static const std::set<std::string> removal = {"", "unlinkat", "statx", "fstat", "fstatat"};
        const bool cannotRemove = plan.times > 1 && removal.count(plan.call) > 0;
        const bool isTakenOver = plan.call == "flock" && plan.errorNumber == EWOULDBLOCK; // another run may remove it
        EXPECT_TRUE(cannotRemove || isTakenOver || hiddenCount() == 0) << failure;
        EXPECT_EQ(runOnRealFiles(job()).skippedCount, std::int64_t(published));
        EXPECT_EQ(publishedInOrder(), names.size());
    }
    EXPECT_GT(injected, plans.size() / step / 2) << "of " << plans.size();
    std::printf("%zu calls, %zu injected faults\n", calls.size(), injected);
}

/// A stop comes too late only after the last name is given.
TEST_F(CopyGroupTest, isStoppedAtEveryCall)
{
    ASSERT_EQ(failing({}), names.size());
    const std::vector<std::string> undisturbed = calls;
    for (std::size_t number = 1; number <= undisturbed.size(); ++number) {
        std::stop_source stop;
        emptyDisk();
        faults::arm({.occurrence = number, .hasNoThreads = true, .deed = [&] { stop.request_stop(); }});
        bool isStopped = false;
        try {
            runOnRealFiles(
                job(), [](const CopyProgress&) {}, stop.get_token());
        } catch (const Stopped&) {
            isStopped = true;
        }
        faults::disarm();
        SCOPED_TRACE(std::to_string(number) + ", " + undisturbed[number - 1]);
        const std::size_t published = publishedInOrder();
        EXPECT_EQ(isStopped, published < names.size());
        EXPECT_EQ(hiddenCount(), 0U);
    }
}

/// If no thread can be started, the run does everything itself, with the same result.
TEST_F(CopyGroupTest, needsNoThreads)
{
    constexpr int many = 300;
    std::vector<VideoFile> videos;
    for (int number = 1000; number < 1000 + many; ++number) {
        const std::string name = std::to_string(number) + ".mov";
        memory.file("card/" + name, name);
        videos.push_back(
            {.id = name, .url = {}, .relativePath = name, .fileName = name, .size = 8, .createdAt = std::nullopt});
    }
    CopyJob large = job();
    large.videos = VideoList(std::move(videos));
    const auto occupied = disk().appending("1050.mov");
    for (const bool hasNoThreads : {true, false}) {
        emptyDisk();
        faults::arm({.hasNoThreads = hasNoThreads});
        EXPECT_EQ(runOnRealFiles(large).copiedCount, many);
        EXPECT_EQ(everythingBelow(disk()).size(), std::size_t(many));
        emptyDisk();
        const auto occupy = [&](const CopyProgress& report) {
            if (report.completedCount == 100)
                memory.file("disk/1050.mov", "foreign");
        };
        EXPECT_THROW(runOnRealFiles(large, occupy), FileError);
        faults::disarm();
        EXPECT_EQ(everythingBelow(disk()).size(), 51U);
        EXPECT_EQ(contentOf(occupied), "foreign");
    }
}

/// The disk returns something other than what was written, with and without direct reads.
TEST_F(CopyGroupTest, findsADifferenceBetweenWhatWasReadAndWhatIsOnTheDisk)
{
    ASSERT_EQ(failing({}), names.size());
    const auto reads = std::count(calls.begin(), calls.end(), "pread");
    ASSERT_EQ(reads, 12) << "each file twice, and its end";
    for (const std::map<std::string, int>& refusals :
         {std::map<std::string, int>{}, std::map<std::string, int>{{"fcntl", EINVAL}}}) {
        for (std::size_t video = 0; video < names.size(); ++video) {
            const auto change = [&] {
                // All files are written before the first one is read back.
                const Location hidden = disk().appending("." + names[video] + ".reelkeep-copia");
                std::string content = contentOf(hidden);
                content.back() = '?';
                memory.file("disk/" + std::string(hidden.lastPathComponent()), content);
            };
            EXPECT_EQ(failing({.call = "pread", .occurrence = 7 + 2 * video, .refusals = refusals, .deed = change}),
                      video);
            EXPECT_EQ(failure,
                      disk().appending(names[video]).path() + ": lo escrito en el disco no es igual a lo leido.");
            EXPECT_EQ(publishedInOrder(), video);
            EXPECT_EQ(hiddenCount(), 0U);
        }
    }
}

} // namespace
} // namespace reelkeep
