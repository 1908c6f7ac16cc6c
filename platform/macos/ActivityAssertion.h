#pragma once

#include <string_view>

namespace tavrel {

/// Tells the system, for as long as it exists, that this application has work to do, so
/// that its timers are not stretched while it is in the background. The machine may still
/// go to sleep when nobody uses it. Does nothing where the system knows no such thing.
///
/// Main thread only.
class ActivityAssertion {
public:
    /// `reason` is UTF-8 text that the system shows to those who look for what is running.
    explicit ActivityAssertion(std::string_view reason);
    ~ActivityAssertion();
    ActivityAssertion(const ActivityAssertion&) = delete;
    ActivityAssertion& operator=(const ActivityAssertion&) = delete;

private:
    void* processInfo_ = nullptr;
    /// The system's token, retained; null where it gave none.
    void* activity_ = nullptr;
};

}  // namespace tavrel
