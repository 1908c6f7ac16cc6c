// Stands between the application and its watchdog: passes on what the two say to each other, and
// writes each change that is asked for to the file NOTED_REQUESTS, one line each: "on 7".
#include <poll.h>

#include <array>
#include <cstdlib>
#include <fstream>
#include <variant>

#include "watchdog/application/WatchdogProcess.h"
#include "watchdog/protocol/MessageSocket.h"

namespace {

using namespace tavrel::watchdog;

void note(std::ostream& requests, const Message& message) {
    if (message.kind == Message::Kind::switchOn || message.kind == Message::Kind::switchOff) {
        requests << (message.kind == Message::Kind::switchOn ? "on " : "off ") << message.display
                 << std::endl;
    }
}

/// Passes on all that has come. Returns false when nothing more will come.
bool passOn(MessageSocket& from, MessageSocket& to, std::ostream& requests) {
    for (;;) {
        const Received received = from.receive(std::chrono::milliseconds::zero());
        const auto* message = std::get_if<Message>(&received);
        if (message == nullptr) {
            return std::get<NoMessage>(received) == NoMessage::timedOut;
        }
        note(requests, *message);
        to.send(*message);
    }
}

}  // namespace

int main(int argc, char** argv) {
    MessageSocket application(tavrel::FileDescriptor(3));
    const auto watchdog = WatchdogProcess::start(TAVREL_WATCHDOG, {}, argc > 2 ? argv[2] : "");
    const char* file = std::getenv("NOTED_REQUESTS");
    if (watchdog == nullptr || file == nullptr) {
        return EXIT_FAILURE;
    }
    std::ofstream requests(file);
    bool isGoing = true;
    while (isGoing) {
        std::array<pollfd, 2> sources{
            {{application.descriptor(), POLLIN, 0}, {watchdog->descriptor(), POLLIN, 0}}};
        poll(sources.data(), sources.size(), -1);
        isGoing = passOn(application, watchdog->link(), requests) &&
                  passOn(watchdog->link(), application, requests);
    }
}
