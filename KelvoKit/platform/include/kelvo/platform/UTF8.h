#pragma once
// The one UTF-8 reader and writer of the code base. A sequence is valid only in its
// shortest form, outside the surrogates and at most U+10FFFF; the reader refuses anything
// else (overlong "\xC1\x81" is not "a"), and callers keep such bytes as they are.
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace kelvo::platform {

struct DecodedUTF8 {
    char32_t code = 0;
    std::size_t length = 0;  // bytes, 1 to 4
};

// The code point starting at text[i] (i < text.size()); nothing when the bytes there are
// not one whole valid sequence.
inline std::optional<DecodedUTF8> decodeUTF8(std::string_view text, std::size_t i) {
    const auto lead = static_cast<unsigned char>(text[i]);
    if (lead < 0x80) return DecodedUTF8{.code = lead, .length = 1};
    std::size_t length = 0;
    char32_t minimum = 0;
    if (lead >= 0xC0 && lead <= 0xDF) length = 2, minimum = 0x80;
    else if (lead >= 0xE0 && lead <= 0xEF) length = 3, minimum = 0x800;
    else if (lead >= 0xF0 && lead <= 0xF7) length = 4, minimum = 0x10000;
    else return std::nullopt;
    if (length > text.size() - i) return std::nullopt;
    char32_t code = lead & (0xFF >> (length + 1));
    for (std::size_t k = 1; k < length; ++k) {
        const auto next = static_cast<unsigned char>(text[i + k]);
        if ((next & 0xC0) != 0x80) return std::nullopt;
        code = (code << 6) | (next & 0x3F);
    }
    if (code < minimum || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) return std::nullopt;
    return DecodedUTF8{.code = code, .length = length};
}

// The caller passes a code point (at most U+10FFFF, no surrogate).
inline void appendUTF8(std::string& out, char32_t code) {
    if (code < 0x80) {
        out += static_cast<char>(code);
    } else if (code < 0x800) {
        out += static_cast<char>(0xC0 | (code >> 6));
        out += static_cast<char>(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        out += static_cast<char>(0xE0 | (code >> 12));
        out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (code >> 18));
        out += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    }
}

}  // namespace kelvo::platform
