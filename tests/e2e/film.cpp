// Films the application on a virtual desktop with three monitors: a frame for each change of
// what is to be seen, and beside it a text that says how long it is seen, as apngasm reads it.
#include <QGuiApplication>
#include <chrono>
#include <exception>
#include <filesystem>
#include <functional>
#include <iomanip>
#include <iostream>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

#include "tests/e2e/FilmFrame.h"
#include "tests/scenario/AccessibleReading.h"
#include "tests/scenario/VirtualDesktopStage.h"
#include "tests/support/AppWindow.h"
#include "tests/support/Pointer.h"
#include "tests/support/Screenshot.h"
#include "tests/support/TemporaryFolder.h"

namespace tavrel::e2e {
namespace {

using scenario::Display;
using scenario::VirtualDesktopStage;
using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr milliseconds frameInterval{50};
constexpr int glideFrames = 8;
/// How long each of them is seen, however long it took to take.
constexpr milliseconds glidePace{40};

class Film {
public:
    Film(VirtualDesktopStage& stage, std::filesystem::path folder)
        : stage_(stage), pointer_(stage.desktop().displayName()), folder_(std::move(folder)) {}

    /// Films for that long.
    void watch(milliseconds duration) {
        const auto end = Clock::now() + duration;
        do {
            takeFrame();
            std::this_thread::sleep_for(frameInterval);
        } while (Clock::now() < end);
    }

    /// Films until the window says so.
    void watchUntil(const std::string& footer) {
        const auto end = Clock::now() + std::chrono::seconds{60};
        while (stage_.window().footer != footer) {
            if (Clock::now() > end) {
                throw std::runtime_error("the window never said: " + footer);
            }
            watch(frameInterval);
        }
    }

    void pointAt(const std::function<std::optional<support::AccessibleElement>()>& find) {
        std::optional<support::AccessibleElement> target;
        if (!stage_.await([&] { return (target = find()).has_value(); })) {
            throw std::runtime_error("there is nothing to point at");
        }
        const QPoint from = position_ + corner();
        const support::Bounds bounds = stage_.accessible().boundsOf(*target);
        const QPoint to(bounds.centreX(), bounds.centreY());
        for (int i = 1; i <= glideFrames; ++i) {
            const QPoint at = from + (to - from) * i / glideFrames;
            pointer_.moveTo(at.x(), at.y());
            position_ = at - corner();
            takeFrame(glidePace);
        }
    }

    void flip(Display display) {
        pointAt([&] { return scenario::findSwitch(stage_.accessible().elements(), display); });
        stage_.flip(display);
    }

    void pressWake() {
        pointAt([&] { return stage_.accessible().find("Wake both displays"); });
        stage_.pressWake();
    }

    void finish() { endFrame(); }

private:
    QPoint corner() const {
        const support::Bounds bounds = window().bounds();
        return {bounds.x, bounds.y};
    }

    support::AppWindow window() const {
        const auto window =
            support::AppWindow::find(stage_.desktop().displayName(), stage_.application().pid());
        if (!window) {
            throw std::runtime_error("the application has no window");
        }
        return *window;
    }

    /// Seen until the next one differs, or for as long as is said.
    void takeFrame(std::optional<milliseconds> pace = std::nullopt) {
        Moment moment{.monitors = {}, .window = picture(), .pointer = position_};
        for (const scenario::ServerDisplay& each : stage_.server()) {
            moment.monitors.push_back(each.isOn);
        }
        const QImage frame = draw(moment);
        if (frame == frame_) {
            return;
        }
        endFrame();
        frame_ = frame;
        pace_ = pace;
        begun_ = Clock::now();
    }

    /// The last one again while the window is on its way from one monitor to another.
    QImage picture() {
        try {
            picture_ = support::takeScreenshot(stage_.desktop().displayName(), window().id());
        } catch (const std::runtime_error&) {
            if (picture_.isNull()) {
                throw;
            }
        }
        return picture_;
    }

    void endFrame() {
        if (frame_.isNull()) {
            return;
        }
        std::ostringstream name;
        name << "frame" << std::setw(4) << std::setfill('0') << ++count_;
        const std::string file = (folder_ / (name.str() + ".png")).string();
        if (!frame_.save(QString::fromStdString(file))) {
            throw std::runtime_error("cannot write " + file);
        }
        const auto past = std::chrono::duration_cast<milliseconds>(Clock::now() - begun_);
        const auto seen = pace_.value_or(past) / 10;
        support::writeFile(folder_ / (name.str() + ".txt"),
                           "delay=" + std::to_string(seen.count()) + "/100\n");
    }

    VirtualDesktopStage& stage_;
    support::Pointer pointer_;
    std::filesystem::path folder_;
    QPoint position_{420, 440};
    QImage picture_;
    QImage frame_;
    std::optional<milliseconds> pace_;
    Clock::time_point begun_;
    int count_ = 0;
};

void make(const std::filesystem::path& folder) {
    const auto here = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    VirtualDesktopStage stage(3, (here / "tavrel").string());
    Film film(stage, folder);
    film.watch(milliseconds{1000});
    film.flip(1);
    film.watchUntil("External Display 2 is off");
    film.watch(milliseconds{1200});
    film.flip(2);
    film.watchUntil("External Display 3 is off");
    film.watch(milliseconds{1500});
    film.pressWake();
    film.watchUntil("Both displays are on");
    film.watch(milliseconds{1500});
    // Another program takes everything.
    stage.switchElsewhere({0, 1, 2}, false);
    film.watchUntil("Lost display recovered automatically");
    film.watch(milliseconds{2000});
    film.finish();
}

}  // namespace
}  // namespace tavrel::e2e

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: tavrel-film FOLDER\n";
        return 2;
    }
    // It draws only, and has no window.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    try {
        tavrel::e2e::make(argv[1]);
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "The film ended early: " << error.what() << '\n';
        return 1;
    }
}
