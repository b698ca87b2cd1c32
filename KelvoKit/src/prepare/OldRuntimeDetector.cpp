#include "prepare/OldRuntimeDetector.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <sstream>

#include "kelvo/L10n.h"
#include "vocabulary/MonthsBefore.h"
#include "vocabulary/Paths.h"
#include "prepare/ProjectPins.h"
#include "safety/ShellCommand.h"
#include "vocabulary/Text.h"
#include "kelvo/platform/FileSystem.h"

#include <toml++/toml.h>

namespace kelvo {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::system_clock;
using Words = std::optional<std::vector<std::string>>;

constexpr std::size_t settingsLimit = 256 * 1024;
constexpr int aliasDepthLimit = 8;

std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> result;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) result.push_back(trimmed(line));
    return result;
}

// Blank-separated names; lines starting with "#" are comments.
std::vector<std::string> wordsOf(const std::string& text) {
    std::vector<std::string> words;
    for (const auto& line : lines(text)) {
        if (line.starts_with('#')) continue;
        std::istringstream in(line);
        for (std::string word; in >> word;) words.push_back(word);
    }
    return words;
}

// A TOML document as a table; nothing when it is not TOML.
std::optional<toml::table> tomlTable(const std::string& text) {
    try {
        return toml::parse(text);
    } catch (const toml::parse_error&) {
        return std::nullopt;
    }
}

// rust-toolchain.toml's channel; a path toolchain pins nothing installed here. The legacy
// file holds the channel alone on its one line.
Words rustToolchainOf(const std::string& text, bool toml) {
    if (!toml && text.find("[toolchain]") == std::string::npos) {
        const auto words = wordsOf(text);
        if (words.size() > 1) return std::nullopt;
        return words;
    }
    const auto document = tomlTable(text);
    if (!document) return std::nullopt;
    const auto toolchain = (*document)["toolchain"];
    if (const auto channel = toolchain["channel"].value<std::string>()) return std::vector{*channel};
    if (toolchain["path"].is_string()) return std::vector<std::string>{};
    return std::nullopt;
}

// settings.toml: the default toolchain and every directory override's toolchain.
Words rustupSettingsOf(const std::string& text) {
    const auto document = tomlTable(text);
    if (!document) return std::nullopt;
    const auto defaultToolchain = (*document)["default_toolchain"].value<std::string>();
    if (!defaultToolchain) return std::nullopt;
    std::vector<std::string> names{*defaultToolchain};
    if (const auto* overrides = (*document)["overrides"].as_table())
        for (const auto& [folder, toolchain] : *overrides) {
            const auto name = toolchain.value<std::string>();
            if (!name) return std::nullopt;
            names.push_back(*name);
        }
    return names;
}

// The versions a multi-language tool's file names for one language: "<language> v1 v2" lines
// (a "#" starts a comment anywhere; a "path:" version is a folder of the user's, nothing
// installed here) or "<language>=v" lines; nothing when a line is of neither form.
Words languageWords(const std::string& text, VersionSyntax syntax, const std::set<std::string>& language) {
    std::vector<std::string> names;
    for (auto line : lines(text)) {
        if (syntax == VersionSyntax::toolLines) line = trimmed(line.substr(0, line.find('#')));
        if (line.empty() || line.starts_with('#')) continue;
        if (syntax == VersionSyntax::toolAssignments) {
            const auto equals = line.find('=');
            if (equals == std::string::npos) return std::nullopt;
            if (language.contains(trimmed(line.substr(0, equals)))) names.push_back(trimmed(line.substr(equals + 1)));
            continue;
        }
        std::istringstream in(line);
        std::string first;
        in >> first;
        if (!language.contains(first)) continue;
        for (std::string word; in >> word;)
            if (!word.starts_with("path:")) names.push_back(word);
    }
    return names;
}

