#include "tests/support/AccessibleWindow.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "tests/support/WaitUntil.h"

namespace tavrel::support {

namespace {

constexpr const char* accessible = "org.a11y.atspi.Accessible";
constexpr const char* root = "/org/a11y/atspi/accessible/root";

/// A text contains nothing, and neither does a switch.
bool canContain(const std::string& role) {
    return role != "label" && role != "check box";
}

std::string textIn(const Variant& propertyAnswer) {
    GVariant* value = nullptr;
    g_variant_get(propertyAnswer.get(), "(v)", &value);
    return g_variant_get_string(Variant(value).get(), nullptr);
}

std::string roleIn(const Variant& answer) {
    const char* name = nullptr;
    g_variant_get(answer.get(), "(&s)", &name);
    return name;
}

std::uint64_t statesIn(const Variant& answer) {
    std::uint64_t states = 0;
    const Variant words(g_variant_get_child_value(answer.get(), 0));
    for (gsize i = 0; i < g_variant_n_children(words.get()) && i < 2; ++i) {
        guint32 word = 0;
        g_variant_get_child(words.get(), i, "u", &word);
        states |= static_cast<std::uint64_t>(word) << (32 * i);
    }
    return states;
}

Bounds boundsIn(const Variant& answer) {
    Bounds bounds;
    g_variant_get(answer.get(), "((iiii))", &bounds.x, &bounds.y, &bounds.width, &bounds.height);
    return bounds;
}

}  // namespace

/// An element, and what it contains.
struct AccessibleWindow::Node {
    AccessibleElement element;
    std::vector<Object> objects;
    std::vector<Node> contents;
};

AccessibleWindow::AccessibleWindow(const std::string& busAddress, pid_t process)
    : bus_(busAddress), process_(process) {}

std::vector<AccessibleElement> AccessibleWindow::elements() const {
    // An element may disappear during the walk, or the program have ended: then look anew.
    std::vector<AccessibleElement> found;
    const auto walk = [&] {
        try {
            found = readOnce();
            return true;
        } catch (const DBusError&) {
            program_.reset();
            return false;
        }
    };
    waitUntil(walk, std::chrono::seconds(2));
    return found;
}

std::vector<AccessibleElement> AccessibleWindow::readOnce() const {
    if (!program_) {
        program_ = application();
    }
    std::vector<AccessibleElement> found;
    if (program_) {
        list(readAll(*program_), 0, found);
    }
    return found;
}

std::optional<AccessibleElement> AccessibleWindow::find(const std::string& name) const {
    const std::vector<AccessibleElement> all = elements();
    const auto found = std::find_if(
        all.begin(), all.end(), [&](const AccessibleElement& each) { return each.name == name; });
    return found == all.end() ? std::nullopt : std::optional(*found);
}

Variant AccessibleWindow::ask(const AccessibleElement& element, const char* interface,
                              const char* method, GVariant* floating) const {
    const Variant arguments(g_variant_ref_sink(floating));
    if (!program_) {
        throw DBusError(std::string(method) + ": the program has gone");
    }
    return bus_.call(program_->service, element.object, interface, method, arguments.get());
}

Bounds AccessibleWindow::boundsOf(const AccessibleElement& element) const {
    constexpr guint32 onTheScreen = 0;
    return boundsIn(
        ask(element, "org.a11y.atspi.Component", "GetExtents", g_variant_new("(u)", onTheScreen)));
}

std::string AccessibleWindow::descriptionOf(const AccessibleElement& element) const {
    return textIn(ask(element, "org.freedesktop.DBus.Properties", "Get",
                      g_variant_new("(ss)", accessible, "Description")));
}

bool AccessibleWindow::act(const AccessibleElement& element) const {
    const Variant done = ask(element, "org.a11y.atspi.Action", "DoAction", g_variant_new("(i)", 0));
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

std::vector<AccessibleWindow::Object> AccessibleWindow::objectsIn(const Variant& answer) {
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
    for (const Object& each :
         objectsIn(bus_.call("org.a11y.atspi.Registry", root, accessible, "GetChildren"))) {
        if (processOf(each.service) == process_) {
            return each;
        }
    }
    return std::nullopt;
}

std::vector<AccessibleWindow::Node> AccessibleWindow::read(
    const std::vector<Object>& objects) const {
    // All at once: a program that answers one question at a time is asked hundreds.
    std::vector<DBus::Call> calls;
    std::vector<bool> isNew;
    for (const Object& each : objects) {
        calls.push_back({each.service, each.path, "org.freedesktop.DBus.Properties", "Get",
                         g_variant_new("(ss)", accessible, "Name")});
        calls.push_back({each.service, each.path, accessible, "GetState"});
        isNew.push_back(!roles_.contains(each.path));
        if (isNew.back()) {
            calls.push_back({each.service, each.path, accessible, "GetRoleName"});
        }
        if (isNew.back() || canContain(roles_.at(each.path))) {
            calls.push_back({each.service, each.path, accessible, "GetChildren"});
        }
    }
    const std::vector<Variant> answers = bus_.callAll(calls);

    std::vector<Node> nodes;
    auto answer = answers.begin();
    for (std::size_t i = 0; i < objects.size(); ++i) {
        Node node;
        node.element.object = objects[i].path;
        node.element.name = textIn(*answer++);
        node.element.states = statesIn(*answer++);
        if (isNew[i]) {
            roles_[objects[i].path] = roleIn(*answer++);
        }
        node.element.role = roles_.at(objects[i].path);
        if (isNew[i] || canContain(node.element.role)) {
            node.objects = objectsIn(*answer++);
        }
        nodes.push_back(std::move(node));
    }
    return nodes;
}

AccessibleWindow::Node AccessibleWindow::readAll(const Object& program) const {
    Node whole = std::move(read({program}).front());
    // Level by level; nobody's contents move once they are there.
    std::vector<Node*> level{&whole};
    while (!level.empty()) {
        std::vector<Object> objects;
        for (const Node* each : level) {
            objects.insert(objects.end(), each->objects.begin(), each->objects.end());
        }
        std::vector<Node> below = read(objects);
        std::vector<Node*> next;
        auto first = below.begin();
        for (Node* each : level) {
            const auto end = first + static_cast<std::ptrdiff_t>(each->objects.size());
            each->contents.assign(std::move_iterator(first), std::move_iterator(end));
            for (Node& content : each->contents) {
                next.push_back(&content);
            }
            first = end;
        }
        level = std::move(next);
    }
    return whole;
}

void AccessibleWindow::list(Node&& node, std::size_t parent, std::vector<AccessibleElement>& into) {
    const std::size_t self = into.size();
    into.push_back(std::move(node.element));
    into.back().parent = parent;
    for (Node& content : node.contents) {
        list(std::move(content), self, into);
    }
}

}  // namespace tavrel::support
