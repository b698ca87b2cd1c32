#pragma once
// What a command line handed to /bin/sh can reach, read before it runs, so that the executor
// can judge every place it names like a path target. Only a plain part of the shell
// language is understood: words separated by spaces or tabs, commands separated by ";",
// single and double quotes, "~" at the start of a word, and $NAME or ${NAME} for the
// variables the command runs with. Anything else (pipes, "&", redirections, substitutions,
// backslashes, other "$" forms, brackets, braces, comments, line breaks, an assignment or a
// built-in that changes the shell's state or runs other text) leaves the line unread, as
// does a variable the command would not get or one whose unquoted value the shell would
// split or match as a pattern.
//
// A word names a place when it holds a "/", a variable, a leading "~" or an unquoted "*"
// or "?", or follows an "rm" (which removes what its operands name) without being an
// option; a command's first word written as a plain path ("/bin/rm") is what runs, not a
// place. A place must expand to an absolute path with no "." or ".." component, its
// wildcards in the last component only, and that component must not begin with "." (a
// pattern could reach ".."); a place that breaks this leaves the line unread too.
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "kelvo/Environment.h"
#include "kelvo/Reason.h"

namespace kelvo {

struct ShellCommand {
    struct Place {
        std::filesystem::path path;  // as expanded, wildcards as written
        std::string pattern;         // the last component as an fnmatch pattern; empty for a plain path
    };

    std::vector<Place> places;  // in the order the line names them
    std::optional<Reason> refusal;  // why the line cannot be read; places are then incomplete

    [[nodiscard]] static ShellCommand read(const std::string& line, const ShellVariables& variables);
    // The text as one shell word: as it is when it holds only letters, digits, ".", "_" and
    // "-", else single-quoted, so that no text taken from outside can add a second
    // command to a line.
    static std::string word(const std::string& text);
    // What a place stands for now: a plain path itself; for a pattern, the entries of its
    // folder that match it (names beginning with "." never match), none when it cannot be listed.
    static std::vector<std::filesystem::path> matches(const Place& place);
};

}  // namespace kelvo
