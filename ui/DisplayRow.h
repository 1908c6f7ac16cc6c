#pragma once

#include <QPainter>
#include <QWidget>
#include <functional>

#include "display/DisplayDevice.h"
#include "ui/controls/Control.h"
#include "ui/controls/Label.h"
#include "ui/controls/Spinner.h"
#include "ui/controls/Switch.h"

namespace tavrel {

/// One display of the list: what it is, what it is called, and at the right its switch,
/// or a spinner while it is being switched.
///
/// The row decides nothing. It shows its inputs, and every flip of the switch is handed to
/// `onChange`; the switch keeps its new position only when new inputs say so.
class DisplayRow : public QWidget {
    Q_OBJECT

public:
    struct Inputs {
        DisplayDevice display;
        /// Whether the switch may be used.
        bool isEnabled;
        /// Shown beside the lock under a switch that may not be used.
        QString disabledLabel;
        /// The tooltip of a switch that may not be used.
        QString disabledReason;
        /// Called with the switch's new position, once for each flip, on the main thread.
        std::function<void(bool)> onChange;
    };

    static constexpr int fixedHeight = 78;

    DisplayRow(Inputs inputs, QWidget* parent);

    /// Shows other inputs for the same display, with the focus kept where it was.
    void setInputs(Inputs inputs);

    /// Draws the outline of a row at `row`. It lies on the row's edge, half outside, so that
    /// the row's parent draws it.
    static void paintOutline(QPainter& painter, const QRect& row);
    /// How far the outline reaches beyond the row, in whole pixels.
    static constexpr int outlineMargin = 1;

    const std::string& id() const { return inputs_.display.id(); }
    bool isBusy() const { return inputs_.display.isBusy; }
    Switch* powerSwitch() const { return switch_; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void showInputs();
    void showSwitchOrSpinner();
    void layOut();

    Inputs inputs_;
    Label* name_;
    Label* explanation_;
    Switch* switch_;
    Label* lock_;
    Spinner* spinner_;
    ParkedFocus focus_{*this};
};

}  // namespace tavrel
