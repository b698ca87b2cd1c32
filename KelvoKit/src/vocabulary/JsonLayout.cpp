#include "vocabulary/JsonLayout.h"

#include <cstdio>

#include "kelvo/platform/UTF8.h"

namespace kelvo::JsonLayout {
namespace {

void writeString(std::string& out, const std::string& text) {
    out += '"';
    for (std::size_t i = 0; i < text.size();) {
        const auto c = static_cast<unsigned char>(text[i]);
        if (c >= 0x80) {
            if (const auto decoded = platform::decodeUTF8(text, i)) {
                out.append(text, i, decoded->length);
                i += decoded->length;
            } else {
                out += "\xEF\xBF\xBD";
                ++i;
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
