#pragma once

#include <QRect>
#include <QString>
#include <optional>
#include <string>

#include "platform/Words.h"
#include "ui/controls/Control.h"
#include "ui/controls/Label.h"
#include "ui/controls/WakeButton.h"

namespace tavrel {

/// How the hot key fares that does what the wake button does.
struct WakeShortcut {
    bool works = true;
    /// What it is instead of the usual one, in the desktop's words; empty for that one.
    QString keys = {};
    /// Whether the desktop decides which keys an application gets.
    bool desktopDecides = false;
};

/// The status line, or in its place the error line, above the wake button. `view`
/// owns the widgets.
class Footer {
public:
    Footer(QWidget& view, const Words& words);

    WakeButton* wakeButton() const { return wake_; }

    /// An error that is present hides the status, even when its text is empty.
    void update(const std::string& statusMessage, const std::optional<std::string>& errorMessage,
                bool isRefreshing, bool canWake, ParkedFocus& focus);

    void setWakeShortcut(const WakeShortcut& shortcut);

    int heightForWidth(int width) const;
    /// Fills the bottom of `column`.
    void layOut(const QRect& column);

private:
    void showDot(bool isRefreshing);
    void showError(const std::optional<std::string>& errorMessage);
    bool hasError() const { return !error_->isHidden(); }

    Label* status_;
    Label* error_;
    WakeButton* wake_;
    const QString shortcut_;
    std::optional<bool> dotIsRefreshing_;
};

}  // namespace tavrel