// The distribution a wrapper's properties name: the file of the distributionUrl less its
// ".zip" ("gradle-8.5-bin"); none when there is no such line.
Words wrapperDistributionOf(const std::string& text) {
    for (const auto& line : lines(text)) {
        const auto separator = line.find_first_of("=:");
        if (separator == std::string::npos || trimmed(line.substr(0, separator)) != "distributionUrl") continue;
        std::string file = trimmed(line.substr(separator + 1));
        file = file.substr(file.find_last_of('/') + 1);
        if (!file.ends_with(".zip")) return std::nullopt;
        std::vector<std::string> names{file.substr(0, file.size() - 4)};
        if (names[0].ends_with("-bin")) names.push_back(names[0].substr(0, names[0].size() - 4));
        return names;
    }
    return std::vector<std::string>{};
}

// The versions mise's config file names for the tools in its [tools] table: a string, a list
// of strings or of tables, or a table, each table with its "version". Anything else under
// one of those tools, or a file that is not TOML, is not understood.
Words miseToolVersions(const std::string& text, const std::set<std::string>& tools) {
    const auto document = tomlTable(text);
    if (!document) return std::nullopt;
    std::vector<std::string> versions;
    const auto add = [&versions](const toml::node& node) {
        const toml::node* version = node.is_table() ? node.as_table()->get("version") : &node;
        if (version && version->is_array()) {
            for (const auto& each : *version->as_array()) {
                if (!each.is_string()) return false;
                versions.push_back(*each.value<std::string>());
            }
            return true;
        }
        const auto name = version ? version->value<std::string>() : std::nullopt;
        if (name) versions.push_back(*name);
        return name.has_value();
    };
    const auto node = (*document)["tools"];
    if (!node) return versions;
    const auto* table = node.as_table();
    if (!table) return std::nullopt;
    for (const auto& [key, value] : *table) {
        std::string name(key.str());
        std::replace(name.begin(), name.end(), ':', '-');
        std::replace(name.begin(), name.end(), '/', '-');
        if (!tools.contains(name)) continue;
        if (const auto* list = value.as_array()) {
            for (const auto& each : *list)
                if (!add(each)) return std::nullopt;
        } else if (!add(value)) {
            return std::nullopt;
        }
    }
    return versions;
}

// The names a default, pin or variable's text holds, read by the syntax; nothing when the
// text is not of that form.
Words namesIn(const std::string& text, VersionSyntax syntax, const std::set<std::string>& language, bool toml) {
    switch (syntax) {
        case VersionSyntax::miseConfig:
            return toml ? miseToolVersions(text, language) : languageWords(text, VersionSyntax::toolLines, language);
        case VersionSyntax::rustToolchain: return rustToolchainOf(text, toml);
        case VersionSyntax::rustupSettings: return rustupSettingsOf(text);
        case VersionSyntax::toolLines:
        case VersionSyntax::toolAssignments: return languageWords(text, syntax, language);
        case VersionSyntax::wrapperUrl: return wrapperDistributionOf(text);
        default: return wordsOf(text);
    }
}

bool plainName(const std::string& text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
        return std::isalnum(static_cast<unsigned char>(c)) || c == '.' || c == '_' || c == '-' || c == '+';
    });
}

// Numbers of a dotted version ("v20.11.0" -> 20, 11, 0), for ordering node versions.
std::vector<long> numbersOf(const std::string& name) {
    std::vector<long> numbers;
    std::string digits;
    for (char c : name + ".") {
        if (std::isdigit(static_cast<unsigned char>(c))) digits += c;
        else if (!digits.empty()) {
            numbers.push_back(std::stol(digits.substr(0, 9)));
            digits.clear();
        }
    }
    return numbers;
}

std::string nodeName(const std::string& name) {
    return name.size() > 1 && name[0] == 'v' && std::isdigit(static_cast<unsigned char>(name[1])) ? name.substr(1)
                                                                                                   : name;
}

