#pragma once
// One change of the configuration asked for by name, as `kelvo config` takes it: add or
// remove a project folder or an exclusion, or set one value from its text. A value is
// checked as the loader checks the file, and within the choice the settings screen offers
// (0 to 60 days, the families of the running catalog), so the two front ends never store
// what the other cannot show. A refused change says which key and what it accepts, and
// gives back the configuration unchanged.
#include <optional>
#include <string>
#include <vector>

#include "kelvo/Config.h"
#include "kelvo/Family.h"

namespace kelvo {

struct ConfigEdit {
    enum class Action { addRoot, removeRoot, exclude, include, set };

    Action action = Action::set;
    std::string key;    // set only: a name of settableKeys()
    std::string value;  // the path as typed, or the value's text

    // Why a change was refused, as a value; `text` says it in the user's language, naming
    // the key and what it accepts.
    struct Refusal {
        enum class Code {
            badPath,       // value: the path as typed
            notListed,     // value: the path the list does not hold
            invalidValue,  // value: as typed; choices: the names it accepts, when a list
            unknownKey,    // choices: the settable keys
        };
        Code code = Code::invalidValue;
        std::string key;
        std::string value;
        std::vector<std::string> choices;

        std::string text() const;
        friend bool operator==(const Refusal&, const Refusal&) = default;
    };

    struct Outcome {
        Config config;                  // the result; the configuration given when refused
        std::optional<Refusal> refusal;
        bool changed = false;           // false when it already was so (a path listed twice)
    };

    // Family names are read as a user types them ("py", "jvm"); only the offered families
    // are accepted, and "all" leaves the key out (every family enabled).
    Outcome applyTo(const Config& config, const std::vector<Family>& offeredFamilies) const;

    // The keys `set` accepts, in the order they are offered.
    static const std::vector<std::string>& settableKeys();
};

}  // namespace kelvo
