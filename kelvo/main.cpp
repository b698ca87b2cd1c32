// The kelvo command-line tool: a thin front end that turns the library's results into text.
#include <CLI/CLI.hpp>

#include "Commands.h"
#include "kelvo/L10n.h"

int main(int argc, char** argv) {
    // Load the text catalogs now, so a broken installation stops at once with its message.
    kelvo::L10n::bundle();

    CLI::App app{"Kelvo: finds and removes the disk space that developer tool chains waste."};
    app.require_subcommand(1);
    kelvo::tool::registerCatalogOption(app);
    kelvo::tool::registerScanCommand(app);
    kelvo::tool::registerCleanCommand(app);
    kelvo::tool::registerPrepareCommand(app);
    kelvo::tool::registerSizeCommand(app);
    kelvo::tool::registerConfigCommand(app);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        const int status = app.exit(error);
        return status == 0 ? 0 : kelvo::tool::usageErrorStatus;
    }
    return kelvo::tool::exitStatus();
}
