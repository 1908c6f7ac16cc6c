#include <QAccessible>
#include <stdexcept>

#include "tests/ui/ViewTest.h"

namespace tavrel {
namespace {

using testing::Contains;
using testing::ElementsAre;
using Role = QAccessible::Role;

/// One visible thing as it is described to assistive technology.
struct Entry {
    Role role;
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

class ViewAccessibilityTest : public ViewTest {
protected:
    /// All that can be seen, in the order in which it is read.
    std::vector<QAccessibleInterface*> tree() const {
        std::vector<QAccessibleInterface*> all;
        collect(QAccessible::queryAccessibleInterface(view.get()), all);
        return all;
    }

    /// All that has a name.
    std::vector<Entry> entries() const {
        std::vector<Entry> result;
        for (QAccessibleInterface* each : tree()) {
            const QString name = each->text(QAccessible::Name);
            if (!name.isEmpty()) {
                result.push_back({each->role(), name});
            }
        }
        return result;
    }

    /// Null when there is none.
    QAccessibleInterface* find(Role role, const QString& name) const {
        for (QAccessibleInterface* each : tree()) {
            if (each->role() == role && each->text(QAccessible::Name) == name) {
                return each;
            }
        }
        return nullptr;
    }
    QAccessibleInterface& get(Role role, const QString& name) const {
        if (QAccessibleInterface* found = find(role, name)) {
            return *found;
        }
        throw std::out_of_range("nothing called " + name.toStdString());
    }
    QAccessible::State state(Role role, const QString& name) const {
        return get(role, name).state();
    }
    void act(Role role, const QString& name, const QString& action) const {
        get(role, name).actionInterface()->doAction(action);
    }