// "IntelliJIdea2024.1": {"IntelliJIdea", "2024.1"}; no product when the name does not end in
// a dotted version after some other text.
std::pair<std::string, std::string> productOf(const std::string& name) {
    std::size_t start = name.size();
    while (start > 0 && (std::isdigit(static_cast<unsigned char>(name[start - 1])) || name[start - 1] == '.')) --start;
    while (start < name.size() && name[start] == '.') ++start;
    const std::string number = name.substr(start);
    if (start == 0 || number.find('.') == std::string::npos || number.back() == '.') return {"", name};
    return {name.substr(0, start), number};
}

// One tool's versions and what keeps each of them.
class ManagerScan {
public:
    // `language` is empty for a tool of one language; `defaultFile` empty when it has no default.
    ManagerScan(const VersionManager& row, fs::path root, std::string language, std::vector<fs::path> defaultFiles)
        : row_(row), root_(std::move(root)), language_(std::move(language)), defaultFiles_(std::move(defaultFiles)) {
        versions_ = row_.versionsFolder.empty() ? root_ : root_ / row_.versionsFolder;
        if (!language_.empty()) versions_ /= language_;
        languageNames_.insert(language_);
        for (const auto& alias : row_.languageAliases)
            if (alias.language == language_) languageNames_.insert(alias.name);
    }

    // False when the versions folder is absent (the tool is not used here).
    bool list() {
        if (platform::isPresent(versions_) == false) return false;
        const auto entries = platform::listDirectory(versions_, true);
        if (!entries) {
            problem_ = versions_.string();
            return true;
        }
        for (const auto& entry : *entries) {
            if (entry.type == platform::EntryType::symlink) links_.insert(entry.name);
            else if (entry.type == platform::EntryType::directory) installed_.push_back(entry.name);
            else if (!entry.type && platform::isSymbolicLink(versions_ / entry.name) == false &&
                     platform::listDirectory(versions_ / entry.name, true))
                installed_.push_back(entry.name);
        }
        std::sort(installed_.begin(), installed_.end());
        return true;
    }

    void readDefaults() {
        for (const auto& file : defaultFiles_) readDefault(file);
    }

    void readDefault(const fs::path& file) {
        if (problem_ || file.empty()) return;
        if (row_.defaultSyntax == VersionSyntax::aliasLink) {
            if (platform::isPresent(file) == false) return;
            if (!platform::isSymbolicLink(file).value_or(false) || !keepLinkTarget(file)) problem_ = file.string();
            else if (!lastLinked_.empty()) defaultNames_.push_back(lastLinked_);
            return;
        }
        const bool required = row_.defaultSyntax == VersionSyntax::rustupSettings;
        if (!required && platform::isPresent(file) == false) return;
        const auto text = platform::readRegularFile(file, settingsLimit);
        const Words names =
            text ? namesIn(*text, row_.defaultSyntax, languageNames_, file.extension() == ".toml") : Words{};
        if (!names || !keepAll(*names, 0, &defaultNames_)) problem_ = file.string();
    }

    // The variable a shell picks versions with counts as a default.
    void readVariable(const std::map<std::string, std::string, std::less<>>& variables) {
        if (problem_ || row_.versionVariable.empty()) return;
        const auto value = variables.find(row_.versionVariable);
        if (value == variables.end()) return;
        std::string text = value->second;
        std::replace(text.begin(), text.end(), ':', ' ');
        if (!keepAll(wordsOf(text), 0, &defaultNames_)) problem_ = "$" + row_.versionVariable;
    }

    void readPin(const ProjectPins::Pin& pin) {
        if (problem_) return;
        const std::string& name = pin.name;
        const auto ownPin = std::find_if(row_.languagePins.begin(), row_.languagePins.end(),
                                         [&](const auto& own) { return own.name == name; });
        if (ownPin != row_.languagePins.end()) {
            if (ownPin->language != language_) return;
            if (!pin.text || !keepAll(wordsOf(*pin.text), 0, nullptr)) problem_ = pin.file.string();
            return;
        }
        if (std::find(row_.pinFiles.begin(), row_.pinFiles.end(), name) == row_.pinFiles.end()) return;
        const Words names =
            pin.text ? namesIn(*pin.text, row_.pinSyntax, languageNames_, name.ends_with(".toml")) : Words{};
        if (!names || !keepAll(*names, 0, nullptr)) problem_ = pin.file.string();
    }

