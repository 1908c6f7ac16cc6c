#pragma once

#include <QRect>

#include "ui/controls/FocusKeeper.h"
#include "ui/controls/RefreshButton.h"
#include "ui/controls/Text.h"

namespace tavrel {

/// The product's title, the heading and the refresh button. The widgets are `view`'s.
class Header {
public:
    explicit Header(QWidget& view);

    RefreshButton* refreshButton() const { return refresh_; }

    void update(bool isRefreshing, FocusKeeper& focus);

    int height() const;
    /// Fills the top of `column`.
    void layOut(const QRect& column);

private:
    Text* product_;
    Text* heading_;
    RefreshButton* refresh_;
};

}  // namespace tavrel
