#include "Parallel.h"

#include <exception>
#include <system_error>
#include <thread>
#include <vector>

namespace reelkeep {

void inParallel(std::size_t count, const std::function<void(std::size_t index)>& work)
{
    std::vector<std::exception_ptr> failures(count);
    const auto attempt = [&](std::size_t index) {
        try {
            work(index);
        } catch (...) {
            failures[index] = std::current_exception();
        }
    };
    {
        std::vector<std::jthread> others;
        for (std::size_t index = 1; index < count; ++index) {
            try {
                others.emplace_back(attempt, index);
            } catch (const std::system_error&) {
                attempt(index);
            }
        }
        if (count > 0)
            attempt(0);
    }
    for (const std::exception_ptr& failure : failures) {
        if (failure)
            std::rethrow_exception(failure);
    }
}

} // namespace reelkeep