    // The version whose folder changed last, or of each product its newest version; nothing
    // is understood when a time cannot be read.
    void keepNewestInUse() {
        if (row_.naming == VersionNaming::productVersion) {
            for (const auto& version : installed_) {
                const auto [product, number] = productOf(version);
                auto& newest = newestOf_[product];
                if (product.empty()) kept_.insert(version);
                else if (newest.empty() || numbersOf(productOf(newest).second) < numbersOf(number)) newest = version;
            }
            for (const auto& [product, version] : newestOf_) kept_.insert(version);
            return;
        }
        std::optional<Clock::time_point> latest;
        for (const auto& version : installed_) {
            const auto changed = platform::modificationTime(versions_ / version, false);
            if (!changed) {
                problem_ = (versions_ / version).string();
                return;
            }
            if (!latest || *changed > *latest) {
                latest = changed;
                newestOf_[""] = version;
            }
        }
        if (latest) kept_.insert(newestOf_[""]);
    }

    void readVenvHome(const fs::path& home) {
        for (const auto& version : installed_) {
            const std::string folder = Paths::standardized(versions_ / version).string();
            const std::string resolved = Paths::standardized(platform::resolveSymlinks(versions_ / version)).string();
            if (Paths::isInside(home.string(), folder) || Paths::isInside(home.string(), resolved))
                kept_.insert(version);
        }
    }

    const VersionManager& row() const { return row_; }
    const std::string& language() const { return language_; }
    const std::optional<std::string>& problem() const { return problem_; }
    const fs::path& versionsFolder() const { return versions_; }
    const std::vector<std::string>& defaultNames() const { return defaultNames_; }
    const std::vector<std::string>& installed() const { return installed_; }
    // The version in use beside this one (a newestInUse tool).
    std::string newestBeside(const std::string& version) const {
        const auto found = newestOf_.find(row_.naming == VersionNaming::productVersion ? productOf(version).first : "");
        return found == newestOf_.end() ? "" : found->second;
    }
    std::vector<std::string> unkept() const {
        std::vector<std::string> result;
        for (const auto& version : installed_)
            if (!kept_.contains(version)) result.push_back(version);
        return result;
    }

private:
    bool keepAll(const std::vector<std::string>& names, int depth, std::vector<std::string>* record) {
        for (const auto& name : names) {
            if (record) record->push_back(name);
            if (!keep(name, depth)) return false;
        }
        return true;
    }

