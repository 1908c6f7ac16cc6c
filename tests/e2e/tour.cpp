#include <algorithm>
#include <exception>
#include <filesystem>
#include <functional>
#include <iomanip>
#include <iostream>
#include <string>
#include <vector>

#include "tests/scenario/VirtualDesktopStage.h"
#include "tests/support/AppWindow.h"
#include "tests/support/Screenshot.h"

namespace tavrel::scenario {
namespace {

/// Something the user does on the tour, and how it must turn out.
struct Sight {
    std::string caption;
    std::function<void(Stage&)> act;
    std::string footer;
    /// Which displays are on afterwards, in the order of the window's list.
    std::vector<bool> on;
};

std::vector<Sight> sights() {
    const auto flip = [](Display display) {
        return [display](Stage& stage) { stage.flip(display); };
    };
    return {
        {"The window opens", [](Stage&) {}, "Found 3 displays", {true, true, true}},
        {"A click switches display 2 off",
         flip(1),
         "External Display 2 is off",
         {true, false, true}},
        {"A click switches it on again", flip(1), "External Display 2 is on", {true, true, true}},
        {"A click switches display 1 off",
         flip(0),
         "External Display 1 is off",
         {false, true, true}},
        {"A click switches display 3 off, so display 2 must stay on",
         flip(2),
         "External Display 3 is off",
         {false, true, false}},
        {"A click wakes all",
         [](Stage& stage) { stage.pressWake(); },
         "Both displays are on",
         {true, true, true}},
    };
}

bool windowShows(const Window& window, const std::vector<bool>& on) {
    return std::equal(window.rows.begin(), window.rows.end(), on.begin(), on.end(),
                      [](const Row& row, bool isOn) { return !row.isBusy && row.isOn == isOn; });
}

bool serverHas(const std::vector<ServerDisplay>& server, const std::vector<bool>& on) {
    return std::equal(server.begin(), server.end(), on.begin(), on.end(),
                      [](const ServerDisplay& each, bool isOn) { return each.isOn == isOn; });
}

void print(VirtualDesktopStage& stage) {
    const Window window = stage.window();
    std::cout << "   the window says: " << window.footer << '\n';
    const std::vector<ServerDisplay> server = stage.server();
    for (std::size_t i = 0; i < std::max(window.rows.size(), server.size()); ++i) {
        std::cout << "   " << std::left << std::setw(20);
        if (i < window.rows.size()) {
            const Row& row = window.rows[i];
            std::cout << row.name << std::setw(22)
                      << (row.isBusy  ? "busy"
                          : !row.isOn ? "off"
                                      : "on " + (row.lockText.empty() ? std::string()
                                                                      : "(" + row.lockText + ")"));
        } else {
            std::cout << "not listed" << std::setw(22) << "";
        }
        if (i < server.size()) {
            std::cout << "X server: " << stage.outputs()[i]
                      << (server[i].isOn ? server[i].place : " off");
        }
        std::cout << '\n';
    }
}

/// Returns whether window and server agree with each other and with what was to happen.
bool visit(const Sight& sight, std::size_t number, VirtualDesktopStage& stage,
           const std::filesystem::path& pictures) {
    std::cout << '\n' << number << ". " << sight.caption << std::endl;
    sight.act(stage);
    const bool agreed = stage.await([&] {
        const Window window = stage.window();
        return window.footer == sight.footer && windowShows(window, sight.on) &&
               serverHas(stage.server(), sight.on);
    });
    print(stage);
    const auto window =
        support::AppWindow::find(stage.desktop().displayName(), stage.application().pid());
    if (window) {
        const auto picture = pictures / (std::to_string(number) + ".png");
        support::saveScreenshot(stage.desktop().displayName(), picture, window->id());
        std::cout << "   screenshot: " << picture.string() << '\n';
    }
    if (!agreed) {
        std::cout << "   *** They disagree, or this is not what was to happen.\n";
    }
    return agreed && window;
}

int takeTour(const std::filesystem::path& program, const std::filesystem::path& pictures) {
    VirtualDesktopStage stage(3, program.string());
    std::cout << "Tavrel on a virtual desktop of its own (" << stage.desktop().displayName()
              << ") with three monitors.\n";
    bool allAgreed = true;
    std::size_t number = 0;
    for (const Sight& sight : sights()) {
        allAgreed = visit(sight, ++number, stage, pictures) && allAgreed;
    }
    std::cout << (allAgreed ? "\nWindow and X server agreed all the way.\n"
                            : "\nWindow and X server did not agree.\n");
    return allAgreed ? 0 : 1;
}

}  // namespace
}  // namespace tavrel::scenario

/// Of the application beside this program, or of the one that is named; the pictures are then
/// left in the folder that is named after it.
int main(int argc, char** argv) {
    if (argc != 1 && argc != 3) {
        std::cerr << "usage: tavrel-tour [PROGRAM FOLDER]\n";
        return 2;
    }
    try {
        if (argc == 3) {
            return tavrel::scenario::takeTour(argv[1], argv[2]);
        }
        const auto here = std::filesystem::read_symlink("/proc/self/exe").parent_path();
        return tavrel::scenario::takeTour(here / "tavrel", here.parent_path() / "tour");
    } catch (const std::exception& error) {
        std::cerr << "The tour ended early: " << error.what() << '\n';
        return 1;
    }
}
