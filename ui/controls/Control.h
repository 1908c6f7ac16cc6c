#pragma once

#include <QAbstractButton>
#include <QPainterPath>
#include <QPointer>

namespace tavrel {

/// The base of our switch and buttons: Space and Enter press them, the mouse hits exactly
/// what is drawn, and a ring around them shows the keyboard focus.
///
/// The widget is larger than its face, the part that is laid out and drawn, by the room
/// for that ring. A click takes the focus too, but shows no ring until a key is used. A
/// disabled face is drawn at half strength as a whole; a pressed one looks no different.
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

Q_SIGNALS:
    /// The user presses it. The toolkit paints a click before it signals `clicked`; this comes
    /// before that, so that what is asked for doesn't wait for the painting.
    void activated();

protected:
    Control(const QSize& faceSize, QWidget* parent);

    /// Leaves the state as it is: only the model changes it.
    void nextCheckState() final { Q_EMIT activated(); }

    /// The outline of the face.
    virtual QPainterPath facePath(const QRectF& face) const = 0;
    /// Draws the face, as it looks when enabled, on `face`.
    virtual void paintFace(QPainter& painter, const QRectF& face) const = 0;

    bool isHovered() const { return isEnabled() && underMouse(); }
    /// Fills the face as that of a button without a bezel: faintly white, and a little
    /// stronger under the pointer.
    void fillFace(QPainter& painter, const QRectF& face) const;

    bool hitButton(const QPoint& position) const override;
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    void paintFocusRing(QPainter& painter) const;
    void setShowsFocusRing(bool shows);

    QSize faceSize_;
    bool showsFocusRing_ = false;
};

/// The keyboard focus of a control while that is hidden or disabled.
///
/// Qt would move the focus on to the next control, where the next key press does something
/// the user did not ask for. Here it is parked on a widget that ignores keys instead, and
/// restored unless the user has moved it elsewhere in the meantime.
class ParkedFocus {
public:
    /// `place` has the focus meanwhile. It owns this and is an ancestor of the controls.
    explicit ParkedFocus(QWidget& place) : place_(place) {}

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