    // Keeps every installed version the name could stand for; false when it is not understood.
    bool keep(std::string name, int depth) {
        name = trimmed(name);
        if (name.empty() || name == "system") return true;
        if (depth > aliasDepthLimit) return false;
        bool mustMatch = false;
        if (row_.naming == VersionNaming::numbered) {
            if (name.starts_with("path:")) return true;
            if (name.starts_with("prefix:")) name = name.substr(7);
            if (name.size() > 1 && name[0] == 'v' && std::isdigit(static_cast<unsigned char>(name[1])))
                name = name.substr(1);
            // A word of letters is a version's own name or an alias mise resolves elsewhere.
            mustMatch = !std::isdigit(static_cast<unsigned char>(name[0])) && name != "latest" && !links_.contains(name);
        }
        if ((row_.naming == VersionNaming::plain || row_.naming == VersionNaming::numbered) && name == "latest") {
            keepNewest();
            return true;
        }
        if (row_.naming == VersionNaming::nodeStyle) {
            if (name == "node" || name == "stable" || name == "latest" || name == "current") {
                keepNewest();
                return true;
            }
            // Long-term support lines are the even-numbered majors.
            if (name == "lts" || name.starts_with("lts/") || name == "--lts") {
                for (const auto& version : installed_) {
                    const auto numbers = numbersOf(version);
                    if (!numbers.empty() && numbers[0] % 2 == 0) kept_.insert(version);
                }
                return true;
            }
            if (!row_.aliasFolder.empty() && plainName(name) && !std::isdigit(static_cast<unsigned char>(name[0])) &&
                !(name[0] == 'v' && name.size() > 1 && std::isdigit(static_cast<unsigned char>(name[1])))) {
                const fs::path alias = root_ / row_.aliasFolder / name;
                if (row_.defaultSyntax == VersionSyntax::aliasLink) return keepLinkTarget(alias);
                const auto text = platform::readRegularFile(alias, settingsLimit);
                return text && keepAll(wordsOf(*text), depth + 1, nullptr);
            }
            name = nodeName(name);
        }
        if (row_.naming == VersionNaming::plain) {
            // A pyenv-virtualenv environment lives inside the version it was made from.
            if (const auto envs = name.find("/envs/"); envs != std::string::npos) name = name.substr(0, envs);
        }
        if (row_.naming == VersionNaming::uvKey) {
            std::replace(name.begin(), name.end(), '@', '-');
            if (std::isdigit(static_cast<unsigned char>(name[0]))) name = "cpython-" + name;
        }
        if (links_.contains(name)) return keepLinkTarget(versions_ / name);
        if (!plainName(name)) return false;
        bool matched = false;
        for (const auto& version : installed_) {
            const std::string written = row_.naming == VersionNaming::nodeStyle ? nodeName(version) : version;
            if (written == name || written.starts_with(name + ".") || written.starts_with(name + "-")) {
                kept_.insert(version);
                matched = true;
            }
        }
        return matched || !mustMatch;
    }

    // A link that resolves into an installed version keeps it; one that leads elsewhere (a
    // system installation) keeps nothing; one that cannot be resolved is not understood.
    bool keepLinkTarget(const fs::path& link) {
        if (platform::isPresent(link) != true) return false;
        const std::string target = Paths::standardized(platform::resolveSymlinks(link)).string();
        const std::string folder = Paths::standardized(platform::resolveSymlinks(versions_)).string();
        if (!Paths::isInside(target, folder)) return platform::exists(link);
        const std::string inside = target.substr(folder.size() + 1);
        lastLinked_ = inside.substr(0, inside.find('/'));
        kept_.insert(lastLinked_);
        return true;
    }

    void keepNewest() {
        const auto newest = std::max_element(installed_.begin(), installed_.end(), [](const auto& a, const auto& b) {
            return numbersOf(a) < numbersOf(b);
        });
        if (newest != installed_.end()) kept_.insert(*newest);
    }

    const VersionManager& row_;
    fs::path root_;
    std::string language_;
    std::vector<fs::path> defaultFiles_;
    fs::path versions_;
    std::vector<std::string> installed_;
    std::set<std::string> links_;
    std::set<std::string> kept_;
    std::vector<std::string> defaultNames_;
    std::optional<std::string> problem_;
    std::string lastLinked_;
    std::map<std::string, std::string> newestOf_;
    std::set<std::string> languageNames_;
};

fs::path rootOf(const VersionManager& row, const Environment& env) {
    if (auto moved = env.locationVariable(row.rootVariable)) return *moved;
    std::optional<fs::path> first;
    for (const auto& relative : row.defaultRoots) {
        const fs::path place = relative.starts_with("$data/")    ? env.dataHome() / relative.substr(6)
                               : relative.starts_with("$cache/") ? env.cacheHome() / relative.substr(7)
                                                                 : env.home / relative;
        if (platform::isPresent(place) != false) return place;
        if (!first) first = place;
    }
    return first.value_or(env.home);
}

