#pragma once

#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/DisplayQueries.h"
#include "platform/DisplaySwitch.h"
#include "platform/MainQueue.h"

namespace tavrel {

/// What the window server was asked, in order.
class CallLog {
public:
    explicit CallLog(const MainQueue& mainQueue) : mainQueue_(mainQueue) {}

    void note(const std::string& call) {
        calls_.push_back(call);
        if (mainQueue_.isCurrent()) {
            onMainThread_.push_back(call);
        }
    }

    /// Every call since `clear`.
    const std::vector<std::string>& calls() const { return calls_; }
    /// Those of them that came from the main thread.
    const std::vector<std::string>& onMainThread() const { return onMainThread_; }

    void clear() {
        calls_.clear();
        onMainThread_.clear();
    }

private:
    const MainQueue& mainQueue_;
    std::vector<std::string> calls_;
    std::vector<std::string> onMainThread_;
};

/// Notes "can switch", "5 on" and "5 off".
class LoggedSwitch : public DisplaySwitch {
public:
    /// Both must outlive it.
    LoggedSwitch(DisplaySwitch& inner, CallLog& log) : inner_(inner), log_(log) {}

    bool canSwitch() override {
        log_.note("can switch");
        return inner_.canSwitch();
    }
    ServerStatus setDisplayEnabled(DisplayID display, bool enabled) override {
        log_.note(std::to_string(display) + (enabled ? " on" : " off"));
        return inner_.setDisplayEnabled(display, enabled);
    }

private:
    DisplaySwitch& inner_;
    CallLog& log_;
};

/// Notes "moment", "online 5" and "active 5", and can lie about what is online.
class LoggedQueries : public DisplayQueries {
public:
    /// Both must outlive it.
    LoggedQueries(DisplayQueries& inner, CallLog& log) : inner_(inner), log_(log) {}

    /// From now on `display` is not online, and as active as it was.
    void sayOffline(DisplayID display) { offline_.insert(display); }

    std::unique_ptr<DisplayMoment> now() override {
        log_.note("moment");
        return std::make_unique<Moment>(*this, inner_.now());
    }
    std::unique_ptr<DisplayMoment> nowAfterProbing() override {
        log_.note("moment");
        return std::make_unique<Moment>(*this, inner_.nowAfterProbing());
    }

private:
    class Moment : public ForwardingMoment {
    public:
        Moment(LoggedQueries& queries, std::unique_ptr<DisplayMoment> inner)
            : ForwardingMoment(std::move(inner)), queries_(queries) {}

        bool isOnline(DisplayID display) override {
            queries_.log_.note("online " + std::to_string(display));
            return !queries_.offline_.contains(display) && ForwardingMoment::isOnline(display);
        }
        bool isActive(DisplayID display) override {
            queries_.log_.note("active " + std::to_string(display));
            return ForwardingMoment::isActive(display);
        }

    private:
        LoggedQueries& queries_;
    };

    DisplayQueries& inner_;
    CallLog& log_;
    std::set<DisplayID> offline_;
};

}  // namespace tavrel
