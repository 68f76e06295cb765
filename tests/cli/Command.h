// Running the program as scripts do.
#pragma once

#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace osa::test {

struct Outcome {
    int exitStatus;
    std::string output;
};

/// Runs the program; both streams are caught in the order they are written.
inline Outcome run(const std::string& arguments, const std::string& errors = "2>&1",
                   const std::string& before = {}) {
    const std::string command =
        before + std::getenv("OSA_PROGRAM") + " " + arguments + " " + errors;
    FILE* const pipe = popen(command.c_str(), "r");
    std::string output;
    char buffer[4096];
    for (std::size_t n = 0; (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;)
        output.append(buffer, n);
    const int status = pclose(pipe);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, output};
}

}  // namespace osa::test