// Last use: the main program's access time where the file system keeps one, else the
// version folder's own modification time.
struct LastUse {
    Clock::time_point when;
    bool ran = false;
};

std::optional<LastUse> lastUseOf(const fs::path& folder, const VersionManager& row) {
    const std::string& program = row.mainProgram;
    if (!program.empty() && row.mainProgramWritten)
        if (const auto written = platform::modificationTime(folder / program, false)) return LastUse{*written, true};
    if (!program.empty() && !row.mainProgramWritten && platform::recordsAccessTimes(folder) == true)
        if (const auto accessed = platform::accessTime(folder / program)) return LastUse{*accessed, true};
    if (const auto modified = platform::modificationTime(folder, false)) return LastUse{*modified, false};
    return std::nullopt;
}

}  // namespace

OldRuntimeDetector::OldRuntimeDetector(Environment env, int olderThanMonths, Clock::time_point now,
                                       ProbeDependency probe, CommandCleaner::ToolCheck toolAvailable,
                                       std::vector<VersionManager> managers)
    : CatalogCleaner("old-runtimes", L10n::t("cleaner.old-runtimes"), Family::oldRuntimes, Level::aggressive,
                     Reversibility::regenerable, RegenCost::redownload),
      env_(std::move(env)),
      olderThanMonths_(olderThanMonths),
      now_(now),
      probe_(std::move(probe)),
      toolAvailable_(toolAvailable ? std::move(toolAvailable) : CommandCleaner::ToolCheck(&CommandCleaner::which)),
      managers_(std::move(managers)) {}

