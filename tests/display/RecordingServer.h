#pragma once

#include <algorithm>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "platform/DisplayLifecycle.h"
#include "platform/DisplayQueries.h"

namespace tavrel {

/// A window server that answers what it was told, even nonsense, and writes down every
/// question as it was asked.
class RecordingServer : public DisplayLifecycle, public DisplayQueries {
public:
    /// One answer about a list: what is written, and how many entries are claimed.
    struct ListAnswer {
        ServerStatus status = serverStatus::success;
        std::vector<DisplayID> displays;
        std::uint32_t count = 0;
    };

    struct Facts {
        bool builtIn = false;
        bool online = false;
        std::uint32_t vendor = 0;
        std::uint32_t model = 0;
        std::uint32_t serial = 0;
        bool active = false;
    };

    static ListAnswer list(const std::vector<DisplayID>& displays) {
        return {.displays = displays, .count = static_cast<std::uint32_t>(displays.size())};
    }
    static ListAnswer count(std::uint32_t count) { return {.displays = {}, .count = count}; }
    static ListAnswer failure(ServerStatus status) {
        return {.status = status, .displays = {}, .count = 0};
    }

    ListAnswer privateList = failure(serverStatus::notImplemented);
    /// The answer to the question how many there are, and that to the second question.
    ListAnswer publicCount;
    ListAnswer publicList;
    std::map<DisplayID, Facts> facts;

    std::vector<std::string> takeCalls() { return std::exchange(calls_, {}); }

    bool canControlDisplays() override { return record("canControl", true); }

    ServerStatus getDisplayList(std::uint32_t maxCount, DisplayID* displays,
                                std::uint32_t* count) override {
        return answer("private", privateList, maxCount, displays, count);
    }

    ServerStatus setDisplayEnabled(DisplayID /*display*/, bool /*enabled*/) override {
        return record("set", serverStatus::success);
    }

    ServerStatus getOnlineDisplayList(std::uint32_t maxCount, DisplayID* displays,
                                      std::uint32_t* count) override {
        const bool isFirst = std::exchange(isFirstPublicCall_, false);
        return answer("public", isFirst ? publicCount : publicList, maxCount, displays, count);
    }

    bool isBuiltIn(DisplayID display) override {
        return record(asked("builtIn", display), facts[display].builtIn);
    }
    bool isOnline(DisplayID display) override {
        return record(asked("online", display), facts[display].online);
    }
    bool isActive(DisplayID display) override {
        return record(asked("active", display), facts[display].active);
    }
    std::uint32_t vendorNumber(DisplayID display) override {
        return record(asked("vendor", display), facts[display].vendor);
    }
    std::uint32_t modelNumber(DisplayID display) override {
        return record(asked("model", display), facts[display].model);
    }
    std::uint32_t serialNumber(DisplayID display) override {
        return record(asked("serial", display), facts[display].serial);
    }

private:
    static std::string asked(const std::string& question, DisplayID display) {
        return question + " " + std::to_string(display);
    }

    template <class Answer>
    Answer record(const std::string& call, Answer answer) {
        calls_.push_back(call);
        return answer;
    }

    /// Never writes beyond the room it is given, whatever it claims.
    ServerStatus answer(const std::string& list, const ListAnswer& answer, std::uint32_t maxCount,
                        DisplayID* displays, std::uint32_t* count) {
        const bool isZeroed = std::all_of(displays, displays + (displays == nullptr ? 0 : maxCount),
                                          [](DisplayID display) { return display == 0; });
        calls_.push_back(list + " list: room " + std::to_string(maxCount) +
                         (isZeroed ? "" : " not zeroed") + ", count " + std::to_string(*count));
        const std::size_t written = std::min<std::size_t>(answer.displays.size(), maxCount);
        std::copy_n(answer.displays.begin(), displays == nullptr ? 0 : written, displays);
        if (answer.status == serverStatus::success) {
            *count = answer.count;
        }
        return answer.status;
    }

    bool isFirstPublicCall_ = true;
    std::vector<std::string> calls_;
};

}  // namespace tavrel
