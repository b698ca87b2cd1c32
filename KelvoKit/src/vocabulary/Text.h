#pragma once
// Private to the library: the one way the readers of tools' files and of typed values trim
// a text, and the one way a list of names becomes "a, b, c" inside a sentence.
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

// The text without any of the blanks at either end; empty when it holds nothing else.
inline std::string trimmed(std::string_view text, std::string_view blanks = " \t\r\n") {
    const auto first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return std::string(text.substr(first, text.find_last_not_of(blanks) - first + 1));
}

// The names in their order, with ", " between them; empty for none.
inline std::string joined(const std::vector<std::string>& names) {
    std::string text;
    for (const auto& name : names) text += (text.empty() ? "" : ", ") + name;
    return text;
}

}  // namespace kelvo
