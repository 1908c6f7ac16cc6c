#include <unistd.h>

#include <filesystem>
#include <iostream>

#include "tests/support/VirtualDesktop.h"

/// Starts a desktop, prints where its traces are, and waits to be killed.
int main() {
    const tavrel::support::VirtualDesktop desktop({.monitors = 1, .accessibility = true});
    const std::string address = desktop.sessionBusAddress();
    const std::filesystem::path socket = address.substr(address.find('=') + 1);
    std::cout << desktop.displayName() << ' ' << address << ' ' << socket.parent_path().string()
              << " ready" << std::endl;
    for (;;) {
        ::pause();
    }
}
