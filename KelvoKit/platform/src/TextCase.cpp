#include "kelvo/platform/TextCase.h"

#include <locale.h>
#include <wctype.h>

#include "UTF8.h"

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
        const auto lead = static_cast<unsigned char>(text[i]);
        std::size_t length = lead < 0x80 ? 1 : (lead >> 5) == 0x6 ? 2 : (lead >> 4) == 0xE ? 3 : (lead >> 3) == 0x1E ? 4 : 0;
        bool valid = length != 0 && i + length <= text.size();
        char32_t code = length == 1 ? lead : length == 2 ? (lead & 0x1F) : length == 3 ? (lead & 0x0F) : (lead & 0x07);
        for (std::size_t k = 1; valid && k < length; ++k) {
            const auto next = static_cast<unsigned char>(text[i + k]);
            if ((next & 0xC0) != 0x80) valid = false;
            code = (code << 6) | (next & 0x3F);
        }
        if (!valid) {
            out += text[i++];
            continue;
        }
        if (code < 0x80) {
            out += static_cast<char>(code >= 'A' && code <= 'Z' ? code + 32 : code);
        } else {
            const wint_t lower = locale ? towlower_l(static_cast<wint_t>(code), locale) : static_cast<wint_t>(code);
            appendUTF8(out, static_cast<char32_t>(lower));
        }
        i += length;
    }
    return out;
}

}  // namespace kelvo::platform
