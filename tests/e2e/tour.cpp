#include <algorithm>
#include <exception>
#include <filesystem>
#include <functional>
#include <iomanip>
#include <iostream>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/scenario/GnomeStage.h"
#include "tests/scenario/PlasmaStage.h"
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

/// Where the tour is taken.
struct Place {
    std::string server;
    std::string input;
    std::unique_ptr<Stage> stage = {};
    /// The connectors, in the order of the window's list.
    std::vector<std::string> outputs = {};
    /// Keeps a picture of the window, and returns whether that went well. Null where programs
    /// are not let take any.
    std::function<bool(const std::filesystem::path&)> takePicture = {};
};

Place onX11(const std::string& program) {
    auto stage = std::make_unique<VirtualDesktopStage>(3, program);
    Place place{.server = "X server", .input = "the pointer", .outputs = stage->outputs()};
    place.takePicture = [&stage = *stage](const std::filesystem::path& picture) {
        const std::string display = stage.desktop().displayName();
        const auto window = support::AppWindow::find(display, stage.application().pid());
        if (window) {
            support::saveScreenshot(display, picture, window->id());
        }
        return window.has_value();
    };
    place.stage = std::move(stage);
    return place;
}

template <typename CompositorStage>
Place onWayland(std::unique_ptr<CompositorStage> stage, const std::string& server) {
    Place place{.server = server, .input = "AT-SPI", .outputs = stage->outputs()};
    place.stage = std::move(stage);
    return place;
}

/// std::nullopt when there is no such desktop.
std::optional<Place> placeOn(std::string_view desktop, const std::string& program) {
    if (desktop == "x11") {
        return onX11(program);
    }
    if (desktop == "gnome") {
        return onWayland(std::make_unique<GnomeStage>(program), "Mutter");
    }
    if (desktop == "plasma") {
        return onWayland(std::make_unique<PlasmaStage>(3, program), "KWin");
    }
    return std::nullopt;
}

std::string shown(const ServerDisplay& display) {
    const std::size_t begin = display.place.find_first_not_of(' ');
    return !display.isOn || begin == std::string::npos ? "off" : display.place.substr(begin);
}

void print(const Place& place) {
    const Window window = place.stage->window();
    std::cout << "   the window says: " << window.footer << '\n';
    const std::vector<ServerDisplay> server = place.stage->server();
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
            std::cout << place.server << ": " << place.outputs[i] << ' ' << shown(server[i]);
        }
        std::cout << '\n';
    }
}

/// Returns whether window and server agree with each other and with what was to happen.
bool visit(const Sight& sight, std::size_t number, const Place& place,
           const std::filesystem::path& pictures) {
    std::cout << '\n' << number << ". " << sight.caption << std::endl;
    Stage& stage = *place.stage;
    sight.act(stage);
    const bool agreed = stage.await([&] {
        const Window window = stage.window();
        return window.footer == sight.footer && windowShows(window, sight.on) &&
               serverHas(stage.server(), sight.on);
    });
    print(place);
    const auto picture = pictures / (std::to_string(number) + ".png");
    const bool isKept = !place.takePicture || place.takePicture(picture);
    if (place.takePicture && isKept) {
        std::cout << "   screenshot: " << picture.string() << '\n';
    }
    if (!agreed) {
        std::cout << "   *** They disagree, or this is not what was to happen.\n";
    }
    return agreed && isKept;
}

int takeTour(const Place& place, const std::filesystem::path& pictures) {
    std::cout << "Tavrel on a virtual desktop of its own with three monitors: " << place.server
              << ", used by " << place.input << ".\n";
    bool allAgreed = true;
    std::size_t number = 0;
    for (const Sight& sight : sights()) {
        allAgreed = visit(sight, ++number, place, pictures) && allAgreed;
    }
    std::cout << "\nWindow and " << place.server
              << (allAgreed ? " agreed all the way.\n" : " did not agree.\n");
    return allAgreed ? 0 : 1;
}

int usage() {
    std::cerr << "usage: tavrel-tour [--desktop x11|gnome|plasma] [PROGRAM FOLDER]\n";
    return 2;
}

int takeTour(std::span<char*> arguments) {
    std::string_view desktop = "x11";
    if (arguments.size() >= 2 && std::string_view(arguments[0]) == "--desktop") {
        desktop = arguments[1];
        arguments = arguments.subspan(2);
    }
    if (!arguments.empty() && arguments.size() != 2) {
        return usage();
    }
    const auto here = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    const std::filesystem::path program = arguments.empty() ? here / "tavrel" : arguments[0];
    const std::filesystem::path pictures =
        arguments.empty() ? here.parent_path() / "tour" : arguments[1];
    const std::optional<Place> place = placeOn(desktop, program.string());
    return place ? takeTour(*place, pictures) : usage();
}

}  // namespace
}  // namespace tavrel::scenario

/// Of the application beside this program, or of the one that is named; the pictures are then
/// left in the folder that is named after it.
int main(int argc, char** argv) {
    try {
        return tavrel::scenario::takeTour({argv + 1, static_cast<std::size_t>(argc - 1)});
    } catch (const std::exception& error) {
        std::cerr << "The tour ended early: " << error.what() << '\n';
        return 1;
    }
}
