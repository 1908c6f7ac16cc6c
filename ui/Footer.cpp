#include "ui/Footer.h"

#include <QAccessible>
#include <QPainter>
#include <algorithm>

#include "ui/Texts.h"
#include "ui/paint/Theme.h"

namespace tavrel {
namespace {

constexpr int lineSpacing = 10;
constexpr theme::FontSpec lineFont{11.5, QFont::Medium};
constexpr double statusOpacity = 0.5;
constexpr double errorOpacity = 0.86;
constexpr int maximumErrorLines = 2;
constexpr double dotDiameter = 7;
constexpr double dotSpacing = 7;

}  // namespace

Footer::Footer(QWidget& view, const Words& words)
    : status_(new Label(lineFont, theme::white(statusOpacity), &view)),
      error_(new Label(lineFont, theme::withAlpha(theme::red, errorOpacity), &view)),
      wake_(new WakeButton(texts::wakeBothDisplays.toString(),
                           QString::fromStdString(words.wakeChordInShort), &view)),
      shortcut_(QString::fromStdString(words.wakeChordInShort)) {
    error_->setMaximumLines(maximumErrorLines);
    error_->setAlignment(Qt::AlignCenter);
    error_->hide();
    showDot(false);
}

void Footer::update(const std::string& statusMessage,
                    const std::optional<std::string>& errorMessage, bool isRefreshing, bool canWake,
                    ParkedFocus& focus) {
    showDot(isRefreshing);
    status_->setText(QString::fromStdString(statusMessage));
    showError(errorMessage);
    focus.setEnabled(*wake_, canWake);
}

void Footer::setWakeShortcut(const WakeShortcut& shortcut) {
    wake_->setShortcutHint(shortcut.keys.isEmpty() ? shortcut_ : shortcut.keys);
    const QString trouble = shortcut.desktopDecides ? texts::wakeShortcutNotGiven.toString()
                                                    : texts::wakeShortcutNotHeld(shortcut_);
    wake_->setShortcutWorks(shortcut.works, shortcut.works ? QString() : trouble);
}

void Footer::showDot(bool isRefreshing) {
    if (dotIsRefreshing_ == isRefreshing) {
        return;
    }
    dotIsRefreshing_ = isRefreshing;
    const QColor color = isRefreshing ? theme::orange : theme::green;
    status_->setPrefix({dotDiameter, dotDiameter}, dotSpacing,
                       [color](QPainter& painter, const QRectF& place) {
                           painter.save();
                           painter.setPen(Qt::NoPen);
                           painter.setBrush(color);
                           painter.drawEllipse(place);
                           painter.restore();
                       });
}

void Footer::showError(const std::optional<std::string>& errorMessage) {
    const QString text = QString::fromStdString(errorMessage.value_or(std::string()));
    const bool isNew = errorMessage.has_value() && (!hasError() || error_->text() != text);
    error_->setText(text);
    error_->setVisible(errorMessage.has_value());
    status_->setVisible(!errorMessage.has_value());
    if (isNew) {
        QAccessibleEvent event(error_, QAccessible::Alert);
        QAccessible::updateAccessibility(&event);
    }
}

int Footer::heightForWidth(int width) const {
    const int line = hasError() ? error_->heightForWidth(width) : status_->lineHeight();
    return line + lineSpacing + WakeButton::faceHeight;
}

void Footer::layOut(const QRect& column) {
    const int top = column.bottom() + 1 - heightForWidth(column.width());
    const int wakeTop = column.bottom() + 1 - WakeButton::faceHeight;
    wake_->setFace({column.left(), wakeTop, column.width(), WakeButton::faceHeight});
    error_->setGeometry(column.left(), top, column.width(), wakeTop - lineSpacing - top);

    const int statusWidth = std::min(column.width(), status_->sizeHint().width());
    status_->setGeometry(column.left() + (column.width() - statusWidth) / 2, top, statusWidth,
                         status_->lineHeight());
}

}  // namespace tavrel
