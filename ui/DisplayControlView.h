#pragma once

#include <QTimer>
#include <QWidget>
#include <memory>
#include <optional>
#include <utility>

#include "controller/DisplayController.h"
#include "ui/Accessible.h"
#include "ui/EmptyState.h"
#include "ui/Footer.h"
#include "ui/Header.h"
#include "ui/RowList.h"
#include "ui/controls/Control.h"
#include "ui/paint/Backdrop.h"

namespace tavrel {

/// The whole content of the window.
///
/// It has no state of its own: it shows the controller's and what it is told of the hot key,
/// and each action of the user is one call of the controller. It is built, and rebuilt, once in a
/// turn of the main loop, however many fields have changed, or when it is shown.
class DisplayControlView : public QWidget {
    Q_OBJECT

public:
    static constexpr QSize contentSize{520, 486};
    static constexpr int padding = 28;

    /// Shares the ownership of `controller`. Main thread only, like all widgets.
    explicit DisplayControlView(std::shared_ptr<DisplayController> controller,
                                QWidget* parent = nullptr);

    /// Takes one that has a picture ready. Without, it is computed when it is painted.
    void setBackdrop(Backdrop backdrop) { backdrop_ = std::move(backdrop); }

    /// Says how the hot key fares, which is shown beside the wake button. It is taken to work
    /// until this is called.
    void setWakeShortcut(const WakeShortcut& shortcut) { footer_.setWakeShortcut(shortcut); }

    QSize sizeHint() const override { return contentSize; }

    /// What stays free for menus at its top, `theme::menuBarHeight` high. It changes with what is
    /// shown.
    QRect menuStrip() const;

Q_SIGNALS:
    /// The widgets have been given the controller's state and their places, and are painted next.
    void rebuilt();

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void rebuild();
    std::vector<DisplayRow::Inputs> rowInputs() const;
    void orderFocus();
    void layOut();
    QRect column() const;

    const std::shared_ptr<DisplayController> controller_;
    const AccessibleFactory accessibleFactory_;
    std::optional<Backdrop> backdrop_;
    Header header_;
    EmptyState* emptyState_;
    RowList* rows_;
    Footer footer_;
    ParkedFocus focus_{*this};
    QTimer rebuildTimer_;
    ObjectWillChange::Subscription subscription_;
};

}  // namespace tavrel
