#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/HotKeys.h"

namespace tavrel {

/// Hot keys that a test presses. Must outlive its handles.
class SimulatedHotKeys : public HotKeys {
public:
    std::unique_ptr<Handle> installEventHandler(Task pressed) override {
        if (!acceptsHandler_) {
            return nullptr;
        }
        pressed_ = std::move(pressed);
        return std::make_unique<Claim>([this] { pressed_ = nullptr; });
    }

    std::unique_ptr<Handle> registerHotKey(const HotKeyRegistration& hotKey) override {
        requests_.push_back(hotKey);
        if (!acceptsHotKey_) {
            return nullptr;
        }
        isRegistered_ = true;
        return std::make_unique<Claim>([this] { isRegistered_ = false; });
    }

    bool isHeld() const override { return isRegistered_ && !isTaken_; }

    std::unique_ptr<Handle> observeHeld(Task changed) override {
        heldChanged_ = std::move(changed);
        return std::make_unique<Claim>([this] { heldChanged_ = nullptr; });
    }

    std::string boundTo() const override { return boundTo_; }
    bool desktopDecides() const override { return desktopDecides_; }

    /// From now on it is a desktop that gives the chord, or these keys in its place.
    void bindInstead(std::string keys) {
        desktopDecides_ = true;
        boundTo_ = std::move(keys);
        setTaken(boundTo_.empty());
    }

    /// Another program takes the chord, or lets it go.
    void setTaken(bool isTaken) {
        isTaken_ = isTaken;
        if (heldChanged_ != nullptr) {
            heldChanged_();
        }
    }

    /// One press of the registered chord. Does nothing unless the chord is held and a handler
    /// there.
    void press() {
        if (isHeld() && pressed_ != nullptr) {
            pressed_();
        }
    }

    void setAcceptsHandler(bool accepts) { acceptsHandler_ = accepts; }
    void setAcceptsHotKey(bool accepts) { acceptsHotKey_ = accepts; }

    bool isRegistered() const { return isRegistered_; }
    bool hasHandler() const { return pressed_ != nullptr; }
    const std::vector<HotKeyRegistration>& requests() const { return requests_; }

private:
    class Claim : public Handle {
    public:
        explicit Claim(Task release) : release_(std::move(release)) {}
        ~Claim() override { release_(); }
        Claim(const Claim&) = delete;
        Claim& operator=(const Claim&) = delete;

    private:
        Task release_;
    };

    Task pressed_;
    Task heldChanged_;
    bool acceptsHandler_ = true;
    bool acceptsHotKey_ = true;
    bool isRegistered_ = false;
    bool isTaken_ = false;
    std::string boundTo_;
    bool desktopDecides_ = false;
    std::vector<HotKeyRegistration> requests_;
};

}  // namespace tavrel
