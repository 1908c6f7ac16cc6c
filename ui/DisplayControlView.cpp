#include "ui/DisplayControlView.h"

#include <QPaintEvent>
#include <QPainter>
#include <algorithm>
#include <optional>
#include <utility>

#include "ui/Texts.h"
#include "ui/paint/Theme.h"

namespace tavrel {

DisplayControlView::DisplayControlView(std::shared_ptr<DisplayController> controller,
                                       QWidget* parent)
    : QWidget(parent),
      controller_(std::move(controller)),
      header_(*this),
      emptyState_(new EmptyState(this)),
      rows_(new RowList(this)),
      footer_(*this, controller_->words()) {
    setPalette(theme::darkPalette());
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFixedSize(contentSize);
    connect(header_.refreshButton(), &Control::activated, this,
            [this] { controller_->refresh(std::nullopt); });
    connect(footer_.wakeButton(), &Control::activated, this, [this] { controller_->wakeAll(); });
    // However much changes in one turn of the main loop, one rebuild follows it.
    rebuildTimer_.setSingleShot(true);
    connect(&rebuildTimer_, &QTimer::timeout, this, &DisplayControlView::rebuild);
    subscription_ = controller_->objectWillChange().subscribe([this] {
        if (!rebuildTimer_.isActive()) {
            rebuildTimer_.start(0);
        }
    });
    rebuildTimer_.start(0);
}

void DisplayControlView::rebuild() {
    const bool isEmpty = controller_->displays().empty();
    const bool isRefreshing = controller_->isRefreshing();

    header_.update(isRefreshing, focus_);
    rows_->setRows(rowInputs(), *this);
    if (isEmpty) {
        emptyState_->setContents(isRefreshing,
                                 QString::fromStdString(controller_->statusMessage()));
    }
    footer_.update(controller_->statusMessage(), controller_->errorMessage(), isRefreshing,
                   !isEmpty, focus_);
    emptyState_->setVisible(isEmpty);
    rows_->setVisible(!isEmpty);
    orderFocus();
    layOut();
    Q_EMIT rebuilt();
}

std::vector<DisplayRow::Inputs> DisplayControlView::rowInputs() const {
    const std::vector<DisplayDevice>& displays = controller_->displays();
    const auto on = std::count_if(displays.begin(), displays.end(),
                                  [](const DisplayDevice& display) { return display.isOn; });
    std::vector<DisplayRow::Inputs> inputs;
    inputs.reserve(displays.size());
    for (const DisplayDevice& display : displays) {
        inputs.push_back({.display = display,
                          .isEnabled = !display.isOn || on > 1,
                          .disabledLabel = texts::mustStayOn.toString(),
                          .disabledReason = texts::atLeastOneMustStayOn.toString(),
                          .onChange = [controller = controller_, display](bool isOn) {
                              controller->set(display, isOn);
                          }});
    }
    return inputs;
}

void DisplayControlView::orderFocus() {
    QWidget* previous = header_.refreshButton();
    for (DisplayRow* row : rows_->rows()) {
        // The row holds the focus while its switch cannot. It accepts none by itself, but
        // only a widget that does can be put in order.
        row->setFocusPolicy(Qt::ClickFocus);
        setTabOrder(previous, row);
        setTabOrder(row, row->powerSwitch());
        row->setFocusPolicy(Qt::NoFocus);
        previous = row->powerSwitch();
    }
    setTabOrder(previous, footer_.wakeButton());
}

QRect DisplayControlView::column() const {
    const QRect padded = rect().adjusted(padding, padding, -padding, -padding);
    const int missing = header_.height() + rows_->fullHeight() +
                        footer_.heightForWidth(padded.width()) - padded.height();
    // What is a little too high for its place is centred in it all the same: one more row is worth
    // more than the padding. What is much too high scrolls.
    const int above = (missing + 1) / 2;
    return missing > 0 && above < padding ? padded.adjusted(0, -above, 0, missing - above) : padded;
}

QRect DisplayControlView::menuStrip() const {
    const QRect strip(0, 0, width(), theme::menuBarHeight);
    const QRect besideTitle = header_.besideTitle();
    if (besideTitle.top() >= strip.bottom()) {
        return strip;
    }
    return {besideTitle.left(), std::max(0, besideTitle.center().y() - strip.height() / 2),
            besideTitle.width(), strip.height()};
}

void DisplayControlView::layOut() {
    const QRect column = this->column();
    header_.layOut(column);
    footer_.layOut(column);

    const QRect content =
        column.adjusted(0, header_.height(), 0, -footer_.heightForWidth(column.width()));
    emptyState_->setGeometry(content);
    const bool scrolls = rows_->fullHeight() > content.height();
    // Rows that are cut off by the edge keep a distance from what is beyond it.
    const int inset = scrolls ? RowList::spacing : 0;
    rows_->place(content.adjusted(-RowList::margin, inset - RowList::margin, RowList::scrollBarRoom,
                                  RowList::margin - inset));
}

void DisplayControlView::showEvent(QShowEvent* event) {
    // What is out of date is never shown, not even for a moment.
    if (rebuildTimer_.isActive()) {
        rebuildTimer_.stop();
        rebuild();
    }
    QWidget::showEvent(event);
}

void DisplayControlView::resizeEvent(QResizeEvent* event) {
    layOut();
    QWidget::resizeEvent(event);
}

void DisplayControlView::paintEvent(QPaintEvent* event) {
    if (!backdrop_.has_value()) {
        backdrop_.emplace();
    }
    QPainter painter(this);
    backdrop_->paint(painter, size(), event->rect());
}

}  // namespace tavrel
