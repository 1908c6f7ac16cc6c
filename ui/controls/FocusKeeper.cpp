#include "ui/controls/FocusKeeper.h"

namespace tavrel {

void FocusKeeper::park(Control& control) {
    if (control.window()->focusWidget() == &control) {
        owner_ = &control;
        showedRing_ = control.showsFocusRing();
        place_.setFocus(Qt::OtherFocusReason);
    }
}

void FocusKeeper::giveBack(Control& control) {
    if (owner_ != &control) {
        return;
    }
    owner_.clear();
    if (place_.window()->focusWidget() == &place_) {
        control.takeFocus(showedRing_);
    }
}

void setEnabledKeepingFocus(Control& control, bool isEnabled, FocusKeeper& focus) {
    if (isEnabled == control.isEnabled()) {
        return;
    }
    if (!isEnabled) {
        focus.park(control);
    }
    control.setEnabled(isEnabled);
    if (isEnabled) {
        focus.giveBack(control);
    }
}

}  // namespace tavrel
