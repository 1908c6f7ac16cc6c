#include <benchmark/benchmark.h>

#include <QApplication>
#include <memory>
#include <string>
#include <vector>

#include "display/DisplayIntegration.h"
#include "registry/DisplayRegistry.h"
#include "registry/StoredDisplay.h"
#include "tests/bench/Benchmarks.h"
#include "tests/bench/Measures.h"
#include "tests/bench/NumberedDisplays.h"
#include "tests/simulated/SimulatedPlatform.h"
#include "ui/DisplayControlView.h"
#include "ui/paint/Theme.h"

/// Parts of the application alone, with as many displays as nobody has: what they cost may grow
/// with the displays, and no faster.
namespace tavrel::bench {
namespace {

constexpr long few = 1'000;
constexpr long many = 100'000;

std::vector<StoredDisplay> records(long count) {
    std::vector<StoredDisplay> all;
    for (long i = 1; i <= count; ++i) {
        // Times as they are: with a fraction.
        all.push_back({static_cast<DisplayID>(i), i == 1, {786'000'000.25 + double(i) / 7}});
    }
    return all;
}

class FixedClock : public WallClock {
public:
    WallTime now() override { return {786'100'000}; }
};

void addRegistry(const Benchmarks& benchmarks, long size) {
    const auto all = std::make_shared<std::vector<StoredDisplay>>(records(size));
    const auto text = std::make_shared<std::string>(StoredFormat::encode(*all).value());
    benchmarks.add("encode the registry", size,
                   [=] { benchmark::DoNotOptimize(StoredFormat::encode(*all)); });
    benchmarks.add("decode the registry", size,
                   [=] { benchmark::DoNotOptimize(StoredFormat::decode(*text)); });

    const auto displays = std::make_shared<NumberedDisplays>(static_cast<std::size_t>(size));
    const auto store = std::make_shared<SimulatedUserDefaults>();
    store->setData(DisplayRegistry::storageKey, *text);
    benchmarks.add("merge into the registry", size, [=] {
        FixedClock clock;
        benchmark::DoNotOptimize(
            DisplayRegistry::merge(displays->all(), *store, *displays->now(), clock));
    });
}

void addEnumeration(const Benchmarks& benchmarks, long size) {
    const auto displays = std::make_shared<NumberedDisplays>(static_cast<std::size_t>(size));
    const auto store = std::make_shared<SimulatedUserDefaults>();
    benchmarks.add("enumerate displays", size, [=] {
        FixedClock clock;
        benchmark::DoNotOptimize(DisplayIntegration::fetchDisplays(*displays, *store, clock));
    });
}

/// The window on so many displays.
struct Shown {
    explicit Shown(std::size_t count) {
        for (DisplayID id = 1; id <= count; ++id) {
            platform.windowServer.connect({.id = id});
        }
        controller = DisplayController::create(platform.platform());
        platform.scheduler.settle();
        view = std::make_unique<DisplayControlView>(controller);
        view->show();
        QCoreApplication::processEvents();
    }
    ~Shown() {
        view.reset();
        controller.reset();
    }
    Shown(const Shown&) = delete;
    Shown& operator=(const Shown&) = delete;

    void rebuild() {
        controller->setStatusMessage(hasChanged ? "Ready" : "Changed");
        hasChanged = !hasChanged;
        QCoreApplication::processEvents();
    }

    SimulatedPlatform platform;
    std::shared_ptr<DisplayController> controller;
    std::unique_ptr<DisplayControlView> view;
    bool hasChanged = false;
};

void addView(const Benchmarks& benchmarks, long size) {
    const auto shown = std::make_shared<Shown>(static_cast<std::size_t>(size));
    benchmarks.add("rebuild the view", size, [=] { shown->rebuild(); });
}

void reportGrowth(const Benchmarks& measured, const std::string& name, long small, long large,
                  const std::string& thing, Report& report) {
    report.add({name + ", for each of " + std::to_string(large) + " " + thing, "ns",
                measured.nanosecondsEach(name, large), "of " + std::to_string(small),
                measured.nanosecondsEach(name, small), Goal{Goal::Of::ratio, 2}});
}

void reportWhole(const Benchmarks& measured, const std::string& name, long size,
                 const std::string& thing, Report& report) {
    std::vector<double> microseconds;
    for (const double each : measured.nanoseconds(name, size)) {
        microseconds.push_back(each / 1e3);
    }
    report.add({.what = name + ", " + std::to_string(size) + " " + thing,
                .unit = "µs",
                .ours = microseconds});
}

}  // namespace

void measureParts(const Extent& extent, Report& report) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    std::string name = "tavrel-bench";
    int count = 1;
    char* arguments[] = {name.data(), nullptr};
    const QApplication application(count, arguments);
    theme::apply();

    Benchmarks benchmarks(extent.runs);
    const std::vector<long> sizes{1, few, many};
    for (const long size : sizes) {
        addRegistry(benchmarks, size);
    }
    addEnumeration(benchmarks, 3);
    addEnumeration(benchmarks, 64);
    addView(benchmarks, 3);
    addView(benchmarks, 64);
    benchmarks.run();

    for (const char* part :
         {"encode the registry", "decode the registry", "merge into the registry"}) {
        for (const long size : sizes) {
            reportWhole(benchmarks, part, size, size == 1 ? "record" : "records", report);
        }
        reportGrowth(benchmarks, part, few, many, "records", report);
    }
    for (const long size : {3L, 64L}) {
        reportWhole(benchmarks, "enumerate displays", size, "displays", report);
        reportWhole(benchmarks, "rebuild the view", size, "rows", report);
    }
    reportGrowth(benchmarks, "enumerate displays", 3, 64, "displays", report);
    reportGrowth(benchmarks, "rebuild the view", 3, 64, "rows", report);
}

}  // namespace tavrel::bench
