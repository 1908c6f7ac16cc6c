#include "tests/support/GnomeKeyboard.h"

namespace tavrel::support {

namespace {

constexpr const char* remoteDesktop = "org.gnome.Mutter.RemoteDesktop";
constexpr const char* remoteDesktopObject = "/org/gnome/Mutter/RemoteDesktop";
constexpr const char* sessionInterface = "org.gnome.Mutter.RemoteDesktop.Session";

}  // namespace

GnomeKeyboard::GnomeKeyboard(const std::string& busAddress) : bus_(busAddress) {
    const Variant answer =
        bus_.call(remoteDesktop, remoteDesktopObject, remoteDesktop, "CreateSession");
    const char* path = nullptr;
    g_variant_get(answer.get(), "(&o)", &path);
    session_ = path;
    bus_.call(remoteDesktop, session_, sessionInterface, "Start");
}

void GnomeKeyboard::tap(std::uint32_t key) const {
    set(key, true);
    set(key, false);
}

void GnomeKeyboard::set(std::uint32_t key, bool isDown) const {
    bus_.call(remoteDesktop, session_, sessionInterface, "NotifyKeyboardKeycode",
              g_variant_new("(ub)", key, isDown ? TRUE : FALSE));
}

}  // namespace tavrel::support
