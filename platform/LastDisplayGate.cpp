#include "platform/LastDisplayGate.h"

#include <algorithm>

#include "platform/DisplayQueries.h"

namespace tavrel {

ServerStatus LastDisplayGate::setDisplayEnabled(DisplayID display, bool enabled) {
    if (enabled) {
        return inner_.setDisplayEnabled(display, true);
    }
    const std::lock_guard lock(mutex_);
    return isLast(display) ? serverStatus::cannotComplete
                           : inner_.setDisplayEnabled(display, false);
}

bool LastDisplayGate::isLast(DisplayID display) {
    const auto moment = queries_.now();
    const auto online = moment->onlineDisplays();
    return online.has_value() && std::none_of(online->begin(), online->end(), [&](DisplayID each) {
               return each != display && moment->isOnline(each) && moment->isActive(each);
           });
}

}  // namespace tavrel
