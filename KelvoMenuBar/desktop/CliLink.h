#pragma once
// Installs the command-line tool for the terminal: a symbolic link <link folder>/kelvo
// (/usr/local/bin/kelvo on a live system) to the kelvo program installed beside this
// application. Whatever is at the link's place is replaced. Without the rights, the user
// gets the command that does it instead.
#include <filesystem>
#include <string>

namespace kelvo::app {

struct CliLink {
    std::filesystem::path tool = besideApplication();
    std::filesystem::path linkFolder = "/usr/local/bin";

    enum class Outcome { installed, notBundled, refused };
    Outcome install() const;
    std::filesystem::path linkPath() const { return linkFolder / "kelvo"; }
    // sudo ln -sf "<tool>" <link>: what a refused installation offers to run by hand.
    std::string fallbackCommand() const;

    static std::filesystem::path besideApplication();
};

}  // namespace kelvo::app
