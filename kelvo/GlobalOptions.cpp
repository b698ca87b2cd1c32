// The global --catalog option: which system's catalog every subcommand uses.
#include "Commands.h"

namespace kelvo::tool {

std::vector<std::string> catalogNames() {
    return {std::string(rawValue(CatalogProfile::macos)), std::string(rawValue(CatalogProfile::gnuLinux))};
}

void addCatalogOption(CLI::App& app, GlobalOptions& options) {
    app.add_option("--catalog", options.catalog, "Where to look for the tools' data: macos or linux (default: this system)")
        ->type_name("CATALOG")
        ->check(CLI::IsMember(catalogNames()));
    // Accepted after the subcommand too: `kelvo scan --catalog macos`.
    app.fallthrough();
}

CatalogProfile GlobalOptions::profile() const {
    return catalogProfileFromRawValue(catalog).value_or(runningSystemProfile());
}

Environment GlobalOptions::liveEnvironment() const { return Environment::live(profile()); }

}  // namespace kelvo::tool
