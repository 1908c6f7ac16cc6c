#include "ui/controls/WakeButton.h"

#include <QEvent>
#include <QPainter>
#include <algorithm>

#include "ui/paint/Drawing.h"
#include "ui/paint/Icons.h"
#include "ui/paint/Theme.h"

namespace tavrel {
namespace {

/// Any will do: whoever owns the button makes its face as wide as there is room.
constexpr int initialWidth = 4 * WakeButton::faceHeight;
constexpr int sidePadding = 15;
constexpr double cornerRadius = 10;
constexpr double edgeOpacity = 0.1;
constexpr double iconGap = 7;
constexpr double hintOpacity = 0.48;
constexpr theme::FontSpec labelFont{13.5, QFont::DemiBold, theme::FontDesign::rounded};
constexpr double signTracking = 2.5;
constexpr theme::FontSpec hintFont{11.5, QFont::DemiBold, theme::FontDesign::monospaced};

/// The signs of a Mac's keys fill their places and would touch; letters keep their distance.
theme::FontSpec hintFontFor(const QString& hint) {
    theme::FontSpec font = theme::specFor(hint, hintFont);
    const bool hasSigns =
        std::any_of(hint.begin(), hint.end(), [](QChar each) { return each.unicode() > 0x7F; });
    font.tracking = hasSigns ? signTracking : 0;
    return font;
}

}  // namespace

WakeButton::WakeButton(const QString& label, const QString& shortcutHint, QWidget* parent)
    : Control({initialWidth, faceHeight}, parent),
      labelFont_(labelFont),
      hint_(new Label(hintFont, theme::white(hintOpacity), this)) {
    setText(label);
    setShortcutHint(shortcutHint);
}

QPainterPath WakeButton::facePath(const QRectF& face) const {
    return continuousRoundedRect(face, cornerRadius);
}

void WakeButton::paintFace(QPainter& painter, const QRectF& face) const {
    fillFace(painter, face);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(theme::white(edgeOpacity), 1));
    painter.drawPath(facePath(face));

    constexpr double side = iconSide(labelFont.size);
    const QRectF icon(face.left() + sidePadding, face.center().y() - side / 2, side, side);
    paintIcon(painter, Icon::sunMaxFill, icon, theme::white());

    const double baseline = face.center().y() + (labelFont_.ascent() - labelFont_.descent()) / 2;
    painter.setPen(theme::white());
    labelFont_.draw(painter, {icon.right() + iconGap, baseline}, text());
}

void WakeButton::setShortcutHint(const QString& hint) {
    hint_->setFontSpec(hintFontFor(hint));
    hint_->setText(hint);
    placeHint();
}

void WakeButton::resizeEvent(QResizeEvent* event) {
    placeHint();
    Control::resizeEvent(event);
}

void WakeButton::placeHint() {
    const QRect place = face();
    // A desktop's words may be long; the label comes first.
    const QSize size = hint_->sizeHint().boundedTo({place.width() / 2, place.height()});
    // The last letter's own tracking shows nothing.
    const int overhang = qRound(hint_->fontSpec().tracking);
    hint_->setGeometry(place.right() + 1 - sidePadding - size.width() + overhang,
                       place.top() + (place.height() - size.height()) / 2, size.width(),
                       size.height());
}

void WakeButton::changeEvent(QEvent* event) {
    if (event->type() == QEvent::EnabledChange) {
        colorHint();
    }
    Control::changeEvent(event);
}

void WakeButton::setShortcutWorks(bool works, const QString& explanation) {
    shortcutWorks_ = works;
    setToolTip(explanation);
    colorHint();
}

void WakeButton::colorHint() {
    const bool isStrong = isEnabled() && shortcutWorks_;
    hint_->setColor(theme::white(hintOpacity * (isStrong ? 1 : theme::disabledOpacity)));
}

}  // namespace tavrel
