#pragma once

#include <QWidget>

#include "ui/controls/Label.h"
#include "ui/controls/Spinner.h"

namespace tavrel {

/// Shown in place of the rows while no display is known.
class EmptyState : public QWidget {
    Q_OBJECT

public:
    explicit EmptyState(QWidget* parent);

    void setContents(bool isRefreshing, const QString& statusMessage);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void layOut();

    Spinner* spinner_;
    Label* message_;
    bool isRefreshing_ = false;
    QRectF icon_;
};

}  // namespace tavrel
