#include "platform/x11/hotkeys/Keyboard.h"

// The header names a field with one of C++'s keywords.
#if defined(__clang__)
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wkeyword-macro"
#endif
#define explicit explicitComponents
#include <xcb/xkb.h>
#undef explicit
#if defined(__clang__)
#pragma clang diagnostic pop
#endif

namespace tavrel::x11 {

namespace {

const xcb_query_extension_reply_t* xkbExtension(Connection& connection) {
    const auto* extension = xcb_get_extension_data(connection.get(), &xcb_xkb_id);
    return extension != nullptr && extension->present != 0 ? extension : nullptr;
}

}  // namespace

std::optional<KeyboardMapping> readKeyboardMapping(Connection& connection) {
    xcb_connection_t* xcb = connection.get();
    const xcb_setup_t* setup = xcb_get_setup(xcb);
    const auto keyCount = static_cast<std::uint8_t>(setup->max_keycode - setup->min_keycode + 1);
    const auto keysRequest = xcb_get_keyboard_mapping(xcb, setup->min_keycode, keyCount);
    const auto modifiersRequest = xcb_get_modifier_mapping(xcb);
    const auto keys = connection.reply<xcb_get_keyboard_mapping_reply_t>(keysRequest.sequence);
    const auto modifiers =
        connection.reply<xcb_get_modifier_mapping_reply_t>(modifiersRequest.sequence);
    if (keys == nullptr || modifiers == nullptr) {
        return std::nullopt;
    }

    KeyboardMapping mapping{.firstKeycode = setup->min_keycode};
    const Keysym* keysym = xcb_get_keyboard_mapping_keysyms(keys.get());
    for (unsigned int i = 0; i < keyCount; ++i) {
        mapping.keysyms.emplace_back(keysym, keysym + keys->keysyms_per_keycode);
        keysym += keys->keysyms_per_keycode;
    }
    const Keycode* keycode = xcb_get_modifier_mapping_keycodes(modifiers.get());
    for (auto& modifier : mapping.modifierKeys) {
        modifier.assign(keycode, keycode + modifiers->keycodes_per_modifier);
        keycode += modifiers->keycodes_per_modifier;
    }
    return mapping;
}

bool selectKeyboardEvents(Connection& connection) {
    if (xkbExtension(connection) == nullptr) {
        return false;
    }
    xcb_connection_t* xcb = connection.get();
    const auto use =
        connection.reply<xcb_xkb_use_extension_reply_t>(xcb_xkb_use_extension(xcb, 1, 0).sequence);
    if (use == nullptr || use->supported == 0) {
        return false;
    }
    constexpr std::uint32_t detectable = XCB_XKB_PER_CLIENT_FLAG_DETECTABLE_AUTO_REPEAT;
    const auto flags = connection.reply<xcb_xkb_per_client_flags_reply_t>(
        xcb_xkb_per_client_flags(xcb, XCB_XKB_ID_USE_CORE_KBD, detectable, detectable, 0, 0, 0)
            .sequence);
    // A client that uses the extension gets events about new mappings only if it selects them.
    constexpr std::uint16_t events =
        XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY;
    constexpr std::uint16_t everyPart = 0xFF;
    const xcb_xkb_select_events_details_t noDetails{};
    xcb_xkb_select_events_aux(xcb, XCB_XKB_ID_USE_CORE_KBD, events, 0, events, everyPart, everyPart,
                              &noDetails);
    return flags != nullptr && (flags->value & detectable) != 0;
}

bool isKeyboardChange(Connection& connection, const xcb_generic_event_t& event) {
    const auto* xkb = xkbExtension(connection);
    return eventNumber(event) == XCB_MAPPING_NOTIFY ||
           (xkb != nullptr && eventNumber(event) == xkb->first_event);
}

bool KeyPressFilter::pressed(Keycode key, std::uint32_t time) {
    if (!down_.insert(key).second) {
        return false;
    }
    const auto release = releases_.find(key);
    const bool goesOn = release != releases_.end() && release->second == time;
    return repeatsAreDetectable_ || !goesOn;
}

void KeyPressFilter::released(Keycode key, std::uint32_t time) {
    down_.erase(key);
    releases_[key] = time;
}

}  // namespace tavrel::x11
