#include <gtest/gtest.h>
#include <unistd.h>
#include <yaml-cpp/yaml.h>

#include <filesystem>
#include <string>
#include <vector>

/// What the workflow may hold: jobs that each call one script, and no logic of its own.
namespace tavrel {
namespace {

const std::filesystem::path project = PROJECT_FOLDER;

YAML::Node jobs() {
    return YAML::LoadFile(project / ".github/workflows/ci.yml")["jobs"];
}

/// The commands of a job, in order.
std::vector<std::string> commands(const YAML::Node& job) {
    std::vector<std::string> found;
    for (const YAML::Node& step : job["steps"]) {
        if (step["run"]) {
            found.push_back(step["run"].as<std::string>());
        }
    }
    return found;
}

/// The script of ours that a command ends with: all before it only says where it runs.
std::string script(const std::string& command) {
    const auto space = command.rfind(' ');
    return space == std::string::npos ? command : command.substr(space + 1);
}

TEST(Workflow, parsesAndRunsOnTheSystemsThatWeSupport) {
    ASSERT_TRUE(jobs().IsMap());
    EXPECT_EQ(jobs()["mac"]["runs-on"].as<std::string>(), "macos-15");
    EXPECT_NE(commands(jobs()["debian"]).at(0).find(" debian:12 "), std::string::npos);
    EXPECT_NE(commands(jobs()["ubuntu"]).at(0).find(" ubuntu:latest "), std::string::npos);
    const YAML::Node workflow = YAML::LoadFile(project / ".github/workflows/ci.yml");
    EXPECT_EQ(workflow["permissions"]["contents"].as<std::string>(), "read");
}

TEST(Workflow, checksTheProjectOutBeforeAnythingElse) {
    for (const auto& job : jobs()) {
        EXPECT_EQ(job.second["steps"][0]["uses"].as<std::string>().rfind("actions/checkout@", 0),
                  0U)
            << job.first;
    }
}

TEST(Workflow, callsOneScriptInEachJobAndHasNoLogicOfItsOwn) {
    std::size_t count = 0;
    for (const auto& job : jobs()) {
        const std::vector<std::string> all = commands(job.second);
        ASSERT_EQ(all.size(), 1U) << job.first;
        EXPECT_EQ(all[0].find_first_of(";|&\n`("), std::string::npos) << all[0];
        const std::filesystem::path file = project / script(all[0]);
        EXPECT_EQ(access(file.c_str(), X_OK), 0) << file;
        ++count;
    }
    EXPECT_EQ(count, 3U);
}

TEST(Workflow, runsTheProjectsOwnScriptsByName) {
    EXPECT_EQ(script(commands(jobs()["mac"]).at(0)), "scripts/ci-mac");
    EXPECT_EQ(script(commands(jobs()["debian"]).at(0)), ".ci/run");
    EXPECT_EQ(script(commands(jobs()["ubuntu"]).at(0)), ".ci/run");
}

}  // namespace
}  // namespace tavrel
