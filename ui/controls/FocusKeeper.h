#pragma once

#include <QPointer>
#include <QWidget>

#include "ui/controls/Control.h"

namespace tavrel {

/// Holds the keyboard focus of a control while it is hidden or disabled.
///
/// Qt would move the focus on to the next control, where the next key press does something
/// the user did not ask for. The keeper parks it on a widget that ignores keys instead, and
/// restores it unless the user has moved it elsewhere in the meantime.
class FocusKeeper {
public:
    /// `place` gets the parked focus. It owns the keeper and is an ancestor of the controls.
    explicit FocusKeeper(QWidget& place) : place_(place) {}

    /// To be called before `control` is hidden, disabled or destroyed.
    void park(Control& control);
    /// To be called when `control` can be used again.
    void restore(Control& control);

    /// Enables or disables `control`, with its focus parked and restored.
    void setEnabled(Control& control, bool isEnabled);

private:
    QWidget& place_;
    QPointer<Control> owner_;
    bool showedRing_ = false;
};

}  // namespace tavrel
