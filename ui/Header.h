#pragma once

#include <QRect>

#include "ui/controls/Control.h"
#include "ui/controls/Label.h"
#include "ui/controls/RefreshButton.h"

namespace tavrel {

/// The product's title, the heading and the refresh button. `view` owns the widgets.
class Header {
public:
    explicit Header(QWidget& view);

    RefreshButton* refreshButton() const { return refresh_; }

    void update(bool isRefreshing, ParkedFocus& focus);

    int height() const;
    /// Fills the top of `column`.
    void layOut(const QRect& column);
    /// What is free beside the product's title, up to the refresh button.
    QRect besideTitle() const;

private:
    Label* product_;
    Label* heading_;
    RefreshButton* refresh_;
};

}  // namespace tavrel
