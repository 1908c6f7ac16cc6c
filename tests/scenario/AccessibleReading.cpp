#include "tests/scenario/AccessibleReading.h"

#include <algorithm>
#include <iterator>
#include <map>

namespace tavrel::scenario {

namespace {

using support::AccessibleElement;
using Elements = std::vector<AccessibleElement>;

bool isIn(const Elements& elements, std::size_t element, std::size_t container) {
    while (element != 0 && element != container) {
        element = elements[element].parent;
    }
    return element == container;
}

bool isText(const AccessibleElement& element) {
    return element.role == "label" && element.isShowing();
}

/// The indices of the rows' containers, in reading order.
std::vector<std::size_t> rowPlaces(const Elements& elements) {
    std::vector<std::size_t> places;
    for (std::size_t i = 0; i < elements.size(); ++i) {
        if (elements[i].role == "grouping" || elements[i].role == "panel") {
            const bool hasExplanation =
                std::any_of(elements.begin(), elements.end(), [&](const AccessibleElement& each) {
                    return isText(each) && each.parent == i &&
                           each.name.find("removed from desktop when off") != std::string::npos;
                });
            if (hasExplanation) {
                places.push_back(i);
            }
        }
    }
    return places;
}

Row readRow(const Elements& elements, std::size_t place) {
    Row row;
    row.isBusy = elements[place].isBusy();
    std::vector<std::string*> texts{&row.lockText, &row.explanation, &row.name};
    for (std::size_t i = place + 1; i < elements.size() && isIn(elements, i, place); ++i) {
        const AccessibleElement& each = elements[i];
        if (isText(each) && !texts.empty()) {
            *texts.back() = each.name;
            texts.pop_back();
        }
        if (each.role == "check box" && each.isShowing()) {
            row.isOn = each.isChecked();
            row.isSwitchEnabled = each.isEnabled();
        }
    }
    return row;
}

/// The text directly before the wake button.
std::string readFooter(const Elements& elements) {
    const auto wake =
        std::find_if(elements.begin(), elements.end(), [](const AccessibleElement& each) {
            return each.name == "Wake both displays" && each.role == "push button";
        });
    if (wake == elements.end()) {
        return {};
    }
    const auto footer = std::find_if(
        std::make_reverse_iterator(wake), elements.rend(),
        [&](const AccessibleElement& each) { return isText(each) && each.parent == wake->parent; });
    return footer == elements.rend() ? std::string() : footer->name;
}

}  // namespace

Window readWindow(const Elements& elements) {
    Window window;
    for (const std::size_t place : rowPlaces(elements)) {
        window.rows.push_back(readRow(elements, place));
    }
    window.footer = readFooter(elements);
    return window;
}

std::optional<AccessibleElement> findSwitch(const Elements& elements, Display display) {
    const std::vector<std::size_t> places = rowPlaces(elements);
    if (display >= places.size()) {
        return std::nullopt;
    }
    const std::size_t place = places[display];
    for (std::size_t i = place + 1; i < elements.size() && isIn(elements, i, place); ++i) {
        if (elements[i].role == "check box" && elements[i].isShowing()) {
            return elements[i];
        }
    }
    return std::nullopt;
}

std::vector<std::string> inOrderOfRows(const std::vector<DisplayID>& displays,
                                       const std::vector<std::string>& names) {
    std::map<DisplayID, std::string> byNumber;
    for (std::size_t i = 0; i < displays.size(); ++i) {
        byNumber.emplace(displays[i], names.at(i));
    }
    std::vector<std::string> sorted;
    sorted.reserve(byNumber.size());
    for (const auto& [display, name] : byNumber) {
        sorted.push_back(name);
    }
    return sorted;
}

}  // namespace tavrel::scenario
