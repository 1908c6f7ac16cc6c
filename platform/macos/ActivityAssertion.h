#pragma once

#include <string_view>

namespace tavrel {

/// Tells the system, for as long as it exists, that this application has work to do, so
/// that its timers are not stretched while it is in the background. The machine may still
/// go to sleep when nobody uses it.
///
/// Main thread only.
class ActivityAssertion {
public:
    /// `reason` is UTF-8 text that the system shows to those who look for what is running.
    explicit ActivityAssertion(std::string_view reason);
    ~ActivityAssertion();
    ActivityAssertion(const ActivityAssertion&) = delete;
    ActivityAssertion& operator=(const ActivityAssertion&) = delete;

    /// False where the system knows no such thing; nothing else is different then.
    bool isHeld() const { return activity_ != nullptr; }

private:
    void* processInfo_ = nullptr;
    /// The system's token, shared in by this object.
    void* activity_ = nullptr;
};

}  // namespace tavrel
