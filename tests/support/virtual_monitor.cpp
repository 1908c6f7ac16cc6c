#include <gio/gio.h>
#include <pipewire/pipewire.h>
#include <spa/param/video/format-utils.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <stdexcept>
#include <string>

#include "tests/support/DBus.h"

/// virtual_monitor BUS WIDTH HEIGHT: a monitor of this size is plugged in at GNOME's compositor on
/// that message bus for as long as this runs. The compositor makes one for whoever wants to record
/// it, as soon as both have agreed on a format; the pictures are thrown away.
namespace tavrel {
namespace {

constexpr const char* service = "org.gnome.Mutter.ScreenCast";

/// A recording that the compositor has begun, and ends when the connection does.
class Recording {
public:
    explicit Recording(const std::string& busAddress) {
        GError* error = nullptr;
        connection_ = g_dbus_connection_new_for_address_sync(
            busAddress.c_str(),
            static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                              G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
            nullptr, nullptr, &error);
        if (connection_ == nullptr) {
            throw std::runtime_error(error->message);
        }
        const std::string session = make("/org/gnome/Mutter/ScreenCast", "", "CreateSession");
        const std::string stream = make(session, ".Session", "RecordVirtual");
        g_dbus_connection_signal_subscribe(
            connection_, nullptr, "org.gnome.Mutter.ScreenCast.Stream", "PipeWireStreamAdded",
            stream.c_str(), nullptr, G_DBUS_SIGNAL_FLAGS_NONE,
            [](GDBusConnection*, const char*, const char*, const char*, const char*,
               GVariant* arguments,
               void* node) { g_variant_get(arguments, "(u)", static_cast<std::uint32_t*>(node)); },
            &node_, nullptr);
        call(session, ".Session", "Start");
        while (node_ == 0) {
            g_main_context_iteration(nullptr, TRUE);
        }
    }

    /// What PipeWire calls the compositor's end.
    std::uint32_t node() const { return node_; }

private:
    support::Variant call(const std::string& object, const std::string& interface,
                          const char* method, GVariant* arguments = nullptr) {
        GError* error = nullptr;
        support::Variant answer(g_dbus_connection_call_sync(
            connection_, service, object.c_str(), (service + interface).c_str(), method, arguments,
            nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, &error));
        if (!answer) {
            throw std::runtime_error(error->message);
        }
        return answer;
    }
    /// Returns its path.
    std::string make(const std::string& object, const std::string& interface, const char* method) {
        const support::Variant answer =
            call(object, interface, method, g_variant_new("(a{sv})", nullptr));
        const char* path = nullptr;
        g_variant_get(answer.get(), "(&o)", &path);
        return path;
    }

    GDBusConnection* connection_ = nullptr;
    std::uint32_t node_ = 0;
};

/// Our end: takes pictures of one size.
class Viewer {
public:
    Viewer(pw_loop* loop, std::uint32_t source, spa_rectangle size) : source_(source) {
        core_ = pw_context_connect(pw_context_new(loop, nullptr, 0), nullptr, 0);
        if (core_ == nullptr) {
            throw std::runtime_error("no PipeWire");
        }
        stream_ = pw_stream_new(core_, "virtual monitor", nullptr);
        events_.version = PW_VERSION_STREAM_EVENTS;
        events_.state_changed = [](void* self, pw_stream_state, pw_stream_state now, const char*) {
            static_cast<Viewer*>(self)->handle(now);
        };
        events_.process = [](void* self) { static_cast<Viewer*>(self)->throwAway(); };
        pw_stream_add_listener(stream_, &hook_, &events_, this);

        std::array<std::uint8_t, 1024> space{};
        spa_pod_builder builder{};
        spa_pod_builder_init(&builder, space.data(), space.size());
        constexpr spa_fraction whenSomethingChanges{0, 1};
        constexpr spa_fraction often{60, 1};
        const auto* wanted = static_cast<const spa_pod*>(__extension__ spa_pod_builder_add_object(
            &builder, SPA_TYPE_OBJECT_Format, SPA_PARAM_EnumFormat, SPA_FORMAT_mediaType,
            SPA_POD_Id(SPA_MEDIA_TYPE_video), SPA_FORMAT_mediaSubtype,
            SPA_POD_Id(SPA_MEDIA_SUBTYPE_raw), SPA_FORMAT_VIDEO_format,
            SPA_POD_Id(SPA_VIDEO_FORMAT_BGRx), SPA_FORMAT_VIDEO_size, SPA_POD_Rectangle(&size),
            SPA_FORMAT_VIDEO_framerate, SPA_POD_Fraction(&whenSomethingChanges),
            SPA_FORMAT_VIDEO_maxFramerate, SPA_POD_Fraction(&often)));
        pw_stream_connect(stream_, PW_DIRECTION_INPUT, PW_ID_ANY, PW_STREAM_FLAG_MAP_BUFFERS,
                          &wanted, 1);
    }

private:
    /// Links the two ends, which nobody else does here.
    void handle(pw_stream_state now) {
        if (now != PW_STREAM_STATE_PAUSED || isLinked_) {
            return;
        }
        isLinked_ = true;
        const std::string output = std::to_string(source_);
        const std::string input = std::to_string(pw_stream_get_node_id(stream_));
        pw_properties* ends = pw_properties_new("link.output.node", output.c_str(),
                                                "link.input.node", input.c_str(), nullptr);
        pw_core_create_object(core_, "link-factory", PW_TYPE_INTERFACE_Link, PW_VERSION_LINK,
                              &ends->dict, 0);
        pw_properties_free(ends);
    }
    void throwAway() {
        if (pw_buffer* picture = pw_stream_dequeue_buffer(stream_)) {
            pw_stream_queue_buffer(stream_, picture);
        }
    }

    const std::uint32_t source_;
    pw_core* core_ = nullptr;
    pw_stream* stream_ = nullptr;
    spa_hook hook_{};
    pw_stream_events events_{};
    bool isLinked_ = false;
};

}  // namespace
}  // namespace tavrel

int main(int argc, char** argv) {
    using namespace tavrel;
    if (argc != 4) {
        std::cerr << "usage: virtual_monitor BUS WIDTH HEIGHT\n";
        return 2;
    }
    try {
        const Recording recording(argv[1]);
        pw_init(nullptr, nullptr);
        pw_main_loop* loop = pw_main_loop_new(nullptr);
        const Viewer viewer(pw_main_loop_get_loop(loop), recording.node(),
                            {static_cast<std::uint32_t>(std::stoul(argv[2])),
                             static_cast<std::uint32_t>(std::stoul(argv[3]))});
        pw_main_loop_run(loop);
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
