#pragma once

#include <QPointer>
#include <QWidget>

#include "ui/controls/Control.h"

namespace tavrel {

/// Keeps the keyboard's focus where it was while a control cannot have it.
///
/// Left to itself, the focus of a control that is hidden or disabled moves on to the next
/// one, where the next press of a key would do something nobody asked for. The keeper
/// parks it on a place that does nothing, and gives it back unless the user has moved it
/// elsewhere in the meantime.
class FocusKeeper {
public:
    /// `place` owns the keeper, and is an ancestor of the controls.
    explicit FocusKeeper(QWidget& place) : place_(place) {}

    /// To be called before `control` is hidden, disabled or destroyed.
    void park(Control& control);
    /// To be called when `control` can be used again.
    void giveBack(Control& control);

private:
    QWidget& place_;
    QPointer<Control> owner_;
    bool showedRing_ = false;
};

/// Enables or disables `control`, with its focus kept.
void setEnabledKeepingFocus(Control& control, bool isEnabled, FocusKeeper& focus);

}  // namespace tavrel
