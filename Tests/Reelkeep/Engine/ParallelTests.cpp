#include "Parallel.h"

#include "Fixtures/Unprivileged.h"

#include <gtest/gtest.h>

#include <barrier>
#include <stdexcept>
#include <string>
#include <sys/resource.h>
#include <system_error>
#include <thread>
#include <vector>

namespace reelkeep {
namespace {

TEST(Parallel, doesTheWorkOfEachIndexOnce)
{
    for (const std::size_t count : {0U, 1U, 2U, 9U}) {
        std::vector<int> done(count);
        inParallel(count, [&](std::size_t index) { ++done[index]; });
        EXPECT_EQ(done, std::vector<int>(count, 1));
    }
}

TEST(Parallel, doesTheWorkInParallel)
{
    std::barrier together(3);
    inParallel(3, [&](std::size_t) { together.arrive_and_wait(); });
}

TEST(Parallel, throwsTheFirstExceptionAfterAllHaveEnded)
{
    std::vector<int> done(4);
    const auto work = [&](std::size_t index) {
        done[index] = 1;
        if (index % 2 == 1)
            throw std::runtime_error(std::to_string(index));
    };
    try {
        inParallel(4, work);
        FAIL() << "no exception";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "1");
    }
    EXPECT_EQ(done, std::vector<int>(4, 1));
}

std::string workWithoutThreads()
{
    const rlimit none = {};
    setrlimit(RLIMIT_NPROC, &none);
    try {
        std::thread([] {}).join();
        return "there is a thread";
    } catch (const std::system_error&) {
    }
    int done = 0;
    inParallel(3, [&](std::size_t) { ++done; });
    return std::to_string(done) + " done";
}

TEST(Parallel, doesAllWorkOnTheCallingThreadIfNoOtherCanStart)
{
    EXPECT_EQ(runUnprivileged(workWithoutThreads), "3 done");
}

} // namespace
} // namespace reelkeep
