#pragma once
// Every user-visible text of the library, looked up by key in the translation catalogs
// of the resource bundle (Kelvo_KelvoKit.bundle: one JSON object per language). The
// language comes from LC_ALL, LC_MESSAGES, LANG (the first one set), English when no
// catalog matches. A key without text shows the key itself.
//
// A text that counts something has its general (plural) form under its key and its
// singular form under the key + ".one", with the same placeholders; `plural` chooses.
//
// Formats are printf-like with typed placeholders: %s takes a string, %d an integer,
// %% is a percent sign; "%1$s" names the argument position (1 to 99). Anything else after
// a '%' is literal text. Arguments of the wrong type
// or missing arguments render as empty text, never as undefined behaviour.
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>
#include <vector>

namespace kelvo {

using FormatArgument = std::variant<std::string, std::int64_t>;

struct Catalog {
    std::string language;
    std::map<std::string, std::string, std::less<>> texts;
};

struct ResourceBundle {
    std::filesystem::path location;
    std::map<std::string, Catalog, std::less<>> catalogs;  // by language code ("en", "es")
};

namespace L10n {

// The bundle, loaded once, thread-safely, on first use: beside the running executable (a
// build tree), else in the installed data folder (LocalFiles::installedData), else in the
// source tree. When none loads, the program stops with the message
// "could not load resource bundle: from <first>, <second> or <third>".
const ResourceBundle& bundle();

// Loads a bundle directory; nothing when it is missing or a catalog is not valid JSON.
std::optional<ResourceBundle> loadBundle(const std::filesystem::path& location);

// Loads the named bundle from beside the running executable, else from the installed data
// folder, else from the fallback directory; when none loads, the program stops with the
// message above.
ResourceBundle loadBundleOrExit(std::string_view name, const std::filesystem::path& fallback);

// The language chosen from the environment among those the bundle has ("en" by default).
std::string languageAmong(const ResourceBundle& bundle);
// languageAmong the library's own bundle.
std::string currentLanguage();

std::string t(std::string_view key);
std::string t(std::string_view key, const std::vector<FormatArgument>& arguments);

template <typename... Arguments>
std::string t(std::string_view key, Arguments&&... arguments)
    requires(sizeof...(Arguments) > 0 && (std::is_constructible_v<FormatArgument, Arguments> && ...))
{
    return t(key, std::vector<FormatArgument>{FormatArgument(std::forward<Arguments>(arguments))...});
}

// The key's ".one" text when count is 1 and the catalog has it (the singular of English and
// Spanish), else the key's own text; filled with the arguments like t.
std::string plural(std::string_view key, std::int64_t count, const std::vector<FormatArgument>& arguments);

template <typename... Arguments>
std::string plural(std::string_view key, std::int64_t count, Arguments&&... arguments)
    requires(sizeof...(Arguments) > 0 && (std::is_constructible_v<FormatArgument, Arguments> && ...))
{
    return plural(key, count, std::vector<FormatArgument>{FormatArgument(std::forward<Arguments>(arguments))...});
}

// Placeholder kinds of a format, in argument order: 's' for a string, 'd' for an integer.
// Used to prove that every translation takes the same arguments as the English text.
std::string placeholderSignature(std::string_view format);
// Fills a format with arguments (the printf-like subset described above).
std::string formatText(std::string_view format, const std::vector<FormatArgument>& arguments);

}  // namespace L10n
}  // namespace kelvo
