#include "tests/faults/command_run.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace
{

std::string BytesOf(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

void Redirect(int fd, const std::string& path)
{
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    ::dup2(file, fd);
    ::close(file);
}

[[noreturn]] void Become(const std::string& directory, const std::vector<std::string>& arguments,
                         const CommandFault& fault, const std::string& number)
{
    std::vector<char*> argv = {const_cast<char*>("qxp")};
    std::string input = "/dev/null";
    for (const std::string& argument : arguments) {
        if (argument[0] == '<')
            input = directory + "/" + argument.substr(1);
        else
            argv.push_back(const_cast<char*>(argument.c_str()));
    }
    argv.push_back(nullptr);
    const std::string faults = std::to_string(static_cast<int>(fault.action)) + ":" + std::to_string(fault.call) + ":" +
                               std::to_string(fault.error) + ":" + number;
    ::setenv("QXP_FAULTS", faults.c_str(), 1);
    ::setenv("LD_PRELOAD", VCQ_FAULTS_LIBRARY, 1);
    // The sanitizer wants to be the first library; what it looks for at the end takes longer than the run.
    ::setenv("ASAN_OPTIONS", "verify_asan_link_order=0:detect_leaks=0", 1);
    ::setenv("XDG_RUNTIME_DIR", (directory + "/../runtime").c_str(), 1);
    ::dup2(::open(input.c_str(), O_RDONLY), STDIN_FILENO);
    Redirect(STDOUT_FILENO, directory + "/../output");
    Redirect(STDERR_FILENO, directory + "/../errors");
    if (::chdir(directory.c_str()) == 0)
        ::execv(VCQ_QXP, argv.data());
    ::_exit(127);
}

} // namespace

CommandResult RunQxp(const std::string& directory, const std::vector<std::string>& arguments, const CommandFault& fault)
{
    const std::string number = directory + "/../number";
    std::ofstream(number, std::ios::binary) << std::string(sizeof(long), '\0');
    std::filesystem::create_directories(directory + "/../runtime");
    std::filesystem::permissions(directory + "/../runtime", std::filesystem::perms::owner_all);
    const pid_t pid = ::fork();
    if (pid == 0)
        Become(directory, arguments, fault, number);
    CommandResult result;
    int status = 0;
    if (pid > 0 && ::waitpid(pid, &status, 0) == pid && WIFEXITED(status))
        result.status = WEXITSTATUS(status);
    result.output = BytesOf(directory + "/../output");
    result.errors = BytesOf(directory + "/../errors");
    const std::string calls = BytesOf(number);
    result.calls = *reinterpret_cast<const long*>(calls.data());
    return result;
}

Snapshot TakeSnapshot(const std::string& directory)
{
    Snapshot files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(directory)) {
        const std::string name = entry.path().string().substr(directory.size() + 1);
        if (entry.is_symlink())
            files[name] = "-> " + std::filesystem::read_symlink(entry.path()).string();
        else if (entry.is_regular_file())
            files[name] = BytesOf(entry.path());
    }
    return files;
}
