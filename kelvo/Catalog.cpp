// The global --catalog option: which system's catalog every subcommand uses.
#include "Commands.h"

namespace kelvo::tool {
namespace {
std::string chosenCatalog;
}

void registerCatalogOption(CLI::App& app) {
    const std::vector<std::string> names{std::string(rawValue(CatalogProfile::macos)),
                                         std::string(rawValue(CatalogProfile::linux))};
    app.add_option("--catalog", chosenCatalog, "Where to look for the tools' data: macos or linux (default: this system)")
        ->check(CLI::IsMember(names));
    // Accepted after the subcommand too: `kelvo scan --catalog macos`.
    app.fallthrough();
}

CatalogProfile catalogProfile() { return catalogProfileFromRawValue(chosenCatalog).value_or(runningSystemProfile()); }

Environment liveEnvironment() { return Environment::live(catalogProfile()); }

}  // namespace kelvo::tool
