#include "platform/session/WindowServerChoice.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace tavrel::session {

void PrintTo(WindowServerKind kind, std::ostream* out) {
    *out << nameOf(kind);
}

namespace {

constexpr bool no = false;
constexpr bool yes = true;

struct Session {
    const char* name;
    bool isWayland;
    bool speaksPlasma;
    bool answersLikeGnome;
    XServerKind xServer;
    WindowServerKind chosen;
};

using enum XServerKind;
using Kind = WindowServerKind;

constexpr Session sessions[] = {
    // What it is               Wayland Plasma GNOME X server
    {"Plasma", yes, yes, no, xwayland, Kind::plasma},
    {"PlasmaWithoutXwayland", yes, yes, no, absent, Kind::plasma},
    {"Gnome", yes, no, yes, xwayland, Kind::gnome},
    {"GnomeWithoutXwayland", yes, no, yes, absent, Kind::gnome},
    {"OneThatOffersBoth", yes, yes, yes, xwayland, Kind::plasma},
    {"AnotherCompositor", yes, no, no, xwayland, Kind::none},
    {"AnotherCompositorWithoutXwayland", yes, no, no, absent, Kind::none},
    {"AnXServerNextToAnotherCompositor", yes, no, no, real, Kind::x11},
    {"X", no, no, no, real, Kind::x11},
    {"GnomeOnX", no, no, yes, real, Kind::x11},
    {"PlasmaOnX", no, yes, no, real, Kind::x11},
    {"AnXServerThatIsYetToCome", no, no, no, absent, Kind::x11},
    {"GnomeSeenThroughXwayland", no, no, yes, xwayland, Kind::gnome},
    {"PlasmaSeenThroughXwayland", no, yes, no, xwayland, Kind::plasma},
    {"AnotherCompositorSeenThroughXwayland", no, no, no, xwayland, Kind::none},
};

class WindowServerChoiceTest : public testing::TestWithParam<Session> {};

TEST_P(WindowServerChoiceTest, IsBySigns) {
    const Session& session = GetParam();

    EXPECT_EQ(chooseWindowServer({.isWayland = [&] { return session.isWayland; },
                                  .speaksPlasma = [&] { return session.speaksPlasma; },
                                  .answersLikeGnome = [&] { return session.answersLikeGnome; },
                                  .xServer = [&] { return session.xServer; }}),
              session.chosen);
}

INSTANTIATE_TEST_SUITE_P(Sessions, WindowServerChoiceTest, testing::ValuesIn(sessions),
                         [](const auto& session) { return std::string(session.param.name); });

TEST(WindowServerNameTest, IsReadBack) {
    for (const Kind kind : {Kind::none, Kind::x11, Kind::gnome, Kind::plasma}) {
        EXPECT_EQ(kindNamed(nameOf(kind)), kind);
    }
    EXPECT_EQ(kindNamed(""), std::nullopt);
    EXPECT_EQ(kindNamed("another"), std::nullopt);
}

}  // namespace
}  // namespace tavrel::session
