#include "ui/RowList.h"

#include <QApplication>
#include <QPainter>
#include <QScrollBar>
#include <algorithm>
#include <utility>

#include "ui/paint/Theme.h"

namespace tavrel {
namespace {

/// Where the rows lie, with room for their outlines around them.
class Column : public QWidget {
protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        for (const DisplayRow* row : findChildren<DisplayRow*>()) {
            DisplayRow::paintOutline(painter, row->geometry());
        }
    }
};

}  // namespace

RowList::RowList(QWidget* parent) : QScrollArea(parent), column_(new Column) {
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    setWidget(column_);
    // Both would otherwise paint over the backdrop.
    column_->setAutoFillBackground(false);
    viewport()->setAutoFillBackground(false);
    // A style sheet costs memory and time, and most lists do not scroll.
    connect(verticalScrollBar(), &QScrollBar::rangeChanged, this, [this](int /*from*/, int to) {
        if (to > 0 && verticalScrollBar()->styleSheet().isEmpty()) {
            verticalScrollBar()->setStyleSheet(theme::scrollBarStyleSheet());
        }
    });
    verticalScrollBar()->setSingleStep((DisplayRow::fixedHeight + spacing) / 3);
    connect(qApp, &QApplication::focusChanged, this,
            [this](QWidget*, QWidget* focused) { scrollToFocus(focused); });
}

void RowList::setRows(std::vector<DisplayRow::Inputs> inputs, QWidget& focusPlace) {
    std::vector<DisplayRow*> old = rows_;
    std::vector<DisplayRow*> now;
    now.reserve(inputs.size());
    for (DisplayRow::Inputs& input : inputs) {
        DisplayRow* row = takeRow(old, input.display.id());
        if (row == nullptr) {
            row = new DisplayRow(std::move(input), column_);
        } else {
            row->setInputs(std::move(input));
        }
        now.push_back(row);
    }
    for (DisplayRow* row : old) {
        removeRow(row, focusPlace);
    }
    if (now == rows_) {
        return;
    }
    rows_ = std::move(now);
    isLaidOut_ = false;
    for (DisplayRow* row : rows_) {
        // Assistive technology reads them in the order in which they are stacked.
        row->raise();
    }
    for (DisplayRow* row : rows_) {
        row->show();
    }
}

int RowList::fullHeight() const {
    const int count = static_cast<int>(rows_.size());
    return std::max(0, count * (DisplayRow::fixedHeight + spacing) - spacing);
}

void RowList::place(const QRect& geometry) {
    // First, or a scroll bar would show until the next turn of the main loop.
    setGeometry(geometry);
    if (!isLaidOut_) {
        layOut();
    }
}

void RowList::resizeEvent(QResizeEvent* event) {
    layOut();
    QScrollArea::resizeEvent(event);
}

DisplayRow* RowList::takeRow(std::vector<DisplayRow*>& from, const std::string& id) {
    const auto found = std::find_if(from.begin(), from.end(),
                                    [&](const DisplayRow* row) { return row->id() == id; });
    if (found == from.end()) {
        return nullptr;
    }
    DisplayRow* row = *found;
    from.erase(found);
    return row;
}

void RowList::removeRow(DisplayRow* row, QWidget& focusPlace) {
    const QWidget* focused = window()->focusWidget();
    if (focused != nullptr && (focused == row || row->isAncestorOf(focused))) {
        focusPlace.setFocus(Qt::OtherFocusReason);
    }
    delete row;
}

void RowList::layOut() {
    const int rowWidth = std::max(0, width() - margin - scrollBarRoom);
    column_->resize(rowWidth + 2 * margin, fullHeight() + 2 * margin);
    int top = margin;
    for (DisplayRow* row : rows_) {
        row->setGeometry(margin, top, rowWidth, DisplayRow::fixedHeight);
        top += DisplayRow::fixedHeight + spacing;
    }
    column_->update();
    isLaidOut_ = true;
}

void RowList::scrollToFocus(QWidget* focused) {
    const auto* control = qobject_cast<Control*>(focused);
    // Only for the keyboard: a click must not move what it has hit.
    if (control == nullptr || !control->showsFocusRing()) {
        return;
    }
    for (DisplayRow* row : rows_) {
        if (row->isAncestorOf(control)) {
            ensureVisible(0, row->geometry().center().y(), 0, DisplayRow::fixedHeight / 2 + 1);
        }
    }
}

}  // namespace tavrel
