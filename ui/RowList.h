#pragma once

#include <QScrollArea>
#include <vector>

#include "ui/DisplayRow.h"

namespace tavrel {

/// The rows of all displays, one below the other, centred in the height they are given.
/// When there are more than fit, they scroll.
class RowList : public QScrollArea {
    Q_OBJECT

public:
    static constexpr int spacing = 12;
    /// Kept free for the scroll bar at the right of the rows, whether it is shown or not.
    static constexpr int scrollBarRoom = 16;
    /// Kept free above, below and left of the rows for their outlines.
    static constexpr int margin = DisplayRow::outlineMargin;

    explicit RowList(QWidget* parent);

    /// Shows one row for each of `inputs`, in this order. A row is kept as long as its
    /// display's `id` stays in the list. `focusPlace` gets the focus of a removed row.
    /// Not to be called from within a row's `onChange`. The rows get their places with `place`.
    void setRows(std::vector<DisplayRow::Inputs> inputs, QWidget& focusPlace);

    const std::vector<DisplayRow*>& rows() const { return rows_; }

    /// The height of all rows, without the margins.
    int fullHeight() const;

    /// Takes this place and lays the rows out in it.
    void place(const QRect& geometry);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    DisplayRow* takeRow(std::vector<DisplayRow*>& from, const std::string& id);
    void removeRow(DisplayRow* row, QWidget& focusPlace);
    void layOut();
    void scrollToFocus(QWidget* focused);

    QWidget* column_;
    std::vector<DisplayRow*> rows_;
    /// Whether these rows have been laid out.
    bool isLaidOut_ = false;
};

}  // namespace tavrel
