#include "safety/ShellCommand.h"

#include <fnmatch.h>

#include <array>
#include <cctype>
#include <string_view>

#include "kelvo/platform/FileSystem.h"

namespace kelvo {
namespace {

// Built-ins that change the state later commands run in, or run text of their own.
constexpr std::array<std::string_view, 13> stateChangingBuiltins{
    "cd", "pushd", "popd", "eval", "exec", "export", "unset", "set", "source", ".", "alias", "readonly", "trap"};

bool isPlain(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return std::isalnum(byte) || byte >= 0x80 || std::string_view("-_./:,+@%=~").find(c) != std::string_view::npos;
}

bool isNameStart(char c) { return std::isalpha(static_cast<unsigned char>(c)) || c == '_'; }
bool isNameChar(char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; }

struct Word {
    std::string text;     // as the shell will expand it
    std::string pattern;  // the same with quoted wildcard characters escaped, for fnmatch
    std::size_t firstWildcard = std::string::npos;  // position in text of the first unquoted * or ?
    bool begun = false;    // something was read, quotes included
    bool expanded = false; // a variable or "~" went into it

    void add(char c, bool quoted) {
        begun = true;
        text += c;
        if (quoted && (c == '*' || c == '?' || c == '[' || c == '\\')) pattern += '\\';
        pattern += c;
    }
    void addWildcard(char c) {
        begun = true;
        if (firstWildcard == std::string::npos) firstWildcard = text.size();
        text += c;
        pattern += c;
    }
};

class Reader {
public:
    Reader(const std::string& line, const ShellVariables& variables) : line_(line), variables_(variables) {}

    ShellCommand read() {
        while (!result_.refusal && at_ < line_.size()) step();
        if (!result_.refusal) endCommand(true);
        return std::move(result_);
    }

private:
    void refuse(Reason::Code code, const std::string& detail) {
        if (!result_.refusal) result_.refusal = Reason{code, detail};
    }

    void step() {
        const char c = line_[at_];
        if (c == ' ' || c == '\t') {
            endWord();
            ++at_;
        } else if (c == ';') {
            endCommand(false);
            ++at_;
        } else if (c == '\'') {
            const auto close = line_.find('\'', at_ + 1);
            if (close == std::string::npos) return refuse(Reason::Code::commandSyntax, "'");
            word_.begun = true;
            for (std::size_t i = at_ + 1; i < close; ++i) word_.add(line_[i], true);
            at_ = close + 1;
        } else if (c == '"') {
            readDoubleQuoted();
        } else if (c == '$') {
            readVariable(false);
        } else if (c == '~' && !word_.begun) {
            readTilde();
        } else if (c == '*' || c == '?') {
            word_.addWildcard(c);
            ++at_;
        } else if (isPlain(c)) {
            word_.add(c, false);
            ++at_;
        } else {
            refuse(Reason::Code::commandSyntax, std::string(1, c));
        }
    }

    void readDoubleQuoted() {
        word_.begun = true;
        ++at_;
        while (!result_.refusal && at_ < line_.size() && line_[at_] != '"') {
            const char c = line_[at_];
            if (c == '$') {
                readVariable(true);
            } else if (c == '`' || c == '\\') {
                return refuse(Reason::Code::commandSyntax, std::string(1, c));
            } else {
                word_.add(c, true);
                ++at_;
            }
        }
        if (at_ >= line_.size()) return refuse(Reason::Code::commandSyntax, "\"");
        ++at_;
    }

    void readVariable(bool quoted) {
        const bool braced = at_ + 1 < line_.size() && line_[at_ + 1] == '{';
        std::size_t start = at_ + (braced ? 2 : 1);
        std::size_t end = start;
        if (end < line_.size() && isNameStart(line_[end]))
            while (end < line_.size() && isNameChar(line_[end])) ++end;
        if (end == start || (braced && (end >= line_.size() || line_[end] != '}')))
            return refuse(Reason::Code::commandSyntax, line_.substr(at_, end - at_ + 1));
        const std::string name = line_.substr(start, end - start);
        const auto value = variables_.find(name);
        // Unquoted, a value is split at blanks and matched as a pattern: no single place any more.
        if (value == variables_.end() ||
            (!quoted && value->second.find_first_of(" \t\n*?[") != std::string::npos))
            return refuse(Reason::Code::commandVariable, name);
        for (const char c : value->second) word_.add(c, true);
        word_.expanded = true;
        at_ = end + (braced ? 1 : 0);
    }

