#pragma once
// What the user's projects say about the runtimes they still need, read once per scan: the
// pin files of the given names found under the project folders (".python-version",
// "rust-toolchain.toml", ...) and the interpreters their virtual environments run (the
// "home =" line of each pyvenv.cfg). The walk goes at most maxDepth folders below each root,
// never follows a link, and passes over folders that hold no pins of a project's own:
// node_modules, version-control folders, build output, and hidden folders other than a
// ".venv"; it does not enter a virtual environment once its pyvenv.cfg is read. A folder or a
// virtual environment that cannot be read is listed in `unreadable`, since a pin may hide there;
// a pin file that cannot be read is a pin without text, which only the tools reading that
// name weigh.
#include <filesystem>
#include <optional>
#include <set>
#include <stop_token>
#include <string>
#include <vector>

namespace kelvo {

struct ProjectPins {
    struct Pin {
        std::filesystem::path file;
        std::string name;                 // the pin name it was found by: a file name, or a path below a folder
        std::optional<std::string> text;  // nothing: the file cannot be read, so it may pin anything
    };

    std::vector<Pin> pins;
    std::vector<std::filesystem::path> venvHomes;   // as written, standardised
    std::vector<std::filesystem::path> unreadable;  // folders and virtual environments: they may hold any pin

    static constexpr int maxDepth = 8;
    // A pin name holding "/" (".mise/config.toml") is a path below a folder of the walk: it is
    // read even where it lies in a folder the walk passes over. maxDepth 0 reads the roots' own
    // pins only.
    static ProjectPins read(const std::vector<std::filesystem::path>& roots, const std::set<std::string>& pinNames,
                            std::stop_token stop = {}, int maxDepth = ProjectPins::maxDepth);
};

}  // namespace kelvo
