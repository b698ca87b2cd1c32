// The hidden commands behind the shell completions and the build's manual page. Listing
// the words of a value builds the catalog (which touches no file and runs no tool beyond
// finding Flutter) and never scans, so a completion answers at once.
#include <fmt/format.h>
#include <fmt/ranges.h>

#include "CommandLineDocs.h"
#include "Commands.h"
#include "kelvo/CleanerRegistry.h"
#include "kelvo/KelvoKit.h"
#include "kelvo/PerProjectCleaner.h"

namespace kelvo::tool {
namespace {

std::vector<std::string> targetIDs(const Environment& env) {
    std::vector<std::string> ids;
    for (const auto& cleaner : CleanerRegistry::makeCleaners(env)) {
        if (const auto* perProject = dynamic_cast<const PerProjectCleaner*>(cleaner.get())) {
            const auto kinds = perProject->targetIDs();
            ids.insert(ids.end(), kinds.begin(), kinds.end());
        } else {
            ids.push_back(cleaner->id());
        }
    }
    return ids;
}

std::vector<std::string> familyNames(const Environment& env) {
    std::vector<std::string> names;
    for (const Family family : CleanerRegistry::familiesWithDetectors(env)) names.emplace_back(rawValue(family));
    return names;
}

std::vector<std::string> commandNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const auto* sub : app.get_subcommands([](const CLI::App* sub) { return !sub->get_group().empty(); }))
        names.push_back(sub->get_name());
    return names;
}

}  // namespace

std::vector<Command> addToolingCommands(CLI::App& app, ToolingOptions& options, const GlobalOptions& global) {
    std::vector<std::string> kinds;
    for (const auto kind : {ValueKind::families, ValueKind::ids, ValueKind::catalogs, ValueKind::commands})
        kinds.emplace_back(*completionWord(kind));
    auto* complete = app.add_subcommand("__complete", "List the words a value may be");
    complete->group("");
    complete->add_option("kind", options.complete)->required()->check(CLI::IsMember(kinds));
    auto* generate = app.add_subcommand("__generate", "Write the manual page or a shell's completion script");
    generate->group("");
    generate->add_option("format", options.generate)->required()->check(CLI::IsMember({"man", "bash", "zsh", "fish"}));

    const Command list{complete, [&app, &options, &global] {
                           std::vector<std::string> words;
                           if (options.complete == "families") words = familyNames(global.liveEnvironment());
                           else if (options.complete == "ids") words = targetIDs(global.liveEnvironment());
                           else if (options.complete == "catalogs") words = catalogNames();
                           else words = commandNames(app);
                           for (const auto& word : words) fmt::print("{}\n", word);
                           return 0;
                       }};
    const Command write{generate, [&app, &options] {
                            if (options.generate == "man") fmt::print("{}", manPage(app, KelvoKit::version()));
                            else if (options.generate == "bash") fmt::print("{}", bashCompletion(app));
                            else if (options.generate == "zsh") fmt::print("{}", zshCompletion(app));
                            else fmt::print("{}", fishCompletion(app));
                            return 0;
                        }};
    return {list, write};
}

}  // namespace kelvo::tool
