#pragma once

#include <cstdint>
#include <functional>
#include <map>

namespace tavrel {

/// A signal sent just before something observed changes. Main thread only.
///
/// When an observer is called, the old value still stands: it notes that a change is coming
/// and reads the new value later.
class ObjectWillChange {
public:
    /// Unsubscribes when destroyed. Must not outlive the signal.
    class Subscription {
    public:
        Subscription() = default;
        Subscription(ObjectWillChange& signal, std::uint64_t key) : signal_(&signal), key_(key) {}
        Subscription(Subscription&& other) noexcept;
        Subscription& operator=(Subscription&& other) noexcept;
        ~Subscription();

    private:
        void end();

        ObjectWillChange* signal_ = nullptr;
        std::uint64_t key_ = 0;
    };

    [[nodiscard]] Subscription subscribe(std::function<void()> observer);

    void send() const;

private:
    std::map<std::uint64_t, std::function<void()>> observers_;
    std::uint64_t nextKey_ = 1;
};

}  // namespace tavrel
