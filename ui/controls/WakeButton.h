#pragma once

#include "ui/controls/Control.h"
#include "ui/controls/Label.h"
#include "ui/paint/DesignFont.h"

namespace tavrel {

/// The wide button of the footer.
class WakeButton : public Control {
    Q_OBJECT

public:
    /// Shows `label`, and at the right end the hot key that does the same.
    WakeButton(const QString& label, const QString& shortcutHint, QWidget* parent);

    static constexpr int faceHeight = 42;

    /// Names the hot key that does the same; cut where there is no room.
    void setShortcutHint(const QString& hint);

    /// A hot key that does not work is dimmed, and `explanation`, empty for one that works, is
    /// the button's tooltip.
    void setShortcutWorks(bool works, const QString& explanation);

protected:
    QPainterPath facePath(const QRectF& face) const override;
    void paintFace(QPainter& painter, const QRectF& face) const override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void placeHint();
    void colorHint();

    DesignFont labelFont_;
    Label* hint_;
    bool shortcutWorks_ = true;
};

}  // namespace tavrel
