// The global --catalog option: which system's catalog every subcommand uses.
#include "Commands.h"

namespace kelvo::tool {

void addCatalogOption(CLI::App& app, GlobalOptions& options) {
    const std::vector<std::string> names{std::string(rawValue(CatalogProfile::macos)),
                                         std::string(rawValue(CatalogProfile::gnuLinux))};
    app.add_option("--catalog", options.catalog, "Where to look for the tools' data: macos or linux (default: this system)")
        ->check(CLI::IsMember(names));
    // Accepted after the subcommand too: `kelvo scan --catalog macos`.
    app.fallthrough();
}

CatalogProfile GlobalOptions::profile() const {
    return catalogProfileFromRawValue(catalog).value_or(runningSystemProfile());
}

Environment GlobalOptions::liveEnvironment() const { return Environment::live(profile()); }

}  // namespace kelvo::tool
