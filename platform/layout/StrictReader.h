#pragma once

#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

namespace tavrel::layout {

/// Reads the members of stored JSON objects by name, and notes when one is missing or is not
/// what it must be. From then on it leaves everything it is asked to read unset.
class StrictReader {
public:
    using Json = nlohmann::json;

    /// An empty value where there is no such member.
    const Json& member(const Json& object, const char* name) {
        const auto found = object.is_object() ? object.find(name) : object.end();
        check(object.is_object() && found != object.end());
        return isGood_ ? *found : absent_;
    }

    template <typename Number>
    void number(const Json& object, const char* name, Number& value) {
        read(member(object, name), value);
    }

    void real(const Json& object, const char* name, double& value) {
        const Json& json = member(object, name);
        check(json.is_number());
        value = isGood_ ? json.get<double>() : 0;
    }

    template <typename Number>
    void numbers(const Json& object, const char* name, std::vector<Number>& values) {
        const Json& list = member(object, name);
        check(list.is_array());
        for (std::size_t i = 0; isGood_ && i < list.size(); ++i) {
            read(list[i], values.emplace_back());
        }
    }

    void truth(const Json& object, const char* name, bool& value) {
        const Json& json = member(object, name);
        check(json.is_boolean());
        value = isGood_ && json.get<bool>();
    }

    void text(const Json& object, const char* name, std::string& value) {
        const Json& json = member(object, name);
        check(json.is_string());
        value = isGood_ ? json.get<std::string>() : std::string();
    }

    void check(bool condition) { isGood_ = isGood_ && condition; }
    bool isGood() const { return isGood_; }

private:
    template <typename Number>
    void read(const Json& json, Number& value) {
        if (json.is_number_unsigned()) {
            keep(json.get<std::uint64_t>(), value);
        } else {
            check(json.is_number_integer());
            keep(isGood_ ? json.get<std::int64_t>() : 0, value);
        }
    }

    template <typename Wide, typename Number>
    void keep(Wide wide, Number& value) {
        check(std::in_range<Number>(wide));
        value = isGood_ ? static_cast<Number>(wide) : Number{};
    }

    bool isGood_ = true;
    const Json absent_;
};

}  // namespace tavrel::layout
