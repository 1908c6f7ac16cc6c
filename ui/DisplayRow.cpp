#include "ui/DisplayRow.h"

#include <QAccessible>
#include <QPainter>
#include <QTextDocument>
#include <algorithm>
#include <utility>

#include "ui/Texts.h"
#include "ui/paint/Drawing.h"
#include "ui/paint/Icons.h"
#include "ui/paint/Theme.h"

namespace tavrel {
namespace {

constexpr int rowSpacing = 15;
constexpr int horizontalPadding = 16;
constexpr double rowOpacity = 0.06;
constexpr double rowRadius = 14;
constexpr double strokeOpacity = 0.09;

constexpr int boxSide = 48;
constexpr double boxRadius = 12;
constexpr double boxOnOpacity = 0.55;
constexpr double boxOffOpacity = 0.055;
constexpr double displayIconFontSize = 22;
constexpr double iconOffOpacity = 0.35;

constexpr int textSpacing = 4;
constexpr theme::FontSpec nameFont{15, QFont::DemiBold, theme::FontDesign::rounded};
constexpr theme::FontSpec explanationFont{11.5, QFont::Normal};
constexpr double explanationOpacity = 0.46;

constexpr int spinnerBoxWidth = 38;
constexpr int switchSpacing = 3;
constexpr theme::FontSpec lockFont{9.5, QFont::Medium};
constexpr double lockOpacity = 0.38;
constexpr double lockIconSpacing = 2;

QString displayName(const DisplayDevice& display) {
    return QString::fromStdString(display.name());
}

/// As it is to be read: Qt takes what looks like markup for that, and monitors say what they like.
QString plainToolTip(const QString& text) {
    return Qt::mightBeRichText(text) ? text.toHtmlEscaped() : text;
}

/// Qt announces a name each time it is set, even if it is the same.
void setName(QWidget& widget, const QString& name) {
    if (widget.accessibleName() != name) {
        widget.setAccessibleName(name);
    }
}

void setDescription(QWidget& widget, const QString& description) {
    if (widget.accessibleDescription() != description) {
        widget.setAccessibleDescription(description);
    }
}

bool isBuiltIn(const DisplayDevice& display) {
    return display.kind() == DisplayDevice::Kind::builtIn;
}

}  // namespace

DisplayRow::DisplayRow(Inputs inputs, QWidget* parent)
    : QWidget(parent),
      inputs_(std::move(inputs)),
      name_(new Label(nameFont, theme::white(), this)),
      explanation_(new Label(explanationFont, theme::white(explanationOpacity), this)),
      switch_(new Switch(this)),
      lock_(new Label(lockFont, theme::white(lockOpacity), this)),
      spinner_(new Spinner(this)) {
    setFixedHeight(fixedHeight);
    constexpr double lockSide = iconSide(lockFont.size);
    lock_->setPrefix({lockSide, lockSide}, lockIconSpacing,
                     [](QPainter& painter, const QRectF& place) {
                         paintIcon(painter, Icon::lockFill, place, theme::white(lockOpacity));
                     });
    connect(switch_, &Switch::flipped, this, [this](bool wantsOn) { inputs_.onChange(wantsOn); });
    showInputs();
}

void DisplayRow::setInputs(Inputs inputs) {
    const bool wasOn = inputs_.display.isOn;
    const bool wasBusy = inputs_.display.isBusy;
    const auto kind = inputs_.display.kind();
    inputs_ = std::move(inputs);
    showInputs();
    if (wasOn != inputs_.display.isOn || kind != inputs_.display.kind()) {
        update();
    }
    if (wasBusy != inputs_.display.isBusy) {
        QAccessible::State changed;
        changed.busy = true;
        QAccessibleStateChangeEvent event(this, changed);
        QAccessible::updateAccessibility(&event);
    }
}

void DisplayRow::showInputs() {
    const QString name = displayName(inputs_.display);
    const DisplayHardware& hardware = inputs_.display.hardware;
    const QString which = texts::hardware(QString::fromStdString(hardware.monitor),
                                          QString::fromStdString(hardware.connector));
    setName(*this, name);
    setDescription(*this, which);
    setToolTip(plainToolTip(which));
    name_->setText(name);
    explanation_->setText(
        (isBuiltIn(inputs_.display) ? texts::builtInExplanation : texts::externalExplanation)
            .toString());
    showSwitchOrSpinner();
    layOut();
}

void DisplayRow::showSwitchOrSpinner() {
    const DisplayDevice& display = inputs_.display;
    const QString name = displayName(display);
    const bool isUsable = inputs_.isEnabled && !display.isBusy;
    if (!isUsable) {
        focus_.park(*switch_);
    }
    switch_->setOn(display.isOn);
    switch_->setText((display.isOn ? texts::switchOn : texts::switchOff).toString());
    setName(*switch_, texts::powerName(name));
    switch_->setToolTip(inputs_.isEnabled ? texts::enableOrDisable(name) : inputs_.disabledReason);
    switch_->setEnabled(inputs_.isEnabled);
    switch_->setVisible(!display.isBusy);
    lock_->setText(inputs_.disabledLabel);
    lock_->setVisible(!display.isBusy && !inputs_.isEnabled);
    spinner_->setVisible(display.isBusy);
    if (isUsable) {
        focus_.restore(*switch_);
    }
}

void DisplayRow::layOut() {
    const int right = width() - horizontalPadding;
    int controlWidth = spinnerBoxWidth;
    if (inputs_.display.isBusy) {
        spinner_->move(right - (spinnerBoxWidth + Spinner::side) / 2,
                       (fixedHeight - Spinner::side) / 2);
    } else {
        const QSize lockSize = inputs_.isEnabled ? QSize() : lock_->sizeHint();
        const int lockHeight = inputs_.isEnabled ? 0 : switchSpacing + lockSize.height();
        const int top = (fixedHeight - Switch::faceSize.height() - lockHeight + 1) / 2;
        switch_->setFace({{right - Switch::faceSize.width(), top}, Switch::faceSize});
        lock_->setGeometry(
            {{right - lockSize.width(), top + Switch::faceSize.height() + switchSpacing},
             lockSize});
        controlWidth = std::max(Switch::faceSize.width(), lockSize.width());
    }

    const int textLeft = horizontalPadding + boxSide + rowSpacing;
    // Between a name and the control there is the flexible space, with its spacing on either
    // side. Either explanation just fits beside a lock.
    const int textWidth = std::max(0, right - controlWidth - rowSpacing - textLeft);
    const int nameWidth = std::max(0, textWidth - rowSpacing);
    const int nameHeight = name_->lineHeight();
    const int explanationHeight = explanation_->lineHeight();
    const int top = (fixedHeight - nameHeight - textSpacing - explanationHeight) / 2;
    name_->setGeometry(textLeft, top, nameWidth, nameHeight);
    explanation_->setGeometry(textLeft, top + nameHeight + textSpacing, textWidth,
                              explanationHeight);
}

void DisplayRow::resizeEvent(QResizeEvent* event) {
    layOut();
    QWidget::resizeEvent(event);
}

void DisplayRow::paintOutline(QPainter& painter, const QRect& row) {
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(theme::white(strokeOpacity), 1));
    painter.drawPath(continuousRoundedRect(row, rowRadius));
}

void DisplayRow::paintEvent(QPaintEvent*) {
    const bool isOn = inputs_.display.isOn;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(theme::white(rowOpacity));
    painter.drawPath(continuousRoundedRect(rect(), rowRadius));

    const QRectF box(horizontalPadding, (fixedHeight - boxSide) / 2.0, boxSide, boxSide);
    painter.setBrush(isOn ? theme::withAlpha(theme::indigo, boxOnOpacity)
                          : theme::white(boxOffOpacity));
    painter.drawPath(continuousRoundedRect(box, boxRadius));

    constexpr double side = iconSide(displayIconFontSize);
    QRectF icon(0, 0, side, side);
    icon.moveCenter(box.center());
    paintIcon(painter, isBuiltIn(inputs_.display) ? Icon::laptopComputer : Icon::display, icon,
              theme::white(isOn ? 1 : iconOffOpacity));
}

}  // namespace tavrel
