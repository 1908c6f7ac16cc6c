#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace tavrel::support {

/// Sets or unsets an environment variable until the end of the scope.
class ScopedVariable {
public:
    ScopedVariable(const char* name, const char* value) : name_(name) {
        if (const char* before = std::getenv(name)) {
            before_ = before;
        }
        set(value);
    }
    ~ScopedVariable() { set(before_ ? before_->c_str() : nullptr); }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

private:
    void set(const char* value) {
        if (value == nullptr) {
            unsetenv(name_);
        } else {
            setenv(name_, value, /*overwrite=*/1);
        }
    }

    const char* name_;
    std::optional<std::string> before_;
};

}  // namespace tavrel::support
