#pragma once

#include <filesystem>
#include <string>

#include "tests/support/ChildProcess.h"
#include "tests/support/Janitor.h"

namespace tavrel::support {

/// A message bus of a test's own, on which nothing is until somebody connects: it starts no
/// programs but those it is told of.
class MessageBus {
public:
    struct Options {
        /// The folder with the service files of the programs that it may start; empty for none.
        std::filesystem::path services = {};
        /// What it starts them with.
        Environment environment = bareEnvironment();
    };

    /// Keeps its files in `folder`, which must outlive it, under this name. Blocks until the
    /// bus answers; throws std::runtime_error with its own words when it does not.
    MessageBus(const std::filesystem::path& folder, const std::string& name, Janitor& janitor)
        : MessageBus(folder, name, janitor, Options{}) {}
    MessageBus(const std::filesystem::path& folder, const std::string& name, Janitor& janitor,
               const Options& options);

    const std::string& address() const { return address_; }

private:
    std::string address_;
    ChildProcess daemon_;
};

}  // namespace tavrel::support
