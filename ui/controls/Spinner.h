#pragma once

#include <QBasicTimer>
#include <QWidget>

namespace tavrel {

/// A small indeterminate spinner. It turns only while it is visible.
class Spinner : public QWidget {
    Q_OBJECT

public:
    explicit Spinner(QWidget* parent);

    static constexpr int side = 16;

    bool isSpinning() const { return timer_.isActive(); }

    QSize sizeHint() const final { return {side, side}; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

private:
    QBasicTimer timer_;
    int step_ = 0;
};

}  // namespace tavrel
