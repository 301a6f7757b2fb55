#include "Fixtures/Processes.h"

#include <csignal>
#include <fcntl.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace reelkeep {

pid_t start(const std::vector<std::string>& command, int output)
{
    std::vector<char*> arguments;
    for (const std::string& argument : command)
        arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    const pid_t process = ::fork();
    if (process == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        const int nowhere = ::open("/dev/null", O_RDWR | O_CLOEXEC);
        ::dup2(nowhere, STDIN_FILENO);
        ::dup2(output >= 0 ? output : nowhere, STDOUT_FILENO);
        ::dup2(nowhere, STDERR_FILENO);
        ::execvp(arguments[0], arguments.data());
        ::_exit(127);
    }
    if (process < 0)
        throw std::runtime_error("cannot start " + command[0]);
    return process;
}

int finish(pid_t process)
{
    int status = 0;
    while (::waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

bool run(const std::vector<std::string>& command)
{
    return finish(start(command)) == 0;
}

} // namespace reelkeep
