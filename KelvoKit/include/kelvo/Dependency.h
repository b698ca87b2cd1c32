#pragma once
// What a service or detector holds of the outside world: an object behind an interface (a
// shared pointer) or a function. Left out, or given as a null pointer or an empty
// function, it is the live one that makeLive() builds, so no holder ever calls through a
// null; tests inject stubs by giving one. Copies share the object.
#include <concepts>
#include <type_traits>
#include <utility>

namespace kelvo {

template <typename Held, Held (*makeLive)()>
class Dependency {
public:
    Dependency() : held_(makeLive()) {}

    // Anything the held type is built from: a pointer to an implementation, a function
    // pointer, a lambda, nullptr.
    template <typename Given>
        requires(!std::same_as<std::remove_cvref_t<Given>, Dependency> && std::constructible_from<Held, Given &&>)
    Dependency(Given&& given) : held_(std::forward<Given>(given)) {  // NOLINT: implicit by design
        if (!held_) held_ = makeLive();
    }

    const Held& get() const { return held_; }

    decltype(auto) operator*() const
        requires requires(const Held& held) { *held; }
    {
        return *held_;
    }
    auto operator->() const
        requires requires(const Held& held) { held.get(); }
    {
        return held_.get();
    }
    template <typename... Arguments>
        requires std::invocable<const Held&, Arguments&&...>
    decltype(auto) operator()(Arguments&&... arguments) const {
        return held_(std::forward<Arguments>(arguments)...);
    }

private:
    Held held_;
};

}  // namespace kelvo