    // "~" alone or before "/" is the home; "~name" is someone else's.
    void readTilde() {
        const std::size_t next = at_ + 1;
        if (next < line_.size() && line_[next] != '/' && line_[next] != ' ' && line_[next] != '\t' && line_[next] != ';')
            return refuse(Reason::Code::commandSyntax, "~");
        const auto home = variables_.find("HOME");
        if (home == variables_.end()) return refuse(Reason::Code::commandVariable, "HOME");
        for (const char c : home->second) word_.add(c, true);
        word_.expanded = true;
        at_ = next;
    }

    void endWord() {
        if (word_.begun) words_.push_back(std::move(word_));
        word_ = Word{};
    }

    void endCommand(bool atEnd) {
        endWord();
        if (words_.empty()) {
            // "a;" ends the line; a ";" with no command before it is a syntax error.
            if (!atEnd) refuse(Reason::Code::commandSyntax, ";");
            return;
        }
        const std::string& program = words_.front().text;
        if (program.find('=') != std::string::npos) return refuse(Reason::Code::commandSyntax, program);
        for (const auto builtin : stateChangingBuiltins)
            if (program == builtin) return refuse(Reason::Code::commandSyntax, program);
        bool afterRm = false;
        for (std::size_t index = 0; index < words_.size() && !result_.refusal; ++index) {
            const Word& word = words_[index];
            const bool wildcard = word.firstWildcard != std::string::npos;
            // The program named by its path ("/bin/rm") is run, not removed.
            const bool literalProgram = index == 0 && !word.expanded && !wildcard;
            const bool operand = afterRm && !word.text.starts_with("-");
            if (operand || word.expanded || wildcard || (!literalProgram && word.text.find('/') != std::string::npos))
                addPlace(word);
            afterRm = afterRm || word.text == "rm" || word.text.ends_with("/rm");
        }
        words_.clear();
    }

    void addPlace(const Word& word) {
        const std::filesystem::path path = word.text;
        bool plainComponents = path.is_absolute();
        for (const auto& component : path.relative_path())
            plainComponents = plainComponents && component != "." && component != "..";
        const auto lastSlash = word.text.rfind('/');
        const bool wildcardInLast = word.firstWildcard == std::string::npos || word.firstWildcard > lastSlash;
        const std::string last = word.text.substr(lastSlash + 1);
        const bool patternSafe =
            word.firstWildcard == std::string::npos || (!last.empty() && !last.starts_with("."));
        if (!plainComponents || !wildcardInLast || !patternSafe)
            return refuse(Reason::Code::commandPlace, word.text);
        ShellCommand::Place place{path, {}};
        if (word.firstWildcard != std::string::npos) place.pattern = word.pattern.substr(word.pattern.rfind('/') + 1);
        result_.places.push_back(std::move(place));
    }

    const std::string& line_;
    const ShellVariables& variables_;
    std::size_t at_ = 0;
    Word word_;
    std::vector<Word> words_;
    ShellCommand result_;
};

}  // namespace

ShellCommand ShellCommand::read(const std::string& line, const ShellVariables& variables) {
    return Reader(line, variables).read();
}

std::vector<std::filesystem::path> ShellCommand::matches(const Place& place) {
    if (place.pattern.empty()) return {place.path};
    const auto folder = place.path.parent_path();
    std::vector<std::filesystem::path> found;
    const auto entries = platform::listDirectory(folder, /*skipHidden=*/true);
    if (!entries) return found;
    for (const auto& entry : *entries)
        if (::fnmatch(place.pattern.c_str(), entry.name.c_str(), FNM_PERIOD) == 0) found.push_back(folder / entry.name);
    return found;
}

std::string ShellCommand::word(const std::string& text) {
    const bool plain = !text.empty() && text.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"
                                                               "0123456789._-") == std::string::npos;
    if (plain) return text;
    std::string quoted = "'";
    for (const char character : text) {
        if (character == '\'') quoted += "'\\''";
        else quoted += character;
    }
    return quoted + "'";
}

}  // namespace kelvo
