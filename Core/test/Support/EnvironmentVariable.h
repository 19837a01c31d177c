#pragma once

#include <cstdlib>
#include <optional>
#include <string>

/// Sets or removes an environment variable until the end of the scope.
class EnvironmentVariable {
public:
    EnvironmentVariable(const char* name, std::optional<std::string> value) : m_name(name) {
        if (const char* const before = std::getenv(name)) m_before = before;
        apply(value);
    }
    ~EnvironmentVariable() { apply(m_before); }
    EnvironmentVariable(const EnvironmentVariable&) = delete;
    EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

private:
    void apply(const std::optional<std::string>& value) const {
        if (value) {
            setenv(m_name, value->c_str(), 1);
        } else {
            unsetenv(m_name);
        }
    }

    const char* m_name;
    std::optional<std::string> m_before;
};
