#pragma once
// The system symbol names the screens use ("trash", "gearshape", a family's icon name...)
// drawn with icons of the desktop's icon theme, Adwaita as the fallback theme (main sets
// useThemes sets it), so the application looks at home wherever it runs.
#include <QIcon>
#include <string_view>
#include <vector>

namespace kelvo::app::Icons {

// The freedesktop icon name that stands for a symbol; a generic one for unknown symbols.
std::string_view themeName(std::string_view symbol);
QIcon symbol(std::string_view symbol);
// Every symbol the screens draw, family icons included.
std::vector<std::string_view> allSymbols();
constexpr const char* fallbackTheme = "Adwaita";
// Looks for themes in the XDG data folders too and falls back to Adwaita; where the
// platform names no theme at all (plain window managers, offscreen), Adwaita is the theme.
// Call once the application object exists.
void useThemes();

}  // namespace kelvo::app::Icons
