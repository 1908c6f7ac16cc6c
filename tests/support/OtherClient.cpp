#include "tests/support/OtherClient.h"

#include <utility>

#include "tests/support/ChildProcess.h"

namespace tavrel::support {

OtherClient::OtherClient(std::string displayName) : displayName_(std::move(displayName)) {}

void OtherClient::switchOff(const std::string& output) const {
    switchOff(std::vector{output});
}

void OtherClient::switchOff(const std::vector<std::string>& outputs) const {
    std::vector<std::string> arguments;
    for (const std::string& output : outputs) {
        arguments.insert(arguments.end(), {"--output", output, "--off"});
    }
    run(std::move(arguments));
}

void OtherClient::switchOn(const std::string& output) const {
    run({"--output", output, "--auto"});
}

void OtherClient::setMode(const std::string& output, const std::string& mode) const {
    run({"--output", output, "--mode", mode});
}

void OtherClient::setPosition(const std::string& output, int x, int y) const {
    run({"--output", output, "--pos", std::to_string(x) + "x" + std::to_string(y)});
}

void OtherClient::setPrimary(const std::string& output) const {
    run({"--output", output, "--primary"});
}

void OtherClient::showSameAs(const std::string& output, const std::string& original) const {
    run({"--output", output, "--same-as", original});
}

void OtherClient::connect(const std::string& output, int x, int y, const std::string& mode) const {
    run({"--addmode", output, mode});
    run({"--output", output, "--mode", mode, "--pos", std::to_string(x) + "x" + std::to_string(y)});
    // Listing the outputs makes the server check its connectors again.
    run({"--query"});
}

void OtherClient::run(std::vector<std::string> arguments) const {
    Environment environment = bareEnvironment();
    environment["DISPLAY"] = displayName_;
    arguments.insert(arguments.begin(), "xrandr");
    runToEnd(std::move(arguments), std::move(environment));
}

}  // namespace tavrel::support
