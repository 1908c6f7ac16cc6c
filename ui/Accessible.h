#pragma once

namespace tavrel {

/// Teaches assistive technology what our own widgets are: a switch is a check box that
/// can be pressed or toggled, a row a group that may be busy, a spinner an animation.
///
/// To be called before the first of them is asked for; calling it again changes nothing.
void installAccessibleFactory();

}  // namespace tavrel
