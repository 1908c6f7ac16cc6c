#include "ui/Accessible.h"

#include <QAccessible>
#include <QAccessibleWidget>

#include "ui/DisplayRow.h"
#include "ui/controls/Spinner.h"
#include "ui/controls/Switch.h"

namespace tavrel {
namespace {

class AccessibleSwitch : public QAccessibleWidget {
public:
    explicit AccessibleSwitch(Switch& control)
        : QAccessibleWidget(&control, QAccessible::CheckBox), switch_(control) {}

    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.checkable = true;
        state.checked = switch_.isChecked();
        return state;
    }

    QStringList actionNames() const override {
        QStringList names;
        if (switch_.isEnabled()) {
            names << toggleAction() << pressAction();
        }
        return names + QAccessibleWidget::actionNames();
    }

    void doAction(const QString& name) override {
        if (name == toggleAction() || name == pressAction()) {
            switch_.click();
        } else {
            QAccessibleWidget::doAction(name);
        }
    }

private:
    Switch& switch_;
};

class AccessibleRow : public QAccessibleWidget {
public:
    explicit AccessibleRow(DisplayRow& row)
        : QAccessibleWidget(&row, QAccessible::Grouping), row_(row) {}

    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.busy = row_.isBusy();
        return state;
    }

private:
    DisplayRow& row_;
};

QAccessibleInterface* makeInterface(const QString&, QObject* object) {
    if (auto* control = qobject_cast<Switch*>(object)) {
        return new AccessibleSwitch(*control);
    }
    if (auto* row = qobject_cast<DisplayRow*>(object)) {
        return new AccessibleRow(*row);
    }
    if (auto* spinner = qobject_cast<Spinner*>(object)) {
        return new QAccessibleWidget(spinner, QAccessible::Animation);
    }
    return nullptr;
}

}  // namespace

AccessibleFactory::AccessibleFactory() {
    QAccessible::installFactory(makeInterface);
}

}  // namespace tavrel
