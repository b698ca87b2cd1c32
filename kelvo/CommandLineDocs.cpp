#include "CommandLineDocs.h"

#include <fmt/format.h>

#include <array>
#include <map>
#include <vector>

namespace kelvo::tool {
namespace {

struct ValueSource {
    std::string_view name;
    ValueKind kind;
};

// What the values of the tree's options are; every other value is free text.
constexpr std::array<ValueSource, 5> valueSources{{
    {"--family", ValueKind::families},
    {"--id", ValueKind::ids},
    {"--catalog", ValueKind::catalogs},
    {"paths", ValueKind::files},
    {"command", ValueKind::commands},
}};

// A visible command: its words after the program's name ("prepare clean"; "" for the tool).
struct Node {
    std::string path;
    const CLI::App* app = nullptr;
};

std::vector<const CLI::App*> children(const CLI::App& app) {
    return app.get_subcommands([](const CLI::App* sub) { return !sub->get_group().empty(); });
}

void collect(const CLI::App& app, const std::string& path, std::vector<Node>& nodes) {
    nodes.push_back({path, &app});
    for (const auto* sub : children(app))
        collect(*sub, path.empty() ? sub->get_name() : path + " " + sub->get_name(), nodes);
}

std::vector<Node> commandTree(const CLI::App& root) {
    std::vector<Node> nodes;
    collect(root, "", nodes);
    return nodes;
}

// The command's own options, then the tool's, which every command accepts too (they fall
// through to the tool), but for help and version.
std::vector<const CLI::Option*> optionsOf(const CLI::App& app, const CLI::App& root) {
    auto options = app.get_options([](const CLI::Option* option) { return option->nonpositional(); });
    if (&app != &root)
        for (const auto* option : root.get_options([&root](const CLI::Option* option) {
                 return option->nonpositional() && option != root.get_help_ptr() && option != root.get_version_ptr();
             }))
            options.push_back(option);
    return options;
}

std::vector<const CLI::Option*> positionalsOf(const CLI::App& app) {
    return app.get_options([](const CLI::Option* option) { return !option->nonpositional(); });
}

std::vector<std::string> namesOf(const CLI::Option& option) {
    std::vector<std::string> names;
    for (const auto& name : option.get_snames()) names.push_back("-" + name);
    for (const auto& name : option.get_lnames()) names.push_back("--" + name);
    return names;
}

std::string longName(const CLI::Option& option) {
    return option.get_lnames().empty() ? std::string() : "--" + option.get_lnames().front();
}

bool takesValue(const CLI::Option& option) { return option.get_type_size() != 0; }

std::string usageOf(const Node& node) {
    std::string usage = node.path.empty() ? "kelvo [OPTIONS] COMMAND" : "kelvo " + node.path + " [OPTIONS]";
    for (const auto* positional : positionalsOf(*node.app)) {
        std::string name = positional->get_name();
        for (auto& c : name) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        if (positional->get_expected_max() != 1) name += "...";  // repeatable (size PATH...)
        usage += positional->get_required() ? " " + name : " [" + name + "]";
    }
    if (!node.path.empty() && !children(*node.app).empty()) usage += " [COMMAND]";
    return usage;
}

// --- roff -------------------------------------------------------------------------------

std::string roff(std::string_view text) {
    std::string out;
    for (const char c : text) {
        if (c == '\\') out += "\\e";
        else if (c == '-') out += "\\-";
        else out += c;
    }
    if (!out.empty() && (out.front() == '.' || out.front() == '\'')) out.insert(0, "\\&");
    return out;
}

std::string optionTerm(const CLI::Option& option) {
    std::string term;
    for (const auto& name : namesOf(option)) term += (term.empty() ? "" : ", ") + ("\\fB" + roff(name) + "\\fR");
    if (takesValue(option)) term += " \\fI" + roff(option.get_type_name()) + "\\fR";
    return term;
}

void manOptions(std::string& page, const std::vector<const CLI::Option*>& options) {
    for (const auto* option : options)
        page += fmt::format(".TP\n{}\n{}\n", optionTerm(*option), roff(option->get_description()));
}

std::string upper(std::string text) {
    for (auto& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return text;
}

// --- shell words --------------------------------------------------------------------------

std::string posixQuoted(std::string_view text) {
    std::string out = "'";
    for (const char c : text) out += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return out + "'";
}

std::string fishQuoted(std::string_view text) {
    std::string out = "'";
    for (const char c : text) {
        if (c == '\\' || c == '\'') out += '\\';
        out += c;
    }
    return out + "'";
}

// "/scan"|"prepare/clean": the words that lead from one command to a subcommand, as the
// scripts match "$path/$word".
std::string descentPatterns(const std::vector<Node>& nodes) {
    std::string patterns;
    for (const auto& node : nodes) {
        if (node.path.empty()) continue;
        const auto space = node.path.rfind(' ');
        const std::string parent = space == std::string::npos ? "" : node.path.substr(0, space);
        const std::string word = space == std::string::npos ? node.path : node.path.substr(space + 1);
        patterns += (patterns.empty() ? "" : "|") + posixQuoted(parent + "/" + word);
    }
    return patterns;
}

// Every option that takes a value, once, with the kind of its value.
std::map<std::string, std::optional<ValueKind>> valueOptions(const std::vector<Node>& nodes, const CLI::App& root) {
    std::map<std::string, std::optional<ValueKind>> found;
    for (const auto& node : nodes)
        for (const auto* option : optionsOf(*node.app, root))
            if (takesValue(*option))
                for (const auto& name : namesOf(*option)) found.emplace(name, valueKind(longName(*option)));
    return found;
}

std::optional<ValueKind> positionalKind(const CLI::App& app) {
    for (const auto* positional : positionalsOf(app))
        if (const auto kind = valueKind(positional->get_name())) return kind;
    return std::nullopt;
}

}  // namespace

std::optional<ValueKind> valueKind(std::string_view optionName) {
    for (const auto& source : valueSources)
        if (source.name == optionName) return source.kind;
    return std::nullopt;
}

std::optional<std::string_view> completionWord(ValueKind kind) {
    switch (kind) {
    case ValueKind::families: return "families";
    case ValueKind::ids: return "ids";
    case ValueKind::catalogs: return "catalogs";
    case ValueKind::commands: return "commands";
    case ValueKind::files: return std::nullopt;
    }
    return std::nullopt;
}

std::string manPage(const CLI::App& app, std::string_view version) {
    std::string summary = app.get_description();
    if (!summary.empty()) summary.front() = static_cast<char>(std::tolower(static_cast<unsigned char>(summary.front())));
    if (!summary.empty() && summary.back() == '.') summary.pop_back();
    std::string page = fmt::format(".TH KELVO 1 \"\" \"kelvo {}\" \"User Commands\"\n", version);
    page += fmt::format(".SH NAME\nkelvo \\- {}\n", roff(summary));
    const auto nodes = commandTree(app);
    page += ".SH SYNOPSIS\n";
    // Every command that runs by itself (not config, which needs one of its own).
    for (const auto& node : nodes)
        if (node.path.empty() || node.app->get_require_subcommand_min() == 0)
            page += fmt::format(".br\n{}\n", roff(usageOf(node)));
    page += fmt::format(".SH DESCRIPTION\n{}\n.SH OPTIONS\n", roff(app.get_description()));
    manOptions(page, optionsOf(app, app));
    page += ".SH COMMANDS\n";
    for (const auto& node : nodes) {
        if (node.path.empty()) continue;
        page += fmt::format(".SS \"{}\"\n{}\n", roff(usageOf(node)), roff(node.app->get_description()));
        // --help is said once, among the tool's options.
        manOptions(page, node.app->get_options([&node](const CLI::Option* option) {
            return option->nonpositional() && option != node.app->get_help_ptr();
        }));
    }
    // "Exit status: ..." lines of the footer, one section each.
    const std::string footer = app.get_footer();
    for (std::size_t start = 0; start < footer.size();) {
        const auto end = std::min(footer.find('\n', start), footer.size());
        const std::string line = footer.substr(start, end - start);
        const auto colon = line.find(": ");
        if (colon != std::string::npos)
            page += fmt::format(".SH {}\n{}\n", roff(upper(line.substr(0, colon))), roff(line.substr(colon + 2)));
        start = end + 1;
    }
    page += ".SH SEE ALSO\n\\fBkelvo\\-menubar\\fR(1)\n";
    return page;
}

std::string bashCompletion(const CLI::App& app) {
    const auto nodes = commandTree(app);
    std::string script =
        "# bash completion for kelvo, written by `kelvo __generate bash` from the tool's own commands.\n"
        "_kelvo() {\n"
        "    local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]}\n"
        "    local path=\"\" word i words=\"\" catalog=()\n"
        "    for ((i = 1; i < COMP_CWORD; i++)); do\n"
        "        word=${COMP_WORDS[i]}\n"
        "        case \"$path/$word\" in\n"
        "            " + descentPatterns(nodes) + ") path=\"${path:+$path }$word\" ;;\n"
        "        esac\n"
        "        [[ $word == --catalog ]] && catalog=(--catalog \"${COMP_WORDS[i+1]}\")\n"
        "    done\n"
        "    case \"$prev\" in\n";
    for (const auto& [name, kind] : valueOptions(nodes, app)) {
        const auto word = kind ? completionWord(*kind) : std::nullopt;
        if (word)
            script += fmt::format("        {}) COMPREPLY=($(compgen -W \"$(\"${{COMP_WORDS[0]}}\" \"${{catalog[@]}}\" "
                                  "__complete {} 2>/dev/null)\" -- \"$cur\")); return ;;\n", name, *word);
        else if (kind == ValueKind::files)
            script += fmt::format("        {}) COMPREPLY=($(compgen -f -- \"$cur\")); return ;;\n", name);
        else
            script += fmt::format("        {}) COMPREPLY=(); return ;;\n", name);
    }
    script += "    esac\n    case \"$path\" in\n";
    for (const auto& node : nodes) {
        std::string words;
        for (const auto* sub : children(*node.app)) words += sub->get_name() + " ";
        for (const auto* option : optionsOf(*node.app, app))
            for (const auto& name : namesOf(*option)) words += name + " ";
        if (!words.empty()) words.pop_back();
        script += fmt::format("        {}) words={}", posixQuoted(node.path), posixQuoted(words));
        const auto kind = positionalKind(*node.app);
        if (kind == ValueKind::files)
            script += "\n            [[ $cur != -* ]] && { COMPREPLY=($(compgen -f -- \"$cur\")); return; }";
        else if (const auto word = kind ? completionWord(*kind) : std::nullopt)
            script += fmt::format("\n            words+=\" $(\"${{COMP_WORDS[0]}}\" __complete {} 2>/dev/null)\"", *word);
        script += " ;;\n";
    }
    script += "    esac\n"
              "    COMPREPLY=($(compgen -W \"$words\" -- \"$cur\"))\n"
              "}\n"
              "complete -F _kelvo kelvo\n";
    return script;
}

std::string zshCompletion(const CLI::App& app) {
    const auto nodes = commandTree(app);
    std::string script =
        "#compdef kelvo\n"
        "# zsh completion for kelvo, written by `kelvo __generate zsh` from the tool's own commands.\n"
        "_kelvo() {\n"
        "    local cmdpath=\"\" prev=${words[CURRENT-1]} word i\n"
        "    local -a catalog subcommands options\n"
        "    for ((i = 2; i < CURRENT; i++)); do\n"
        "        word=${words[i]}\n"
        "        case \"$cmdpath/$word\" in\n"
        "            " + descentPatterns(nodes) + ") cmdpath=\"${cmdpath:+$cmdpath }$word\" ;;\n"
        "        esac\n"
        "        [[ $word == --catalog ]] && catalog=(--catalog \"${words[i+1]}\")\n"
        "    done\n"
        "    case \"$prev\" in\n";
    for (const auto& [name, kind] : valueOptions(nodes, app)) {
        const auto word = kind ? completionWord(*kind) : std::nullopt;
        if (word)
            script += fmt::format("        {}) compadd -- ${{(f)\"$(${{words[1]}} $catalog __complete {} 2>/dev/null)\"}}; "
                                  "return ;;\n", name, *word);
        else if (kind == ValueKind::files)
            script += fmt::format("        {}) _files; return ;;\n", name);
        else
            script += fmt::format("        {}) return ;;\n", name);
    }
    script += "    esac\n    case \"$cmdpath\" in\n";
    for (const auto& node : nodes) {
        script += fmt::format("        {})\n            subcommands=(", posixQuoted(node.path));
        for (const auto* sub : children(*node.app))
            script += posixQuoted(sub->get_name() + ":" + sub->get_description()) + " ";
        script += ")\n            options=(";
        for (const auto* option : optionsOf(*node.app, app))
            for (const auto& name : namesOf(*option)) script += posixQuoted(name + ":" + option->get_description()) + " ";
        script += ")";
        const auto kind = positionalKind(*node.app);
        if (kind == ValueKind::files)
            script += "\n            [[ $PREFIX != -* ]] && _files";
        else if (const auto word = kind ? completionWord(*kind) : std::nullopt)
            script += fmt::format("\n            compadd -- ${{(f)\"$(${{words[1]}} __complete {} 2>/dev/null)\"}}", *word);
        script += " ;;\n";
    }
    script += "    esac\n"
              "    (( ${#subcommands} )) && _describe -t commands 'kelvo command' subcommands\n"
              "    [[ $PREFIX == -* ]] && _describe -t options option options\n"
              "    return 0\n"
              "}\n"
              "_kelvo \"$@\"\n";
    return script;
}

std::string fishCompletion(const CLI::App& app) {
    const auto nodes = commandTree(app);
    std::string cases;
    for (const auto& node : nodes) {
        if (node.path.empty()) continue;
        const auto space = node.path.rfind(' ');
        const std::string parent = space == std::string::npos ? "" : node.path.substr(0, space);
        cases += " " + fishQuoted(parent + "/" + node.app->get_name());
    }
    std::string script =
        "# fish completion for kelvo, written by `kelvo __generate fish` from the tool's own commands.\n"
        "function __kelvo_path\n"
        "    set -l path ''\n"
        "    for word in (commandline -opc)[2..-1]\n"
        "        switch \"$path/$word\"\n"
        "            case" + cases + "\n"
        "                set path (string trim -- \"$path $word\")\n"
        "        end\n"
        "    end\n"
        "    echo $path\n"
        "end\n"
        "function __kelvo_at\n"
        "    set -l path (__kelvo_path)\n"
        "    test \"$path\" = \"$argv[1]\"\n"
        "end\n"
        "function __kelvo_values\n"
        "    set -l words (commandline -opc)\n"
        "    set -l catalog\n"
        "    set -l i (contains -i -- --catalog $words)\n"
        "    and test $i -lt (count $words)\n"
        "    and set catalog --catalog $words[(math $i + 1)]\n"
        "    $words[1] $catalog __complete $argv[1] 2>/dev/null\n"
        "end\n"
        "complete -c kelvo -f\n";
    for (const auto& node : nodes) {
        const std::string condition = "-n " + fishQuoted("__kelvo_at " + fishQuoted(node.path));
        for (const auto* sub : children(*node.app))
            script += fmt::format("complete -c kelvo {} -a {} -d {}\n", condition, fishQuoted(sub->get_name()),
                                  fishQuoted(sub->get_description()));
        for (const auto* option : optionsOf(*node.app, app)) {
            std::string line = "complete -c kelvo " + condition;
            for (const auto& name : option->get_snames()) line += " -s " + fishQuoted(name);
            for (const auto& name : option->get_lnames()) line += " -l " + fishQuoted(name);
            if (takesValue(*option)) {
                const auto kind = valueKind(longName(*option));
                const auto word = kind ? completionWord(*kind) : std::nullopt;
                if (word) line += " -x -a " + fishQuoted(fmt::format("(__kelvo_values {})", *word));
                else if (kind == ValueKind::files) line += " -r -F";
                else line += " -x";
            }
            script += line + " -d " + fishQuoted(option->get_description()) + "\n";
        }
        const auto kind = positionalKind(*node.app);
        if (kind == ValueKind::files) script += fmt::format("complete -c kelvo {} -F\n", condition);
        else if (const auto word = kind ? completionWord(*kind) : std::nullopt)
            script += fmt::format("complete -c kelvo {} -x -a {}\n", condition,
                                  fishQuoted(fmt::format("(__kelvo_values {})", *word)));
    }
    return script;
}

}  // namespace kelvo::tool
