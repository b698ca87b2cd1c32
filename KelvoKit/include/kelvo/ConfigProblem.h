#pragma once
// Why a configuration file that is there cannot be used. Kelvo then runs on the defaults,
// whole, and leaves the file as it is; the front ends say so, naming the file and, where
// there is one, the key. A missing file is no problem: it is how every user starts.
#include <filesystem>
#include <string>
#include <string_view>

namespace kelvo {

struct ConfigProblem {
    enum class Kind {
        unreadable,   // not a regular file, larger than Config::maximumFileBytes, or not readable
        empty,        // nothing but white space
        truncated,    // JSON that ends before its document does
        notJSON,      // a syntax error before the end
        notAnObject,  // a JSON document that is not an object
        missingKey,   // a required key is absent
        wrongType,    // a key's value is not of the key's type
    };
    // What the value of the key must be (wrongType only).
    enum class Expected { nothing, text, textList, textListOrNull, wholeNumber, trueOrFalse };

    Kind kind = Kind::unreadable;
    std::filesystem::path file;
    std::string key;  // missingKey and wrongType; empty otherwise
    Expected expected = Expected::nothing;

    friend bool operator==(const ConfigProblem&, const ConfigProblem&) = default;
};

// Stable names of the kinds and types ("missingKey", "wholeNumber"), for text keys and tests.
std::string_view rawValue(ConfigProblem::Kind kind);
std::string_view rawValue(ConfigProblem::Expected expected);

}  // namespace kelvo
