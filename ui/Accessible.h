#pragma once

namespace tavrel {

/// Tells assistive technology what our own widgets are: a switch is a check box that can
/// be pressed or toggled, a row a group that may be busy, a spinner an animation.
///
/// Constructing one installs that for the rest of the process; another one changes nothing.
/// What has been asked about a widget before stays as it was, so whoever owns such widgets
/// has this as a member declared before them.
struct AccessibleFactory {
    AccessibleFactory();
};

}  // namespace tavrel
