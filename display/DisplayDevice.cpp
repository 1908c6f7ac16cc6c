#include "display/DisplayDevice.h"

#include <utility>

namespace tavrel {

DisplayDevice::DisplayDevice(DisplayID displayID, std::string name, Kind kind, bool initiallyOn)
    : isOn(initiallyOn),
      id_(std::to_string(displayID)),
      displayID_(displayID),
      name_(std::move(name)),
      kind_(kind) {}

}  // namespace tavrel
