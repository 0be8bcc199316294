#include "support/child_process.h"

#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>

namespace {

constexpr const char* kSelf = "/proc/self/exe";
constexpr int kNotStarted = 127;

[[noreturn]] void becomeSelf(const std::vector<std::string>& arguments, int output) {
    std::vector<char*> list;
    list.push_back(const_cast<char*>(kSelf));
    for (const std::string& argument : arguments) {
        list.push_back(const_cast<char*>(argument.c_str()));
    }
    list.push_back(nullptr);
    dup2(output, STDOUT_FILENO);
    execv(kSelf, list.data());
    _exit(kNotStarted);
}

}  // namespace

std::string outputOfSelf(const std::vector<std::string>& arguments) {
    int ends[2];
    if (pipe(ends) != 0) {
        throw std::runtime_error("cannot make a pipe to a child process");
    }
    const pid_t child = fork();
    if (child == 0) {
        close(ends[0]);
        becomeSelf(arguments, ends[1]);
    }
    close(ends[1]);
    std::string output;
    char block[4096];
    for (ssize_t got; child > 0 && (got = read(ends[0], block, sizeof(block))) > 0;) {
        output.append(block, static_cast<std::size_t>(got));
    }
    close(ends[0]);
    int status = -1;
    if (child < 0 || waitpid(child, &status, 0) != child || status != 0) {
        throw std::runtime_error("a child process failed: " + output);
    }
    return output;
}
