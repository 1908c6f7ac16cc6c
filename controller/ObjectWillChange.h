#pragma once

#include <cstdint>
#include <functional>
#include <map>

namespace tavrel {

/// A signal sent just before something observed changes. Main thread only.
///
/// An observer must not assume the new value is readable when it is called; it notes
/// that a change is coming and looks again later.
class ObjectWillChange {
public:
    /// Ends its registration when destroyed. Must not outlive the signal's owner.
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
