#pragma once

#include <QAbstractButton>
#include <QPainterPath>

namespace tavrel {

/// What our switch and our buttons have in common: Space and Enter press them, the mouse
/// hits exactly what is drawn, and a ring around them shows the keyboard's focus.
///
/// The widget is larger than its face, the part that is laid out and drawn, by the room
/// for that ring. A click takes the focus too, but shows no ring until a key is used.
class Control : public QAbstractButton {
    Q_OBJECT

public:
    static constexpr int ringMargin = 4;

    /// The visible part, in the widget's own coordinates.
    QRect face() const;
    /// Lays the control out so that its face is `face`, in the parent's coordinates.
    void setFace(const QRect& face);

    bool showsFocusRing() const { return showsFocusRing_; }
    /// Takes the focus, with a ring or without.
    void takeFocus(bool showingRing);

    QSize sizeHint() const final;

protected:
    Control(const QSize& faceSize, QWidget* parent);

    /// The outline of the face.
    virtual QPainterPath facePath(const QRectF& face) const = 0;

    bool isHovered() const { return isEnabled() && underMouse(); }
    void paintFocusRing(QPainter& painter) const;

    bool hitButton(const QPoint& position) const override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    void setShowsFocusRing(bool shows);

    QSize faceSize_;
    bool showsFocusRing_ = false;
};

}  // namespace tavrel
