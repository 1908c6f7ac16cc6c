#include "tests/support/AccessibleWindow.h"

#include <algorithm>

#include "tests/support/WaitUntil.h"

namespace tavrel::support {

namespace {

constexpr const char* accessible = "org.a11y.atspi.Accessible";
constexpr const char* root = "/org/a11y/atspi/accessible/root";

std::string text(const Variant& variant) {
    return g_variant_get_string(variant.get(), nullptr);
}

}  // namespace

AccessibleWindow::AccessibleWindow(const std::string& busAddress, pid_t process)
    : bus_(busAddress), process_(process) {}

std::vector<AccessibleElement> AccessibleWindow::elements() const {
    // An element may disappear during the walk: then walk again.
    std::vector<AccessibleElement> found;
    const auto walk = [&] {
        try {
            found.clear();
            if (const auto program = application()) {
                collect(*program, 0, found);
            }
            return true;
        } catch (const DBusError&) {
            found.clear();
            return false;
        }
    };
    waitUntil(walk, std::chrono::seconds(2));
    return found;
}

std::optional<AccessibleElement> AccessibleWindow::find(const std::string& name) const {
    const std::vector<AccessibleElement> all = elements();
    const auto found = std::find_if(
        all.begin(), all.end(), [&](const AccessibleElement& each) { return each.name == name; });
    return found == all.end() ? std::nullopt : std::optional(*found);
}

bool AccessibleWindow::act(const AccessibleElement& element) const {
    const Variant done = bus_.call(service_, element.object, "org.a11y.atspi.Action", "DoAction",
                                   g_variant_new("(i)", 0));
    gboolean taken = FALSE;
    g_variant_get(done.get(), "(b)", &taken);
    return taken != FALSE;
}

bool AccessibleWindow::actOn(const std::function<std::optional<AccessibleElement>()>& find) const {
    bool taken = false;
    waitUntil([&] {
        const auto element = find();
        if (!element) {
            return false;
        }
        try {
            taken = act(*element);
            return true;
        } catch (const DBusError& error) {
            if (std::string(error.what()).find("UnknownObject") == std::string::npos) {
                throw;
            }
            return false;
        }
    });
    return taken;
}

std::vector<AccessibleWindow::Object> AccessibleWindow::children(const Object& parent) const {
    const Variant answer = bus_.call(parent.service, parent.path, accessible, "GetChildren");
    std::vector<Object> found;
    const Variant list(g_variant_get_child_value(answer.get(), 0));
    for (gsize i = 0; i < g_variant_n_children(list.get()); ++i) {
        const char* service = nullptr;
        const char* path = nullptr;
        g_variant_get_child(list.get(), i, "(&s&o)", &service, &path);
        found.push_back({service, path});
    }
    return found;
}

pid_t AccessibleWindow::processOf(const std::string& service) const {
    const Variant answer =
        bus_.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                  "GetConnectionUnixProcessID", g_variant_new("(s)", service.c_str()));
    guint32 process = 0;
    g_variant_get(answer.get(), "(u)", &process);
    return static_cast<pid_t>(process);
}

std::optional<AccessibleWindow::Object> AccessibleWindow::application() const {
    for (const Object& each : children({"org.a11y.atspi.Registry", root})) {
        if (processOf(each.service) == process_) {
            service_ = each.service;
            return each;
        }
    }
    return std::nullopt;
}

AccessibleElement AccessibleWindow::describe(const Object& object) const {
    AccessibleElement element;
    element.object = object.path;
    element.name = text(bus_.property(object.service, object.path, accessible, "Name"));
    element.description =
        text(bus_.property(object.service, object.path, accessible, "Description"));

    const Variant role = bus_.call(object.service, object.path, accessible, "GetRoleName");
    const char* roleName = nullptr;
    g_variant_get(role.get(), "(&s)", &roleName);
    element.role = roleName;

    const Variant state = bus_.call(object.service, object.path, accessible, "GetState");
    const Variant words(g_variant_get_child_value(state.get(), 0));
    for (gsize i = 0; i < g_variant_n_children(words.get()) && i < 2; ++i) {
        guint32 word = 0;
        g_variant_get_child(words.get(), i, "u", &word);
        element.states |= static_cast<std::uint64_t>(word) << (32 * i);
    }

    if (object.path != root) {
        constexpr guint32 onTheScreen = 0;
        const Variant extents = bus_.call(object.service, object.path, "org.a11y.atspi.Component",
                                          "GetExtents", g_variant_new("(u)", onTheScreen));
        g_variant_get(extents.get(), "((iiii))", &element.bounds.x, &element.bounds.y,
                      &element.bounds.width, &element.bounds.height);
    }
    return element;
}

void AccessibleWindow::collect(const Object& object, std::size_t parent,
                               std::vector<AccessibleElement>& into) const {
    const std::size_t self = into.size();
    into.push_back(describe(object));
    into.back().parent = parent;
    for (const Object& child : children(object)) {
        collect(child, self, into);
    }
}

}  // namespace tavrel::support
