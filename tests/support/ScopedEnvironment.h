#pragma once
// Sets (or, for nothing, removes) environment variables of this process for the life of
// the object and puts the earlier values back afterwards.
#include <cstdlib>
#include <map>
#include <optional>
#include <string>

namespace kelvo::testing {

class ScopedEnvironment {
public:
    using Values = std::map<std::string, std::optional<std::string>>;

    explicit ScopedEnvironment(const Values& changes) {
        for (const auto& [name, value] : changes) {
            const char* current = std::getenv(name.c_str());
            earlier_[name] = current ? std::optional<std::string>(current) : std::nullopt;
        }
        apply(changes);
    }
    ~ScopedEnvironment() { apply(earlier_); }
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

private:
    static void apply(const Values& values) {
        for (const auto& [name, value] : values) value ? ::setenv(name.c_str(), value->c_str(), 1) : ::unsetenv(name.c_str());
    }
    Values earlier_;
};

}  // namespace kelvo::testing
