// What the tests of files and of the faults of the system share.
#pragma once

#include <cstddef>
#include <filesystem>
#include <gtest/gtest.h>
#include <iterator>
#include <sys/wait.h>
#include <temporary_folder.h>
#include <unistd.h>

/// A folder for files; each test must end with the descriptors that it began with.
class Files : public testing::Test {
protected:
    void TearDown() override { EXPECT_EQ(openDescriptors(), descriptors); }

    static std::ptrdiff_t openDescriptors() {
        auto const entries = std::filesystem::directory_iterator("/proc/self/fd");
        return std::distance(begin(entries), end(entries));
    }

    TemporaryFolder folder;
    std::ptrdiff_t descriptors = openDescriptors();
};

/// What `call` gives in a child process, 0 to 255.
template <typename Call>
int inChild(Call call) {
    pid_t const child = fork();
    if (child == 0) {
        _exit(call());
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}