    const QString press = QAccessibleActionInterface::pressAction();
    const QString toggle = QAccessibleActionInterface::toggleAction();
};

TEST_F(ViewAccessibilityTest, EveryTextAndControlIsRead) {
    open({builtInDisplay(true), externalDisplay(false)});

    EXPECT_THAT(
        entries(),
        testing::UnorderedElementsAre(
            Entry{Role::StaticText, "TAVREL"}, Entry{Role::StaticText, "Your screens"},
            Entry{Role::Button, "Refresh displays"}, Entry{Role::Grouping, "MacBook Display"},
            Entry{Role::StaticText, "MacBook Display"},
            Entry{Role::StaticText, "Built-in panel · removed from desktop when off"},
            Entry{Role::CheckBox, "MacBook Display power"}, Entry{Role::StaticText, "Must stay on"},
            Entry{Role::Grouping, "External Display"}, Entry{Role::StaticText, "External Display"},
            Entry{Role::StaticText, "External monitor · removed from desktop when off"},
            Entry{Role::CheckBox, "External Display power"}, Entry{Role::StaticText, "Ready"},
            Entry{Role::Button, "Wake both displays"}, Entry{Role::StaticText, "⌃⌥⌘W"}));
}

TEST_F(ViewAccessibilityTest, RowsAreReadInListOrderAlsoAfterItChanges) {
    open({externalDisplay(true, 2, "B"), externalDisplay(true, 3, "C")});

    setDisplays({externalDisplay(true, 4, "A"), externalDisplay(true, 3, "C"),
                 externalDisplay(true, 2, "B")});

    std::vector<QString> groups;
    for (const Entry& entry : entries()) {
        if (entry.role == Role::Grouping) {
            groups.push_back(entry.name);
        }
    }
    EXPECT_THAT(groups, ElementsAre("A", "C", "B"));
}

TEST_F(ViewAccessibilityTest, SwitchesTellTheirStateAndWhetherTheyMayBeUsed) {
    open({builtInDisplay(true), externalDisplay(false)});

    const QAccessible::State panel = state(Role::CheckBox, "MacBook Display power");
    EXPECT_TRUE(panel.checkable);
    EXPECT_TRUE(panel.checked);
    EXPECT_TRUE(panel.disabled);
    EXPECT_EQ(get(Role::CheckBox, "MacBook Display power").text(QAccessible::Description),
              "At least one display must stay on");

    const QAccessible::State external = state(Role::CheckBox, "External Display power");
    EXPECT_FALSE(external.checked);
    EXPECT_FALSE(external.disabled);
    EXPECT_TRUE(external.focusable);
    EXPECT_EQ(get(Role::CheckBox, "External Display power").text(QAccessible::Description),
              "Enable or disable External Display");
}

TEST_F(ViewAccessibilityTest, ASwitchCanBePressedAndToggled) {
    openOnDesk({{.id = 5, .builtIn = true}, {.id = 6}});
    const QString name = "External Display power";

    for (const QString& action : {toggle, press}) {
        const bool wasOn = state(Role::CheckBox, name).checked;
        ASSERT_THAT(get(Role::CheckBox, name).actionInterface()->actionNames(), Contains(action));

        act(Role::CheckBox, name, action);
        settle();

        EXPECT_EQ(system.windowServer.find(6)->enabled, !wasOn);
        EXPECT_EQ(state(Role::CheckBox, name).checked, !wasOn);
    }
}

TEST_F(ViewAccessibilityTest, ADisabledSwitchIgnoresAssistiveTechnology) {
    openOnDesk({{.id = 5, .builtIn = true}, {.id = 6, .enabled = false}});

    act(Role::CheckBox, "MacBook Display power", toggle);
    act(Role::CheckBox, "MacBook Display power", press);
    settle();

    EXPECT_TRUE(system.windowServer.takeChanges().empty());
}

TEST_F(ViewAccessibilityTest, TheButtonsCanBePressed) {
    openOnDesk({{.id = 5, .builtIn = true}, {.id = 6, .enabled = false}});

    // Qt shows a button pressed for a moment before it clicks.
    act(Role::Button, "Refresh displays", press);
    ASSERT_TRUE(runUntil([&] { return controller->isRefreshing(); }));
    turn();
    EXPECT_TRUE(state(Role::Button, "Refresh displays").disabled);
    settle();

    act(Role::Button, "Wake both displays", press);
    ASSERT_TRUE(runUntil([&] { return controller->displays().front().isBusy; }));
    settle();
    EXPECT_TRUE(system.windowServer.find(6)->enabled);
}

TEST_F(ViewAccessibilityTest, TheWakeButtonTellsThatItIsDisabled) {
    open({.status = "Found 0 displays"});

    EXPECT_TRUE(state(Role::Button, "Wake both displays").disabled);
}

TEST_F(ViewAccessibilityTest, ABusyRowSaysSoAndHasASpinnerInsteadOfItsSwitch) {
    open({busy(builtInDisplay(true)), externalDisplay(true)});

    EXPECT_TRUE(state(Role::Grouping, "MacBook Display").busy);
    EXPECT_EQ(find(Role::CheckBox, "MacBook Display power"), nullptr);
    EXPECT_NE(find(Role::Animation, ""), nullptr);
    EXPECT_FALSE(state(Role::Grouping, "External Display").busy);
}

TEST_F(ViewAccessibilityTest, TheSpinnerOfAnEmptyWindowIsReadAsAnimation) {
    open({.status = "Finding your displays…", .isRefreshing = true});

    EXPECT_NE(find(Role::Animation, ""), nullptr);
}

TEST_F(ViewAccessibilityTest, AnErrorIsReadInPlaceOfTheStatus) {
    open({.displays = {builtInDisplay(true)}, .error = "Broken"});

    EXPECT_NE(find(Role::StaticText, "Broken"), nullptr);
    EXPECT_EQ(find(Role::StaticText, "Ready"), nullptr);
}

TEST_F(ViewAccessibilityTest, ATextThatIsCutOnScreenIsReadWhole) {
    const QString name(200, u'W');
    open({externalDisplay(true, 2, name.toStdString()), externalDisplay(true, 3)});

    ASSERT_NE(text(name), nullptr);
    EXPECT_TRUE(text(name)->visibleLines().first().endsWith(u'…'));
    EXPECT_NE(find(Role::StaticText, name), nullptr);
}

TEST_F(ViewAccessibilityTest, AnAmpersandInATextIsReadAsItIs) {
    open({.displays = {builtInDisplay(true)}, .status = "Salt & <b>pepper</b>"});

    EXPECT_NE(find(Role::StaticText, "Salt & <b>pepper</b>"), nullptr);
}

}  // namespace
}  // namespace tavrel
