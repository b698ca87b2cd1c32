#include "kelvo/platform/PropertyList.h"

#include <plist/plist.h>

#include <cctype>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>
#include <string_view>

#include "kelvo/platform/UTF8.h"
#include "kelvo/platform/FileSystem.h"

namespace kelvo::platform {
namespace {

using Strings = std::map<std::string, std::string>;

bool isHighSurrogate(std::uint32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool isLowSurrogate(std::uint32_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }
std::uint32_t joinSurrogates(std::uint32_t high, std::uint32_t low) { return 0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00); }

// Nothing for an odd number of bytes or a surrogate without its partner.
std::optional<std::string> utf8FromUTF16(std::string_view bytes, bool bigEndian) {
    if (bytes.size() % 2 != 0) return std::nullopt;
    const auto unitAt = [&](std::size_t i) {
        const auto first = static_cast<unsigned char>(bytes[i]);
        const auto second = static_cast<unsigned char>(bytes[i + 1]);
        return static_cast<std::uint32_t>(bigEndian ? (first << 8) | second : (second << 8) | first);
    };
    std::string text;
    text.reserve(bytes.size());
    for (std::size_t i = 0; i < bytes.size(); i += 2) {
        std::uint32_t code = unitAt(i);
        if (isHighSurrogate(code)) {
            if (i + 2 >= bytes.size() || !isLowSurrogate(unitAt(i + 2))) return std::nullopt;
            code = joinSurrogates(code, unitAt(i + 2));
            i += 2;
        } else if (isLowSurrogate(code)) {
            return std::nullopt;
        }
        appendUTF8(text, code);
    }
    return text;
}

// The text of a property list in UTF-8, its byte-order mark removed.
std::optional<std::string> utf8Text(std::string_view bytes) {
    if (bytes.starts_with("\xEF\xBB\xBF")) return std::string(bytes.substr(3));
    if (bytes.starts_with("\xFE\xFF")) return utf8FromUTF16(bytes.substr(2), true);
    if (bytes.starts_with("\xFF\xFE")) return utf8FromUTF16(bytes.substr(2), false);
    return std::string(bytes);
}

std::optional<Strings> stringsOfNode(plist_t root) {
    if (!root) return std::nullopt;
    const std::unique_ptr<void, decltype(&plist_free)> owner(root, &plist_free);
    if (plist_get_node_type(root) != PLIST_DICT) return std::nullopt;

    Strings strings;
    plist_dict_iter iterator = nullptr;
    plist_dict_new_iter(root, &iterator);
    while (iterator) {
        char* key = nullptr;
        plist_t value = nullptr;
        plist_dict_next_item(root, iterator, &key, &value);
        if (!key) break;
        if (value && plist_get_node_type(value) == PLIST_STRING) {
            char* text = nullptr;
            plist_get_string_val(value, &text);
            if (text) strings.emplace(key, text);
            std::free(text);
        }
        std::free(key);
    }
    std::free(iterator);
    return strings;
}

// The OpenStep text form: dictionaries { key = value; }, arrays ( a, b ), quoted or bare
// strings, data < hex > (and GNUstep's typed <*...> values), // and /* */ comments.
class OpenStepReader {
public:
    explicit OpenStepReader(std::string_view text) : text_(text) {}

    std::optional<Strings> topLevelStrings() {
        Strings strings;
        skipBlanks();
        if (!take('{') || !dictionaryMembers(1, &strings)) return std::nullopt;
        skipBlanks();
        if (at_ != text_.size()) return std::nullopt;
        return strings;
    }

private:
    static constexpr int maximumDepth = 512;

    bool atEnd() const { return at_ >= text_.size(); }
    char current() const { return text_[at_]; }
    bool take(char expected) {
        if (atEnd() || current() != expected) return false;
        ++at_;
        return true;
    }

    void skipBlanks() {
        while (!atEnd()) {
            const char c = current();
            if (c == ' ' || (c >= '\t' && c <= '\r')) {
                ++at_;
            } else if (text_.substr(at_).starts_with("//")) {
                const auto end = text_.find('\n', at_);
                at_ = end == std::string_view::npos ? text_.size() : end + 1;
            } else if (text_.substr(at_).starts_with("/*")) {
                const auto end = text_.find("*/", at_ + 2);
                at_ = end == std::string_view::npos ? text_.size() : end + 2;
            } else {
                return;
            }
        }
    }

    // After the opening brace, through the closing one. With `strings`, the string values
    // are kept (a later member of the same key replaces an earlier one).
    bool dictionaryMembers(int depth, Strings* strings) {
        while (true) {
            skipBlanks();
            if (take('}')) return true;
            std::string key;
            if (!string(key)) return false;
            skipBlanks();
            if (!take('=')) return false;
            std::optional<std::string> member;
            if (!value(depth, strings ? &member : nullptr)) return false;
            skipBlanks();
            if (!take(';')) return false;
            if (!strings) continue;
            if (member)
                (*strings)[key] = std::move(*member);
            else
                strings->erase(key);
        }
    }

