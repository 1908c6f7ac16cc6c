#include "platform/gnome/GnomeProbe.h"

namespace tavrel::gnome {

bool answersLikeGnome(DisplayConfig& config) {
    const DisplayConfig::Reading reading = config.read();
    if (reading.reply != Reply::done) {
        return reading.reply == Reply::none;
    }
    // With nothing shown there is no layout to ask about.
    const auto configuration = configurationOf(*reading.state);
    if (!configuration.has_value() || configuration->logicalMonitors.empty()) {
        return true;
    }
    const Reply reply = config.apply(*configuration, DisplayConfig::Method::verify);
    return reply == Reply::done || reply == Reply::denied || reply == Reply::none;
}

bool answersLikeGnome(const GnomeOptions& options) {
    BusDisplayConfig config(options);
    return answersLikeGnome(config);
}

}  // namespace tavrel::gnome
