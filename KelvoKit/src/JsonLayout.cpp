#include "JsonLayout.h"

#include <cstdio>

namespace kelvo::JsonLayout {
namespace {

// Length of the valid UTF-8 sequence starting at text[i], or 0 when it is not valid.
std::size_t validSequenceLength(const std::string& text, std::size_t i) {
    const auto lead = static_cast<unsigned char>(text[i]);
    std::size_t length = 0;
    unsigned minimum = 0;
    if (lead >= 0xC2 && lead <= 0xDF) length = 2, minimum = 0x80;
    else if (lead >= 0xE0 && lead <= 0xEF) length = 3, minimum = 0x800;
    else if (lead >= 0xF0 && lead <= 0xF4) length = 4, minimum = 0x10000;
    else return 0;
    if (i + length > text.size()) return 0;
    unsigned code = lead & (0xFF >> (length + 1));
    for (std::size_t k = 1; k < length; ++k) {
        const auto next = static_cast<unsigned char>(text[i + k]);
        if ((next & 0xC0) != 0x80) return 0;
        code = (code << 6) | (next & 0x3F);
    }
    if (code < minimum || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) return 0;
    return length;
}

void writeString(std::string& out, const std::string& text) {
    out += '"';
    for (std::size_t i = 0; i < text.size();) {
        const auto c = static_cast<unsigned char>(text[i]);
        if (c >= 0x80) {
            const std::size_t length = validSequenceLength(text, i);
            if (length == 0) {
                out += "\xEF\xBF\xBD";
                ++i;
            } else {
                out.append(text, i, length);
                i += length;
            }
            continue;
        }
        switch (c) {
            case '"': out += "\\\""; break;
            case '\\': out += "\\\\"; break;
            case '/': out += "\\/"; break;
            case '\n': out += "\\n"; break;
            case '\r': out += "\\r"; break;
            case '\t': out += "\\t"; break;
            case '\b': out += "\\b"; break;
            case '\f': out += "\\f"; break;
            default:
                if (c < 0x20) {
                    char escaped[8];
                    std::snprintf(escaped, sizeof escaped, "\\u%04x", c);
                    out += escaped;
                } else {
                    out += static_cast<char>(c);
                }
        }
        ++i;
    }
    out += '"';
}

void write(std::string& out, const nlohmann::json& value, int depth) {
    const std::string indent(static_cast<std::size_t>(depth + 1) * 2, ' ');
    const std::string closingIndent(static_cast<std::size_t>(depth) * 2, ' ');
    if (value.is_object()) {
        out += "{\n";
        if (value.empty()) out += "\n";
        bool first = true;
        // nlohmann::json keeps object members in a std::map: sorted by key already.
        for (const auto& [key, member] : value.items()) {
            if (!first) out += ",\n";
            first = false;
            out += indent;
            writeString(out, key);
            out += " : ";
            write(out, member, depth + 1);
        }
        if (!value.empty()) out += "\n";
        out += closingIndent + "}";
    } else if (value.is_array()) {
        out += "[\n";
        if (value.empty()) out += "\n";
        bool first = true;
        for (const auto& element : value) {
            if (!first) out += ",\n";
            first = false;
            out += indent;
            write(out, element, depth + 1);
        }
        if (!value.empty()) out += "\n";
        out += closingIndent + "]";
    } else if (value.is_string()) {
        writeString(out, value.get_ref<const std::string&>());
    } else {
        out += value.dump();  // numbers, booleans, null
    }
}

}  // namespace

std::string pretty(const nlohmann::json& value) {
    std::string out;
    write(out, value, 0);
    return out;
}

}  // namespace kelvo::JsonLayout
