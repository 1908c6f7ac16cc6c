#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/bench/Desk.h"
#include "tests/bench/Measures.h"
#include "tests/bench/ProcessUse.h"

/// From the start of a program until its window is there, until that shows all it has to show,
/// and what the program has used up by then and holds from then on.
namespace tavrel::bench {
namespace {

/// What is kept of each start of one program.
struct Starts {
    std::vector<double> toWindow;
    std::vector<double> toContent;
    std::vector<double> fromWindowToContent;
    std::vector<double> cpu;
    std::vector<double> resident;
    std::vector<double> ownResident;
    std::vector<double> own;
};

class Starter {
public:
    explicit Starter(Program which) : program(std::move(which)) {}

    void startOnce(const Desk& desk) {
        WindowWatch watch(desk.displayName());
        const Time begin = Clock::now();
        const auto process = desk.start(program, home_);
        const WindowWatch::Opening opening = watch.awaitOpening();
        const pid_t pid = process->pid();
        const ProcessUse use =
            ProcessUse::of(program.hasHelper ? withHelper(pid, "DISPLAY=" + desk.displayName())
                                             : std::vector<pid_t>{pid});
        starts.toWindow.push_back(milliseconds(opening.mapped - begin));
        starts.toContent.push_back(milliseconds(opening.painted - begin));
        starts.fromWindowToContent.push_back(milliseconds(opening.painted - opening.mapped));
        starts.cpu.push_back(use.cpuMilliseconds);
        starts.resident.push_back(use.residentMebibytes);
        starts.ownResident.push_back(ProcessUse::of(pid).residentMebibytes);
        starts.own.push_back(use.privateMebibytes);
    }

    /// Whoever has started once has read its files and made its caches.
    void warmUp(const Desk& desk) {
        startOnce(desk);
        starts = {};
    }

    const Program program;
    Starts starts;

private:
    support::UserHome home_;
};

void compare(const Starter& tavrel, const Starter& other, Report& report) {
    const std::string& name = other.program.name;
    const bool isLight = name == "lxrandr";
    const Starts& ours = tavrel.starts;
    const Starts& theirs = other.starts;
    const Goal start{Goal::Of::ratio, isLight ? 0.8 : 0.3};
    const Goal memory = isLight ? Goal{Goal::Of::ratio, 1.4} : Goal{};
    report.add({"start to the window", "ms", ours.toWindow, name, theirs.toWindow, start});
    report.add({"start to all it shows", "ms", ours.toContent, name, theirs.toContent});
    report.add({"processor time of a start, with the helper", "ms", ours.cpu, name, theirs.cpu});
    report.add({"resident memory", "MiB", ours.ownResident, name, theirs.resident, memory});
    report.add({"resident memory, with the helper", "MiB", ours.resident, name, theirs.resident});
    report.add({"memory of its own, with the helper", "MiB", ours.own, name, theirs.own, memory});
}

}  // namespace

void measureStart(const Extent& extent, Report& report) {
    const Desk desk;
    Starter tavrel(Program::tavrel());
    std::vector<std::unique_ptr<Starter>> others;
    for (const char* name : {"lxrandr", "arandr"}) {
        const Program program = Program::other(name);
        if (program.isInstalled()) {
            others.push_back(std::make_unique<Starter>(program));
        } else {
            report.addMissing("start and memory beside " + program.name, "it is not installed");
        }
    }
    tavrel.warmUp(desk);
    for (const auto& other : others) {
        other->warmUp(desk);
    }
    for (int run = 0; run < extent.runs; ++run) {
        tavrel.startOnce(desk);
        for (const auto& other : others) {
            other->startOnce(desk);
        }
    }
    for (const auto& other : others) {
        compare(tavrel, *other, report);
    }
    report.add({.what = "from the window to the list painted",
                .unit = "ms",
                .ours = tavrel.starts.fromWindowToContent,
                .goal = {Goal::Of::value, 10}});
}

}  // namespace tavrel::bench
