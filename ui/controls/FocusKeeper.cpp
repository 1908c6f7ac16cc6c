#include "ui/controls/FocusKeeper.h"

namespace tavrel {

void FocusKeeper::park(Control& control) {
    if (control.window()->focusWidget() == &control) {
        owner_ = &control;
        showedRing_ = control.showsFocusRing();
        place_.setFocus(Qt::OtherFocusReason);
    }
}

void FocusKeeper::restore(Control& control) {
    if (owner_ != &control) {
        return;
    }
    owner_.clear();
    if (place_.window()->focusWidget() == &place_) {
        control.takeFocus(showedRing_);
    }
}

void FocusKeeper::setEnabled(Control& control, bool isEnabled) {
    if (isEnabled == control.isEnabled()) {
        return;
    }
    if (!isEnabled) {
        park(control);
    }
    control.setEnabled(isEnabled);
    if (isEnabled) {
        restore(control);
    }
}

}  // namespace tavrel
