#include "tests/platform/plasma/StandInPlasma.h"

#include <utility>

#include "tests/platform/plasma/StandInServer.h"

namespace tavrel {

StandInPlasma::StandInPlasma(std::size_t outputs, Announcing announcing)
    : server_(std::make_unique<Server>(outputs, announcing)) {}

StandInPlasma::~StandInPlasma() = default;

const std::string& StandInPlasma::displayName() const {
    return server_->path;
}

void StandInPlasma::answerNext(std::vector<Answer> answers) {
    server_->run([&] { server_->answers = std::move(answers); });
}

std::size_t StandInPlasma::configurations() {
    std::size_t count = 0;
    server_->run([&] { count = server_->configurations; });
    return count;
}

std::vector<StandInPlasma::Output> StandInPlasma::outputs() {
    std::vector<Output> outputs;
    server_->run([&] {
        for (const auto& device : server_->devices) {
            outputs.push_back(device->state);
        }
    });
    return outputs;
}

StandInPlasma::Output StandInPlasma::output(const std::string& name) {
    Output output{.name = name, .isEnabled = false};
    server_->run([&] {
        if (const Server::Device* device = server_->find(name)) {
            output = device->state;
        }
    });
    return output;
}

void StandInPlasma::change(const std::string& name, const std::function<void(Output&)>& change) {
    server_->run([&] {
        if (Server::Device* device = server_->find(name)) {
            change(device->state);
            server_->sendState(*device);
            server_->sendOrder();
        }
    });
}

void StandInPlasma::plug(Output output) {
    server_->run([&] {
        const bool isEnabled = output.isEnabled;
        server_->add(std::move(output));
        if (isEnabled) {
            server_->sendOrder();
        }
    });
}

void StandInPlasma::unplug(const std::string& name) {
    server_->run([&] { server_->remove(name); });
}

void StandInPlasma::dropClients() {
    server_->run([&] { server_->dropClients(); });
}

void StandInPlasma::dropClientsAndChange(const std::string& name,
                                         const std::function<void(Output&)>& change) {
    server_->run([&] {
        server_->dropClients();
        change(server_->find(name)->state);
    });
}

}  // namespace tavrel
