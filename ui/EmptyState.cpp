#include "ui/EmptyState.h"

#include <QPainter>
#include <algorithm>

#include "ui/paint/Icons.h"
#include "ui/paint/Theme.h"

namespace tavrel {
namespace {

constexpr int iconSpacing = 12;
constexpr double warningIconFontSize = 30;
constexpr double iconOpacity = 0.55;
constexpr theme::FontSpec messageFont{14, QFont::Medium};
constexpr double messageOpacity = 0.72;
/// As many as fit easily; the controller's texts need one.
constexpr int maximumMessageLines = 6;

}  // namespace

EmptyState::EmptyState(QWidget* parent)
    : QWidget(parent),
      spinner_(new Spinner(this)),
      message_(new Label(messageFont, theme::white(messageOpacity), this)) {
    message_->setAlignment(Qt::AlignCenter);
    message_->setMaximumLines(maximumMessageLines);
    spinner_->hide();
}

void EmptyState::setContents(bool isRefreshing, const QString& statusMessage) {
    if (isRefreshing != isRefreshing_) {
        isRefreshing_ = isRefreshing;
        update();
    }
    spinner_->setVisible(isRefreshing);
    message_->setText(statusMessage);
    layOut();
}

void EmptyState::layOut() {
    constexpr double iconHeight = iconSide(warningIconFontSize);
    const double symbolHeight = isRefreshing_ ? Spinner::side : iconHeight;
    const int messageWidth = std::min(width(), message_->sizeHint().width());
    const int messageHeight = message_->heightForWidth(messageWidth);
    const double top = (height() - symbolHeight - iconSpacing - messageHeight) / 2;

    spinner_->move((width() - Spinner::side) / 2, qRound(top));
    icon_ = {(width() - iconHeight) / 2, top, iconHeight, iconHeight};
    message_->setGeometry((width() - messageWidth) / 2, qRound(top + symbolHeight) + iconSpacing,
                          messageWidth, messageHeight);
}

void EmptyState::resizeEvent(QResizeEvent* event) {
    layOut();
    QWidget::resizeEvent(event);
}

void EmptyState::paintEvent(QPaintEvent*) {
    if (!isRefreshing_) {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        paintIcon(painter, Icon::displayWithWarning, icon_, theme::white(iconOpacity));
    }
}

}  // namespace tavrel
