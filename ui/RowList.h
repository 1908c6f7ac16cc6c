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
    /// What the scroll bar needs at the right of the rows, whether it is shown or not.
    static constexpr int scrollBarRoom = 16;

    explicit RowList(QWidget* parent);

    /// Shows one row for each of `inputs`, in this order. A row is kept as long as its
    /// display's `id` stays in the list. `focusPlace` takes the focus of a row that goes.
    /// Not to be called from within a row's `onChange`.
    void setRows(std::vector<DisplayRow::Inputs> inputs, QWidget& focusPlace);

    const std::vector<DisplayRow*>& rows() const { return rows_; }

    /// The height at which nothing has to scroll.
    int fullHeight() const;

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    DisplayRow* takeRow(std::vector<DisplayRow*>& from, const std::string& id);
    void removeRow(DisplayRow* row, QWidget& focusPlace);
    void layOut();
    void followFocus(QWidget* focused);

    QWidget* column_;
    std::vector<DisplayRow*> rows_;
};

}  // namespace tavrel