std::vector<CleanTarget> OldRuntimeDetector::scan(const ScanContext& context) const {
    std::vector<ManagerScan> scans;
    std::set<std::string> pinNames;
    for (const auto& row : managers_) {
        const fs::path root = rootOf(row, env_);
        const auto defaultFiles = [&](const fs::path& versions) -> std::vector<fs::path> {
            if (row.defaultFile.empty()) return {};
            fs::path file = row.defaultFile.starts_with("~/")        ? env_.home / row.defaultFile.substr(2)
                            : row.defaultFile.starts_with("$config/") ? env_.configHome() / row.defaultFile.substr(8)
                            : row.perLanguage                         ? versions / row.defaultFile
                                                                      : root / row.defaultFile;
            for (const auto& variable : row.defaultVariables) {
                const auto slash = variable.find('/');
                if (auto moved = env_.locationVariable(variable.substr(0, slash))) {
                    file = slash == std::string::npos ? *moved : *moved / variable.substr(slash + 1);
                    break;
                }
            }
            std::vector<fs::path> files{file};
            if (row.defaultDropIns.empty()) return files;
            // A folder that cannot be listed stands for itself: reading it fails, and says so.
            const fs::path dropIns = file.parent_path() / row.defaultDropIns;
            if (platform::isPresent(dropIns) == false) return files;
            const auto entries = platform::listDirectory(dropIns, true);
            if (!entries) files.push_back(dropIns);
            else
                for (const auto& entry : *entries)
                    if (entry.name.ends_with(".toml")) files.push_back(dropIns / entry.name);
            return files;
        };
        std::vector<std::string> languages{""};
        if (row.perLanguage) {
            const fs::path grouped = row.versionsFolder.empty() ? root : root / row.versionsFolder;
            if (platform::isPresent(grouped) == false) continue;
            ManagerScan all(row, root, "", {});
            all.list();
            languages = all.installed();
            if (all.problem()) {
                context.note(L10n::t("prepare.note.runtimeNotUnderstood", row.name, *all.problem()));
                continue;
            }
        }
        for (const auto& language : languages) {
            ManagerScan scan(row, root, language, defaultFiles(root / row.versionsFolder / language));
            if (!scan.list()) continue;
            scans.push_back(std::move(scan));
            pinNames.insert(row.pinFiles.begin(), row.pinFiles.end());
            for (const auto& pin : row.languagePins) pinNames.insert(pin.name);
        }
    }
    if (scans.empty()) return {};

    auto pins = ProjectPins::read(env_.resolvedProjectRoots(), pinNames, context.stop);
    // The home holds every project below it: its own pins count, not those of its other folders.
    auto homePins = ProjectPins::read({env_.home}, pinNames, context.stop, 0);
    pins.pins.insert(pins.pins.end(), homePins.pins.begin(), homePins.pins.end());
    pins.unreadable.insert(pins.unreadable.end(), homePins.unreadable.begin(), homePins.unreadable.end());
    if (!pins.unreadable.empty()) {
        context.note(L10n::t("prepare.note.runtimesUnreadable", pins.unreadable.front().string()));
        return {};
    }

    const auto cutOff = monthsBefore(now_, olderThanMonths_);
    std::vector<CleanTarget> targets;
    std::set<std::string> noted;
    for (auto& scan : scans) {
        const VersionManager& row = scan.row();
        scan.readDefaults();
        scan.readVariable(env_.versionVariables);
        if (row.newestInUse) scan.keepNewestInUse();
        for (const auto& pin : pins.pins) scan.readPin(pin);
        for (const auto& home : pins.venvHomes) scan.readVenvHome(home);
        if (scan.problem()) {
            // Every language of a tool may stumble on the same file: one note for it.
            if (noted.insert(row.id + "\n" + *scan.problem()).second)
                context.note(L10n::t("prepare.note.runtimeNotUnderstood", row.name, *scan.problem()));
            continue;
        }
        const std::string tool = row.removal.substr(0, row.removal.find(' '));
        const bool toolFound = !tool.empty() && toolAvailable_(tool);
        // A multi-language tool names the language before the version.
        const std::string language = scan.language().empty() ? "" : scan.language() + "/";
        const auto removalWord = [&](const std::string& version) {
            if (scan.language().empty()) return ShellCommand::word(version);
            if (row.languageJoin != " ") return ShellCommand::word(scan.language() + row.languageJoin + version);
            return ShellCommand::word(scan.language()) + " " + ShellCommand::word(version);
        };
        for (const auto& version : scan.unkept()) {
            if (context.stop.stop_requested()) return targets;
            const fs::path folder = scan.versionsFolder() / version;
            if (probe_->isRunningFrom(Paths::standardized(folder).string())) continue;
            const auto used = lastUseOf(folder, row);
            if (!used || used->when >= cutOff) continue;
            const auto months = std::chrono::duration_cast<std::chrono::hours>(now_ - used->when).count() / (24 * 30);

            std::string why = row.newestInUse ? L10n::t("prepare.oldRuntime.why.notNewest", scan.newestBeside(version))
                              : scan.defaultNames().empty()
                                  ? L10n::t("prepare.oldRuntime.why.noDefault")
                                  : L10n::t("prepare.oldRuntime.why.default", joined(scan.defaultNames()));
            if (!row.newestInUse) why += L10n::t("prepare.oldRuntime.why.unpinned");
            why += L10n::plural(used->ran ? "prepare.oldRuntime.why.unused" : "prepare.oldRuntime.why.unchanged",
                                months, static_cast<std::int64_t>(months));
            const auto measured = context.sizer.measure(folder);
            if (measured.hadErrors) why += " " + CleanTarget::partialSizeNote();
            auto kind = toolFound ? CleanKind::command("test -d " + ShellCommand::word(folder.string()) + "; " +
                                                       row.removal + " " + removalWord(version))
                                  : CleanKind::paths({folder});
            auto item = target("runtime:" + row.id + "/" + language + version,
                               L10n::t("prepare.oldRuntime.target", row.name, language + version), std::move(kind),
                               measured.bytes, std::move(why));
            item.regenCost = row.regenCost;
            targets.push_back(std::move(item));
        }
    }
    return targets;
}

}  // namespace kelvo
