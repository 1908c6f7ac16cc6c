#include <unistd.h>

#include <filesystem>
#include <iostream>

#include "tests/support/AppProcess.h"
#include "tests/support/VirtualDesktop.h"

/// Starts a desktop with a program on it, prints what must be gone after its end, and waits to
/// be killed.
int main(int argc, char** argv) {
    if (argc != 2) {
        return 2;
    }
    const tavrel::support::VirtualDesktop desktop({.monitors = 1, .accessibility = true});
    const tavrel::support::UserHome home;
    const tavrel::support::AppProcess application(desktop, home, {.program = argv[1]});
    const std::string address = desktop.sessionBusAddress();
    const std::filesystem::path socket = address.substr(address.find('=') + 1);
    std::cout << desktop.displayName() << ' ' << address << ' ' << socket.parent_path().string()
              << ' ' << home.path().string() << ' ' << application.pid() << std::endl;
    for (;;) {
        ::pause();
    }
}