    // One value of any type; with `text`, a string value is stored there.
    bool value(int depth, std::optional<std::string>* text) {
        if (depth > maximumDepth) return false;
        skipBlanks();
        if (take('{')) return dictionaryMembers(depth + 1, nullptr);
        if (take('(')) return arrayMembers(depth + 1);
        if (take('<')) return data();
        std::string parsed;
        if (!string(parsed)) return false;
        if (text) *text = std::move(parsed);
        return true;
    }

    bool arrayMembers(int depth) {
        skipBlanks();
        if (take(')')) return true;
        while (true) {
            if (!value(depth, nullptr)) return false;
            skipBlanks();
            if (take(')')) return true;
            if (!take(',')) return false;
            skipBlanks();
            if (take(')')) return true;  // a trailing comma is allowed
        }
    }

    bool data() {
        const bool typed = take('*');
        for (; !atEnd(); ++at_) {
            const auto c = static_cast<unsigned char>(current());
            if (c == '>') {
                ++at_;
                return true;
            }
            if (!typed && !std::isxdigit(c) && !std::isspace(c)) return false;
        }
        return false;
    }

    static bool isBareCharacter(char c) {
        const auto byte = static_cast<unsigned char>(c);
        return std::isalnum(byte) || c == '_' || c == '$' || c == '/' || c == ':' || c == '.' || c == '-' || c == '+';
    }

    bool string(std::string& out) {
        if (atEnd()) return false;
        const char quote = current();
        if (quote != '"' && quote != '\'') {
            const std::size_t start = at_;
            while (!atEnd() && isBareCharacter(current())) ++at_;
            out.assign(text_.substr(start, at_ - start));
            return at_ > start;
        }
        ++at_;
        while (!atEnd()) {
            const char c = text_[at_++];
            if (c == quote) return true;
            if (c != '\\') {
                out += c;
            } else if (!escape(out)) {
                return false;
            }
        }
        return false;
    }

    // After a backslash: C escapes, up to three octal digits, \U with up to four hex digits
    // (a surrogate pair written as two such escapes is joined; a lone one becomes U+FFFD);
    // any other character stands for itself.
    bool escape(std::string& out) {
        if (atEnd()) return false;
        const char c = text_[at_++];
        switch (c) {
            case 'a': out += '\a'; return true;
            case 'b': out += '\b'; return true;
            case 'f': out += '\f'; return true;
            case 'n': out += '\n'; return true;
            case 'r': out += '\r'; return true;
            case 't': out += '\t'; return true;
            case 'v': out += '\v'; return true;
            case 'U': {
                std::uint32_t code = hexUnit();
                if (isHighSurrogate(code) && text_.substr(at_).starts_with("\\U")) {
                    const std::size_t mark = at_;
                    at_ += 2;
                    const std::uint32_t low = hexUnit();
                    if (isLowSurrogate(low))
                        code = joinSurrogates(code, low);
                    else
                        at_ = mark;
                }
                appendUTF8(out, isHighSurrogate(code) || isLowSurrogate(code) ? 0xFFFD : code);
                return true;
            }
            default: break;
        }
        if (c >= '0' && c <= '7') {
            std::uint32_t code = static_cast<std::uint32_t>(c - '0');
            for (int digits = 1; digits < 3 && !atEnd() && current() >= '0' && current() <= '7'; ++digits)
                code = code * 8 + static_cast<std::uint32_t>(text_[at_++] - '0');
            appendUTF8(out, code);
            return true;
        }
        out += c;
        return true;
    }

    std::uint32_t hexUnit() {
        std::uint32_t code = 0;
        for (int digits = 0; digits < 4 && !atEnd() && std::isxdigit(static_cast<unsigned char>(current())); ++digits) {
            const char c = text_[at_++];
            code = code * 16 + static_cast<std::uint32_t>(std::isdigit(static_cast<unsigned char>(c)) ? c - '0' : (c | 0x20) - 'a' + 10);
        }
        return code;
    }

    std::string_view text_;
    std::size_t at_ = 0;
};

}  // namespace

std::optional<Strings> readTopLevelStrings(const std::string& bytes) {
    if (bytes.empty() || bytes.size() > std::numeric_limits<uint32_t>::max()) return std::nullopt;
    plist_t root = nullptr;
    if (plist_is_binary(bytes.data(), static_cast<uint32_t>(bytes.size()))) {
        plist_from_bin(bytes.data(), static_cast<uint32_t>(bytes.size()), &root);
        return stringsOfNode(root);
    }
    const auto text = utf8Text(bytes);
    if (!text) return std::nullopt;
    const auto first = text->find_first_not_of(" \t\n\r\f\v");
    if (first == std::string::npos) return std::nullopt;
    if ((*text)[first] != '<') return OpenStepReader(*text).topLevelStrings();
    plist_from_xml(text->data(), static_cast<uint32_t>(text->size()), &root);
    return stringsOfNode(root);
}

std::optional<Strings> readTopLevelStrings(const std::filesystem::path& file) {
    const auto bytes = readRegularFile(file, maximumPropertyListBytes);
    if (!bytes) return std::nullopt;
    return readTopLevelStrings(*bytes);
}

}  // namespace kelvo::platform
