#include "tests/support/LauncherWindow.h"

#include <sys/mman.h>
#include <unistd.h>
#include <wayland-client.h>
#include <xdg-activation-client.h>
#include <xdg-shell-client.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <stdexcept>

#include "tests/support/WaitUntil.h"

namespace tavrel::support {

namespace {

constexpr int side = 64;
constexpr int bytesPerPixel = 4;
constexpr int bytes = side * side * bytesPerPixel;

template <auto destroy>
struct Destroy {
    template <typename Object>
    void operator()(Object* object) const {
        destroy(object);
    }
};
template <typename Object, auto destroy>
using Owned = std::unique_ptr<Object, Destroy<destroy>>;

}  // namespace

struct LauncherWindow::Client {
    explicit Client(const std::string& displayName)
        : display(wl_display_connect(displayName.c_str())) {
        if (display == nullptr) {
            throw std::runtime_error("no Wayland compositor at " + displayName);
        }
        registry.reset(wl_display_get_registry(display.get()));
        wl_registry_add_listener(registry.get(), &registryListener, this);
        takeNews();
        if (!compositor || !memory || !shell || !activation || !seat) {
            throw std::runtime_error("the compositor at " + displayName + " lacks an interface");
        }
        wl_seat_add_listener(seat.get(), &seatListener, this);
        xdg_wm_base_add_listener(shell.get(), &shellListener, nullptr);
        show();
    }

    /// All that the compositor has said so far, and its answer to all that it was asked.
    void takeNews() const {
        if (wl_display_roundtrip(display.get()) < 0) {
            throw std::runtime_error("the compositor has ended the connection");
        }
    }

    void show() {
        surface.reset(wl_compositor_create_surface(compositor.get()));
        shellSurface.reset(xdg_wm_base_get_xdg_surface(shell.get(), surface.get()));
        xdg_surface_add_listener(shellSurface.get(), &surfaceListener, this);
        window.reset(xdg_surface_get_toplevel(shellSurface.get()));
        xdg_toplevel_add_listener(window.get(), &windowListener, this);
        xdg_toplevel_set_app_id(window.get(), "org.example.Launcher");
        wl_surface_commit(surface.get());
        // The compositor answers how it wants the window; then there may be a picture.
        takeNews();
        wl_surface_attach(surface.get(), picture().get(), 0, 0);
        wl_surface_commit(surface.get());
    }

    const Owned<wl_buffer, wl_buffer_destroy>& picture() {
        const int file = ::memfd_create("picture", MFD_CLOEXEC);
        if (file < 0 || ::ftruncate(file, bytes) != 0) {
            throw std::runtime_error("no memory for a picture");
        }
        wl_shm_pool* pool = wl_shm_create_pool(memory.get(), file, bytes);
        buffer.reset(wl_shm_pool_create_buffer(pool, 0, side, side, side * bytesPerPixel,
                                               WL_SHM_FORMAT_XRGB8888));
        wl_shm_pool_destroy(pool);
        ::close(file);
        return buffer;
    }

    template <typename Object, auto destroy>
    void bind(Owned<Object, destroy>& object, std::uint32_t name, const char* offered,
              const wl_interface& wanted, std::uint32_t version) {
        if (std::strcmp(offered, wanted.name) == 0) {
            object.reset(
                static_cast<Object*>(wl_registry_bind(registry.get(), name, &wanted, version)));
        }
    }

    static void announced(void* data, wl_registry* /*registry*/, std::uint32_t name,
                          const char* interface, std::uint32_t /*version*/) {
        auto& self = *static_cast<Client*>(data);
        self.bind(self.compositor, name, interface, wl_compositor_interface, 1);
        self.bind(self.memory, name, interface, wl_shm_interface, 1);
        self.bind(self.seat, name, interface, wl_seat_interface, 1);
        self.bind(self.shell, name, interface, xdg_wm_base_interface, 1);
        self.bind(self.activation, name, interface, xdg_activation_v1_interface, 1);
    }
    static void withdrawn(void* /*data*/, wl_registry* /*registry*/, std::uint32_t /*name*/) {}

    static void capabilities(void* data, wl_seat* seat, std::uint32_t has) {
        auto& self = *static_cast<Client*>(data);
        if ((has & WL_SEAT_CAPABILITY_KEYBOARD) != 0 && self.keyboard == nullptr) {
            self.keyboard.reset(wl_seat_get_keyboard(seat));
            wl_keyboard_add_listener(self.keyboard.get(), &keyboardListener, data);
        }
    }
    static void seatName(void* /*data*/, wl_seat* /*seat*/, const char* /*name*/) {}

