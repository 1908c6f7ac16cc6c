#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>

namespace tavrel::support {

/// Runs the current test again in a new process of this executable, and calls `body` only
/// there: for state that lasts as long as a process. Failures in `body` are printed, and fail
/// this test too.
inline void inNewProcess(const std::function<void()>& body) {
    constexpr const char* variable = "TAVREL_TEST_NEW_PROCESS";
    // A process that does not come to run the test ends with another status.
    constexpr int success = 42;
    if (std::getenv(variable) != nullptr) {
        body();
        std::exit(testing::Test::HasFailure() ? EXIT_FAILURE : success);
    }

    const auto& test = *testing::UnitTest::GetInstance()->current_test_info();
    const std::string program = std::filesystem::read_symlink("/proc/self/exe");
    const std::string command = variable + ("=1 '" + program) +
                                "' --gtest_brief=1 --gtest_filter=" + test.test_suite_name() + "." +
                                test.name();
    const int status = std::system(command.c_str());
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == success);
}

}  // namespace tavrel::support
