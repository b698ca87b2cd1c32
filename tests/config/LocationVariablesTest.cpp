// The variables through which the user moves tools' data, and the catalog profile, as the
// live environment reads them (how the catalog resolves them is tested with the catalog).
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "kelvo/Environment.h"
#include "support/TempDir.h"

namespace kelvo {
namespace {

using std::filesystem::path;

TEST(LocationVariables, LiveReadsTheListedVariablesAndTakesTheProfileAsked) {
    const std::vector<std::pair<std::string, const char*>> values{
        {"XDG_CACHE_HOME", "/c"}, {"PIP_CACHE_DIR", "/p"}, {"npm_config_cache", ""}, {"KELVO_UNLISTED_DIR", "/u"}};
    std::vector<std::pair<std::string, std::optional<std::string>>> saved;
    for (const auto& [name, value] : values) {
        const char* old = std::getenv(name.c_str());
        saved.emplace_back(name, old ? std::optional<std::string>(old) : std::nullopt);
        ::setenv(name.c_str(), value, 1);
    }
    const auto macos = Environment::live(CatalogProfile::macos);
    const auto running = Environment::live();
    for (const auto& [name, value] : saved) {
        if (value) ::setenv(name.c_str(), value->c_str(), 1);
        else ::unsetenv(name.c_str());
    }

    EXPECT_EQ(macos.catalog, CatalogProfile::macos);
    EXPECT_EQ(running.catalog, runningSystemProfile());
    EXPECT_EQ(running.locationVariables.at("XDG_CACHE_HOME"), "/c");
    EXPECT_EQ(running.locationVariable("PIP_CACHE_DIR"), path("/p"));
    EXPECT_FALSE(running.locationVariables.contains("npm_config_cache"));
    EXPECT_FALSE(running.locationVariables.contains("KELVO_UNLISTED_DIR"));
}

}  // namespace
}  // namespace kelvo
