#include <QAccessible>

#include "tests/ui/ViewTest.h"

namespace tavrel {
namespace {

using testing::Contains;
using testing::ElementsAre;

/// One visible thing as assistive technology is told of it.
struct Entry {
    QAccessible::Role role;
    QString name;
    friend bool operator==(const Entry&, const Entry&) = default;
};

void PrintTo(const Entry& entry, std::ostream* out) {
    *out << "role " << entry.role << " “" << entry.name.toStdString() << "”";
}

void collect(QAccessibleInterface* from, std::vector<QAccessibleInterface*>& into) {
    if (from == nullptr || from->state().invisible) {
        return;
    }
    into.push_back(from);
    for (int i = 0; i < from->childCount(); ++i) {
        collect(from->child(i), into);
    }
}

std::vector<QAccessibleInterface*> tree(QWidget& root) {
    std::vector<QAccessibleInterface*> all;
    collect(QAccessible::queryAccessibleInterface(&root), all);
    return all;
}

QAccessibleInterface* named(QWidget& root, QAccessible::Role role, const QString& name) {
    for (QAccessibleInterface* each : tree(root)) {
        if (each->role() == role && each->text(QAccessible::Name) == name) {
            return each;
        }
    }
    return nullptr;
}

/// All that is named, in the order it is read.
std::vector<Entry> entries(QWidget& root) {
    std::vector<Entry> result;
    for (QAccessibleInterface* each : tree(root)) {
        const QString name = each->text(QAccessible::Name);
        if (!name.isEmpty()) {
            result.push_back({each->role(), name});
        }
    }
    return result;
}

TEST_F(ViewTest, EveryTextAndControlIsReadInOrder) {
    open({.name = {},
          .displays = {builtInDisplay(true), externalDisplay(false)},
          .status = "External Display is off",
          .error = {}});
    using Role = QAccessible::Role;
    EXPECT_THAT(
        entries(*view),
        testing::UnorderedElementsAre(
            Entry{Role::StaticText, "TAVREL"}, Entry{Role::StaticText, "Your screens"},
            Entry{Role::Button, "Refresh displays"}, Entry{Role::Grouping, "MacBook Display"},
            Entry{Role::StaticText, "MacBook Display"},
            Entry{Role::StaticText, "Built-in panel · removed from desktop when off"},
            Entry{Role::CheckBox, "MacBook Display power"}, Entry{Role::StaticText, "Must stay on"},
            Entry{Role::Grouping, "External Display"}, Entry{Role::StaticText, "External Display"},
            Entry{Role::StaticText, "External monitor · removed from desktop when off"},
            Entry{Role::CheckBox, "External Display power"},
            Entry{Role::StaticText, "External Display is off"},
            Entry{Role::Button, "Wake both displays"}, Entry{Role::StaticText, "⌃⌥⌘W"}));
}

TEST_F(ViewTest, RowsAreReadInListOrderAlsoAfterItChanges) {
    open({externalDisplay(true, 2, "B"), externalDisplay(true, 3, "C")});
    controller->setDisplays({externalDisplay(true, 4, "A"), externalDisplay(true, 3, "C"),
                             externalDisplay(true, 2, "B")});
    turn();
    std::vector<QString> groups;
    for (const Entry& entry : entries(*view)) {
        if (entry.role == QAccessible::Grouping) {
            groups.push_back(entry.name);
        }
    }
    EXPECT_THAT(groups, ElementsAre("A", "C", "B"));
}

TEST_F(ViewTest, SwitchesTellTheirStateAndWhetherTheyMayBeUsed) {
    open({builtInDisplay(true), externalDisplay(false)});
    QAccessibleInterface* panel = named(*view, QAccessible::CheckBox, "MacBook Display power");
    ASSERT_NE(panel, nullptr);
    EXPECT_TRUE(panel->state().checkable);
    EXPECT_TRUE(panel->state().checked);
    EXPECT_TRUE(panel->state().disabled);
    EXPECT_EQ(panel->text(QAccessible::Description), "At least one display must stay on");

    QAccessibleInterface* external = named(*view, QAccessible::CheckBox, "External Display power");
    ASSERT_NE(external, nullptr);
    EXPECT_FALSE(external->state().checked);
    EXPECT_FALSE(external->state().disabled);
    EXPECT_TRUE(external->state().focusable);
    EXPECT_EQ(external->text(QAccessible::Description), "Enable or disable External Display");
}

TEST_F(ViewTest, ASwitchCanBePressedAndToggledByItsName) {
    openOnDesk({{.id = 5, .builtIn = true}, {.id = 6}});
    for (const QString& action :
         {QAccessibleActionInterface::toggleAction(), QAccessibleActionInterface::pressAction()}) {
        QAccessibleInterface* power = named(*view, QAccessible::CheckBox, "External Display power");
        ASSERT_NE(power, nullptr);
        const bool wasOn = power->state().checked;
        ASSERT_THAT(power->actionInterface()->actionNames(), Contains(action));
        power->actionInterface()->doAction(action);
        settle();
        EXPECT_EQ(system.windowServer.find(6)->enabled, !wasOn);
        EXPECT_EQ(named(*view, QAccessible::CheckBox, "External Display power")->state().checked,
                  !wasOn);
    }
}

TEST_F(ViewTest, ADisabledSwitchIgnoresAssistiveTechnology) {
    openOnDesk({{.id = 5, .builtIn = true}, {.id = 6, .enabled = false}});
    QAccessibleInterface* panel = named(*view, QAccessible::CheckBox, "MacBook Display power");
    panel->actionInterface()->doAction(QAccessibleActionInterface::toggleAction());
    panel->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    settle();
    EXPECT_TRUE(system.windowServer.takeChanges().empty());
}

TEST_F(ViewTest, TheButtonsCanBePressedByTheirNames) {
    openOnDesk({{.id = 5, .builtIn = true}, {.id = 6, .enabled = false}});
    named(*view, QAccessible::Button, "Refresh displays")
        ->actionInterface()
        ->doAction(QAccessibleActionInterface::pressAction());
    // Qt shows a button pressed for a moment before it clicks.
    ASSERT_TRUE(waitFor([&] { return controller->isRefreshing(); }));
    turn();
    EXPECT_TRUE(named(*view, QAccessible::Button, "Refresh displays")->state().disabled);
    settle();

    named(*view, QAccessible::Button, "Wake both displays")
        ->actionInterface()
        ->doAction(QAccessibleActionInterface::pressAction());
    ASSERT_TRUE(waitFor([&] { return controller->displays().front().isBusy; }));
    settle();
    EXPECT_TRUE(system.windowServer.find(6)->enabled);
}

TEST_F(ViewTest, TheWakeButtonTellsThatItIsDisabled) {
    open({.name = {}, .displays = {}, .status = "Found 0 displays", .error = {}});
    EXPECT_TRUE(named(*view, QAccessible::Button, "Wake both displays")->state().disabled);
}

TEST_F(ViewTest, ABusyRowSaysSoAndHasNoSwitch) {
    open({busy(builtInDisplay(true)), externalDisplay(true)});
    EXPECT_TRUE(named(*view, QAccessible::Grouping, "MacBook Display")->state().busy);
    EXPECT_EQ(named(*view, QAccessible::CheckBox, "MacBook Display power"), nullptr);
    EXPECT_FALSE(named(*view, QAccessible::Grouping, "External Display")->state().busy);
}

TEST_F(ViewTest, AnErrorIsReadInPlaceOfTheStatus) {
    open({.name = {}, .displays = {builtInDisplay(true)}, .status = "Ready", .error = "Broken"});
    EXPECT_THAT(entries(*view), Contains(Entry{QAccessible::StaticText, "Broken"}));
    EXPECT_EQ(named(*view, QAccessible::StaticText, "Ready"), nullptr);
}

TEST_F(ViewTest, ATextThatIsCutOnScreenIsReadWhole) {
    const std::string name(200, 'W');
    open({externalDisplay(true, 2, name), externalDisplay(true, 3)});
    Label* label = text(QString::fromStdString(name));
    ASSERT_NE(label, nullptr);
    EXPECT_TRUE(label->visibleLines().first().endsWith(u'…'));
    EXPECT_NE(named(*view, QAccessible::StaticText, QString::fromStdString(name)), nullptr);
}

TEST_F(ViewTest, AnAmpersandInATextIsReadAsItStands) {
    open({.name = {},
          .displays = {builtInDisplay(true)},
          .status = "Salt & <b>pepper</b>",
          .error = {}});
    EXPECT_NE(named(*view, QAccessible::StaticText, "Salt & <b>pepper</b>"), nullptr);
}

}  // namespace
}  // namespace tavrel
