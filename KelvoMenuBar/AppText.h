#pragma once
// The application's own texts: the catalogs of Kelvo_KelvoMenuBar.bundle (one JSON object
// per language, the same format and placeholders as the library's), found beside the
// running executable, else in the source tree. The language is the library's choice
// (LC_ALL, LC_MESSAGES, LANG; English otherwise). A key without text shows the key.
#include <QString>
#include <filesystem>
#include <string_view>
#include <vector>

#include "kelvo/L10n.h"

namespace kelvo::app::AppText {

// Loaded once, thread-safely; the program stops with a message when neither copy loads.
const ResourceBundle& bundle();
QString t(std::string_view key, const std::vector<FormatArgument>& arguments = {});

// A text that counts: the form under key + ".one" when the count is 1 and there is one.
QString plural(std::string_view key, std::int64_t count, const std::vector<FormatArgument>& arguments);

template <typename... Arguments>
QString t(std::string_view key, Arguments&&... arguments)
    requires(sizeof...(Arguments) > 0 && (std::is_constructible_v<FormatArgument, Arguments> && ...))
{
    return t(key, std::vector<FormatArgument>{FormatArgument(std::forward<Arguments>(arguments))...});
}

}  // namespace kelvo::app::AppText
