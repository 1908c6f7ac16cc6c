#include "app/OnlyCopy.h"

namespace tavrel {

namespace {

/// The system itself starts no second copy of an application, and calls the first to the front.
class MacOnlyCopy final : public OnlyCopy {
public:
    void serve(MainQueue& /*mainQueue*/, Handlers /*handlers*/) override {}
};

}  // namespace

std::unique_ptr<OnlyCopy> becomeOnlyCopy() {
    return std::make_unique<MacOnlyCopy>();
}

}  // namespace tavrel
