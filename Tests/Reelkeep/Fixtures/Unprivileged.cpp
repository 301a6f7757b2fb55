#include "Fixtures/Unprivileged.h"

#include <array>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace reelkeep {

namespace {

constexpr unsigned nobody = 65534;

std::string textOf(const std::function<std::string()>& action)
{
    try {
        return action();
    } catch (const std::exception& error) {
        return error.what();
    }
}

} // namespace

std::string runUnprivileged(const std::function<std::string()>& action)
{
    std::array<int, 2> channel = {};
    if (::pipe(channel.data()) != 0)
        throw std::runtime_error("no pipe");
    const pid_t child = ::fork();
    if (child == 0) {
        if (::geteuid() == 0 && (::setresgid(nobody, nobody, nobody) != 0 || ::setresuid(nobody, nobody, nobody) != 0))
            ::_exit(EXIT_FAILURE);
        const std::string text = textOf(action);
        ::_exit(::write(channel[1], text.data(), text.size()) == static_cast<ssize_t>(text.size()) ? EXIT_SUCCESS
                                                                                                   : EXIT_FAILURE);
    }
    ::close(channel[1]);
    std::string text;
    std::array<char, 4096> buffer = {};
    for (ssize_t count = 0; (count = ::read(channel[0], buffer.data(), buffer.size())) > 0;)
        text.append(buffer.data(), static_cast<std::size_t>(count));
    ::close(channel[0]);
    int status = 0;
    if (child < 0 || ::waitpid(child, &status, 0) != child || status != 0)
        throw std::runtime_error("the unprivileged process failed");
    return text;
}

void allowNoMoreThreads()
{
    const rlimit none = {0, 0};
    if (::setrlimit(RLIMIT_NPROC, &none) != 0)
        throw std::runtime_error("no limit of threads");
}

} // namespace reelkeep
