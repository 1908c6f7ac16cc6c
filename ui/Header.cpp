#include "ui/Header.h"

#include <algorithm>

#include "ui/Texts.h"
#include "ui/paint/Theme.h"

namespace tavrel {
namespace {

constexpr theme::FontSpec productFont{11, QFont::DemiBold, theme::FontDesign::rounded, 1.5};
constexpr double productOpacity = 0.48;
constexpr theme::FontSpec headingFont{27, QFont::Bold, theme::FontDesign::rounded};
constexpr int titleSpacing = 5;

}  // namespace

Header::Header(QWidget& view)
    : product_(new Label(productFont, theme::white(productOpacity), &view)),
      heading_(new Label(headingFont, theme::white(), &view)),
      refresh_(new RefreshButton(texts::refreshDisplays.toString(), &view)) {
    product_->setText(texts::productTitle.toString());
    heading_->setText(texts::heading.toString());
}

void Header::update(bool isRefreshing, ParkedFocus& focus) {
    focus.setEnabled(*refresh_, !isRefreshing);
    refresh_->setSpinning(isRefreshing);
}

int Header::height() const {
    const int titles = product_->lineHeight() + titleSpacing + heading_->lineHeight();
    return std::max(titles, RefreshButton::diameter);
}

void Header::layOut(const QRect& column) {
    const int titleWidth = column.width() - RefreshButton::diameter;
    product_->setGeometry(column.left(), column.top(), titleWidth, product_->lineHeight());
    heading_->setGeometry(column.left(), column.top() + product_->lineHeight() + titleSpacing,
                          titleWidth, heading_->lineHeight());
    refresh_->setFace({column.right() + 1 - RefreshButton::diameter, column.top(),
                       RefreshButton::diameter, RefreshButton::diameter});
}

QRect Header::besideTitle() const {
    const QRect title = product_->geometry();
    const int left = title.left() + product_->sizeHint().width();
    return {left, title.top(), refresh_->geometry().left() - left, title.height()};
}

}  // namespace tavrel
