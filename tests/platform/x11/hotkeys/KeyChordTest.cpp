#include "platform/x11/hotkeys/KeyChord.h"

#include <gmock/gmock.h>

#include "tests/support/WakeChord.h"

namespace tavrel::x11 {
namespace {

using support::wakeChord;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

constexpr Keycode keyW = 25;
constexpr Keycode keyComma = 59;
constexpr Keycode keyAlt = 64;
constexpr Keycode keyNumLock = 77;
constexpr Keycode keySuper = 133;

constexpr std::uint16_t lock = 1 << 1;
constexpr std::uint16_t control = 1 << 2;
constexpr std::uint16_t mod1 = 1 << 3;
constexpr std::uint16_t mod2 = 1 << 4;
constexpr std::uint16_t mod3 = 1 << 5;
constexpr std::uint16_t mod4 = 1 << 6;
constexpr std::uint16_t mod5 = 1 << 7;

/// The usual PC keyboard, as far as it matters.
KeyboardMapping usual() {
    KeyboardMapping mapping;
    mapping.keysyms.assign(248, {});
    const auto put = [&](Keycode key, std::vector<Keysym> keysyms) {
        mapping.keysyms.at(static_cast<std::size_t>(key) - 8) = std::move(keysyms);
    };
    put(keyW, {'w', 'W', 'w', 'W'});
    put(keyComma, {',', '<'});
    put(keyAlt, {0xffe9, 0xffe7});
    put(keyNumLock, {0xff7f});
    put(keySuper, {0xffeb});
    mapping.modifierKeys[3] = {0, keyAlt};
    mapping.modifierKeys[4] = {keyNumLock, 0};
    mapping.modifierKeys[6] = {keySuper};
    return mapping;
}

std::vector<Keysym>& keysymsOf(KeyboardMapping& mapping, Keycode key) {
    return mapping.keysyms.at(static_cast<std::size_t>(key) - mapping.firstKeycode);
}

TEST(KeyChordTest, IsGrabbedInEveryCombinationWithTheLocks) {
    constexpr std::uint16_t chord = control | mod1 | mod4;
    EXPECT_THAT(
        grabsFor(wakeChord, usual()),
        UnorderedElementsAre(KeyGrab{keyW, chord}, KeyGrab{keyW, chord | lock},
                             KeyGrab{keyW, chord | mod2}, KeyGrab{keyW, chord | lock | mod2}));
}

TEST(KeyChordTest, FindsTheModifiersWhereverTheyAre) {
    KeyboardMapping mapping = usual();
    mapping.modifierKeys = {};
    mapping.modifierKeys[4] = {keyAlt};
    mapping.modifierKeys[5] = {keySuper};
    mapping.modifierKeys[7] = {keyNumLock};

    constexpr std::uint16_t chord = control | mod2 | mod3;
    EXPECT_THAT(
        grabsFor(wakeChord, mapping),
        UnorderedElementsAre(KeyGrab{keyW, chord}, KeyGrab{keyW, chord | lock},
                             KeyGrab{keyW, chord | mod5}, KeyGrab{keyW, chord | lock | mod5}));
}

TEST(KeyChordTest, NeedsNoNumLock) {
    KeyboardMapping mapping = usual();
    mapping.modifierKeys[4].clear();

    constexpr std::uint16_t chord = control | mod1 | mod4;
    EXPECT_THAT(grabsFor(wakeChord, mapping),
                UnorderedElementsAre(KeyGrab{keyW, chord}, KeyGrab{keyW, chord | lock}));
}

TEST(KeyChordTest, FollowsTheLetterToAnotherKey) {
    KeyboardMapping mapping = usual();
    keysymsOf(mapping, keyW) = {'v', 'V'};
    keysymsOf(mapping, keyComma) = {'w', 'W'};

    const auto grabs = grabsFor(wakeChord, mapping);
    EXPECT_EQ(grabs.size(), 4U);
    for (const KeyGrab& grab : grabs) {
        EXPECT_EQ(grab.keycode, keyComma);
    }
}

TEST(KeyChordTest, TakesEveryKeyThatHasTheLetterInAnyGroup) {
    KeyboardMapping mapping = usual();
    keysymsOf(mapping, keyComma) = {',', '<', 'w', 'W'};

    EXPECT_EQ(grabsFor(wakeChord, mapping).size(), 8U);
}

TEST(KeyChordTest, UsesMetaWhereThereIsNoAlt) {
    KeyboardMapping mapping = usual();
    keysymsOf(mapping, keyAlt) = {0xffe7};

    EXPECT_EQ(grabsFor(wakeChord, mapping).count({keyW, control | mod1 | mod4}), 1U);
}

TEST(KeyChordTest, UsesTheLettersPlaceWhereNoKeyHasTheLetter) {
    constexpr Keysym cyrillicTse = 0x06c3;
    KeyboardMapping mapping = usual();
    keysymsOf(mapping, keyW) = {cyrillicTse};

    EXPECT_EQ(grabsFor(wakeChord, mapping), grabsFor(wakeChord, usual()));

    mapping.keysyms.resize(static_cast<std::size_t>(keyW) - mapping.firstKeycode);

    EXPECT_THAT(grabsFor(wakeChord, mapping), IsEmpty()) << "the keyboard ends before it";
}

TEST(KeyChordTest, CannotBeTypedWithoutAModifier) {
    for (const Keycode missing : {keyAlt, keySuper}) {
        KeyboardMapping mapping = usual();
        keysymsOf(mapping, missing).clear();

        EXPECT_THAT(grabsFor(wakeChord, mapping), IsEmpty()) << int{missing};
    }
    EXPECT_THAT(grabsFor(wakeChord, KeyboardMapping()), IsEmpty());
}

TEST(KeyChordTest, UsesOnlyTheModifiersAskedFor) {
    HotKeyRegistration bare = wakeChord;
    bare.modifiers = hotKeyModifier::control;

    EXPECT_EQ(grabsFor(bare, usual()).count({keyW, control}), 1U);
    EXPECT_EQ(grabsFor(bare, usual()).size(), 4U);
}

TEST(KeyChordTest, IsUnknownWithOtherKeysAndModifiers) {
    EXPECT_TRUE(isKnownChord(wakeChord));
    for (const auto change : {+[](HotKeyRegistration& chord) { chord.keyCode = 14; },
                              +[](HotKeyRegistration& chord) { chord.modifiers |= 0x200; }}) {
        HotKeyRegistration strange = wakeChord;
        change(strange);

        EXPECT_FALSE(isKnownChord(strange));
        EXPECT_THAT(grabsFor(strange, usual()), IsEmpty());
    }
}

}  // namespace
}  // namespace tavrel::x11
