#pragma once

#include <utility>

#include "platform/gnome/DisplayConfig.h"
#include "platform/layout/WholeLayoutServer.h"

namespace tavrel::gnome {

/// GNOME's compositor as one that takes whole layouts. Every layout is applied twice: the
/// compositor keeps the one before, and goes back to that when a lid is opened or a monitor
/// plugged in; after the second time both are the same.
class GnomeLayoutServer final : public layout::WholeLayoutServer {
public:
    /// `config` must outlive it. The monitors `known` say which display each of its monitors is.
    explicit GnomeLayoutServer(DisplayConfig& config, layout::KnownMonitors known = {})
        : config_(config), known_(std::move(known)) {}

    Reading read() override;
    Outcome apply(const layout::WholeLayout& wanted) override;

private:
    Reply look();
    void makeItStay(const layout::Layout& before, const layout::WholeLayout& wanted);

    DisplayConfig& config_;
    const layout::KnownMonitors known_;
    /// Read last.
    MonitorState state_;
};

}  // namespace tavrel::gnome
