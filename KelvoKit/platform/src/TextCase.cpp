#include "kelvo/platform/TextCase.h"

#include <locale.h>
#include <wctype.h>

#include "kelvo/platform/UTF8.h"

namespace kelvo::platform {
namespace {

locale_t utf8Locale() {
    static const locale_t locale = [] {
        for (const char* name : {"C.UTF-8", "C.utf8", "en_US.UTF-8"})
            if (locale_t made = newlocale(LC_CTYPE_MASK, name, static_cast<locale_t>(0))) return made;
        return static_cast<locale_t>(0);
    }();
    return locale;
}

}  // namespace

std::string lowercased(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    const locale_t locale = utf8Locale();
    std::size_t i = 0;
    while (i < text.size()) {
        const auto decoded = decodeUTF8(text, i);
        if (!decoded) {
            out += text[i++];
            continue;
        }
        const char32_t code = decoded->code;
        if (code < 0x80) {
            out += static_cast<char>(code >= 'A' && code <= 'Z' ? code + 32 : code);
        } else {
            const wint_t lower = locale ? towlower_l(static_cast<wint_t>(code), locale) : static_cast<wint_t>(code);
            appendUTF8(out, static_cast<char32_t>(lower));
        }
        i += decoded->length;
    }
    return out;
}

}  // namespace kelvo::platform