    static void keymap(void* /*data*/, wl_keyboard* /*keyboard*/, std::uint32_t /*format*/,
                       int file, std::uint32_t /*size*/) {
        ::close(file);
    }
    static void keysEnter(void* /*data*/, wl_keyboard* /*keyboard*/, std::uint32_t /*serial*/,
                          wl_surface* /*surface*/, wl_array* /*keys*/) {}
    static void keysLeave(void* /*data*/, wl_keyboard* /*keyboard*/, std::uint32_t /*serial*/,
                          wl_surface* /*surface*/) {}
    static void key(void* data, wl_keyboard* /*keyboard*/, std::uint32_t serial,
                    std::uint32_t /*time*/, std::uint32_t number, std::uint32_t state) {
        auto& self = *static_cast<Client*>(data);
        self.lastSerial = serial;
        if (state == WL_KEYBOARD_KEY_STATE_RELEASED) {
            self.lastKey = number;
        }
    }
    static void modifiers(void* /*data*/, wl_keyboard* /*keyboard*/, std::uint32_t /*serial*/,
                          std::uint32_t /*depressed*/, std::uint32_t /*latched*/,
                          std::uint32_t /*locked*/, std::uint32_t /*group*/) {}

    static void ping(void* /*data*/, xdg_wm_base* shell, std::uint32_t serial) {
        xdg_wm_base_pong(shell, serial);
    }
    static void configured(void* /*data*/, xdg_surface* surface, std::uint32_t serial) {
        xdg_surface_ack_configure(surface, serial);
    }
    static void windowConfigured(void* data, xdg_toplevel* /*window*/, std::int32_t /*width*/,
                                 std::int32_t /*height*/, wl_array* states) {
        const auto* first = static_cast<const std::uint32_t*>(states->data);
        const auto* last = first + states->size / sizeof(*first);
        static_cast<Client*>(data)->isActive =
            std::find(first, last, XDG_TOPLEVEL_STATE_ACTIVATED) != last;
    }
    static void windowClosed(void* /*data*/, xdg_toplevel* /*window*/) {}

    static void tokenDone(void* data, xdg_activation_token_v1* /*token*/, const char* text) {
        *static_cast<std::string*>(data) = text;
    }

    static constexpr wl_registry_listener registryListener{announced, withdrawn};
    static constexpr wl_seat_listener seatListener{capabilities, seatName};
    static constexpr wl_keyboard_listener keyboardListener{keymap, keysEnter, keysLeave,
                                                           key,    modifiers, nullptr};
    static constexpr xdg_wm_base_listener shellListener{ping};
    static constexpr xdg_surface_listener surfaceListener{configured};
    static constexpr xdg_toplevel_listener windowListener{windowConfigured, windowClosed, nullptr,
                                                          nullptr};
    static constexpr xdg_activation_token_v1_listener tokenListener{tokenDone};

    Owned<wl_display, wl_display_disconnect> display;
    Owned<wl_registry, wl_registry_destroy> registry;
    Owned<wl_compositor, wl_compositor_destroy> compositor;
    Owned<wl_shm, wl_shm_destroy> memory;
    Owned<wl_seat, wl_seat_destroy> seat;
    Owned<wl_keyboard, wl_keyboard_destroy> keyboard;
    Owned<xdg_wm_base, xdg_wm_base_destroy> shell;
    Owned<xdg_activation_v1, xdg_activation_v1_destroy> activation;
    Owned<wl_buffer, wl_buffer_destroy> buffer;
    Owned<wl_surface, wl_surface_destroy> surface;
    Owned<xdg_surface, xdg_surface_destroy> shellSurface;
    Owned<xdg_toplevel, xdg_toplevel_destroy> window;
    bool isActive = false;
    /// Of what the user did with a key last; 0 for nothing yet.
    std::uint32_t lastSerial = 0;
    std::uint32_t lastKey = 0;
};

LauncherWindow::LauncherWindow(const std::string& displayName)
    : client_(std::make_unique<Client>(displayName)) {
    if (!waitUntil([&] { return isActive(); })) {
        throw std::runtime_error("the compositor gives a new window no focus");
    }
}

LauncherWindow::~LauncherWindow() = default;

bool LauncherWindow::isActive() {
    client_->takeNews();
    return client_->isActive;
}

std::uint32_t LauncherWindow::lastKey() {
    client_->takeNews();
    return client_->lastKey;
}

std::string LauncherWindow::newActivationToken() {
    std::string text;
    const Owned<xdg_activation_token_v1, xdg_activation_token_v1_destroy> token(
        xdg_activation_v1_get_activation_token(client_->activation.get()));
    xdg_activation_token_v1_add_listener(token.get(), &Client::tokenListener, &text);
    xdg_activation_token_v1_set_serial(token.get(), client_->lastSerial, client_->seat.get());
    xdg_activation_token_v1_set_surface(token.get(), client_->surface.get());
    xdg_activation_token_v1_commit(token.get());
    if (!waitUntil([&] {
            client_->takeNews();
            return !text.empty();
        })) {
        throw std::runtime_error("the compositor gives no activation token");
    }
    return text;
}

}  // namespace tavrel::support
