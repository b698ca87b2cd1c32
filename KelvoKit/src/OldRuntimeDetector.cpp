#include "kelvo/OldRuntimeDetector.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <sstream>

#include "kelvo/L10n.h"
#include "kelvo/MonthsBefore.h"
#include "kelvo/Paths.h"
#include "kelvo/ProjectPins.h"
#include "kelvo/ShellCommand.h"
#include "kelvo/platform/FileSystem.h"

namespace kelvo {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::system_clock;
using Words = std::optional<std::vector<std::string>>;

constexpr std::size_t settingsLimit = 256 * 1024;
constexpr int aliasDepthLimit = 8;

std::string trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos) return {};
    const auto last = text.find_last_not_of(" \t\r\n");
    return std::string(text.substr(first, last - first + 1));
}

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

// `key = "value"` on one line: the value; nothing when the line is not of that form.
std::optional<std::string> quotedValue(const std::string& line, std::string_view key) {
    const auto equals = line.find('=');
    if (equals == std::string::npos) return std::nullopt;
    std::string name = trimmed(line.substr(0, equals));
    if (name.size() >= 2 && name.front() == '"' && name.back() == '"') name = name.substr(1, name.size() - 2);
    if (!key.empty() && name != key) return std::nullopt;
    const std::string value = trimmed(line.substr(equals + 1));
    if (value.size() < 2 || value.front() != '"' || value.back() != '"') return std::nullopt;
    return value.substr(1, value.size() - 2);
}

// rust-toolchain.toml's channel; a path toolchain pins nothing installed here. The legacy
// file holds the channel alone on its one line.
Words rustToolchainOf(const std::string& text, bool toml) {
    if (!toml && text.find("[toolchain]") == std::string::npos) {
        const auto words = wordsOf(text);
        if (words.size() > 1) return std::nullopt;
        return words;
    }
    bool inToolchain = false;
    bool understood = false;
    std::vector<std::string> channels;
    for (const auto& line : lines(text)) {
        if (line.empty() || line.starts_with('#')) continue;
        if (line.starts_with('[')) {
            inToolchain = line == "[toolchain]";
            continue;
        }
        if (!inToolchain) continue;
        if (auto channel = quotedValue(line, "channel")) {
            channels.push_back(*channel);
            understood = true;
        } else if (quotedValue(line, "path")) {
            understood = true;
        }
    }
    if (!understood) return std::nullopt;
    return channels;
}

// settings.toml: the default toolchain and every directory override's toolchain.
Words rustupSettingsOf(const std::string& text) {
    std::string section;
    std::optional<std::string> defaultToolchain;
    std::vector<std::string> names;
    for (const auto& line : lines(text)) {
        if (line.empty() || line.starts_with('#')) continue;
        if (line.starts_with('[')) {
            section = line;
            continue;
        }
        if (section.empty()) {
            if (auto value = quotedValue(line, "default_toolchain")) defaultToolchain = value;
        } else if (section == "[overrides]") {
            auto value = quotedValue(line, "");
            if (!value) return std::nullopt;
            names.push_back(*value);
        }
    }
    if (!defaultToolchain) return std::nullopt;
    names.insert(names.begin(), *defaultToolchain);
    return names;
}

// The versions a multi-language tool's file names for one language: "<language> v1 v2" lines
// (a "#" starts a comment anywhere; a "path:" version is a folder of the user's, nothing
// installed here) or "<language>=v" lines; nothing when a line is of neither form.
Words languageWords(const std::string& text, VersionSyntax syntax, const std::string& language) {
    std::vector<std::string> names;
    for (auto line : lines(text)) {
        if (syntax == VersionSyntax::toolLines) line = trimmed(line.substr(0, line.find('#')));
        if (line.empty() || line.starts_with('#')) continue;
        if (syntax == VersionSyntax::toolAssignments) {
            const auto equals = line.find('=');
            if (equals == std::string::npos) return std::nullopt;
            if (trimmed(line.substr(0, equals)) == language) names.push_back(trimmed(line.substr(equals + 1)));
            continue;
        }
        std::istringstream in(line);
        std::string first;
        in >> first;
        if (first != language) continue;
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
        return std::vector<std::string>{file.substr(0, file.size() - 4)};
    }
    return std::vector<std::string>{};
}

// The names a default, pin or variable's text holds, read by the syntax; nothing when the
// text is not of that form.
Words namesIn(const std::string& text, VersionSyntax syntax, const std::string& language, bool toml) {
    switch (syntax) {
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

// One tool's versions and what keeps each of them.
class ManagerScan {
public:
    // `language` is empty for a tool of one language; `defaultFile` empty when it has no default.
    ManagerScan(const VersionManager& row, fs::path root, std::string language, fs::path defaultFile)
        : row_(row), root_(std::move(root)), language_(std::move(language)), defaultFile_(std::move(defaultFile)) {
        versions_ = row_.versionsFolder.empty() ? root_ : root_ / row_.versionsFolder;
        if (!language_.empty()) versions_ /= language_;
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

    void readDefault() {
        if (problem_ || defaultFile_.empty()) return;
        const fs::path& file = defaultFile_;
        if (row_.defaultSyntax == VersionSyntax::aliasLink) {
            if (platform::isPresent(file) == false) return;
            if (!platform::isSymbolicLink(file).value_or(false) || !keepLinkTarget(file)) problem_ = file.string();
            else if (!lastLinked_.empty()) defaultNames_.push_back(lastLinked_);
            return;
        }
        const bool required = row_.defaultSyntax == VersionSyntax::rustupSettings;
        if (!required && platform::isPresent(file) == false) return;
        const auto text = platform::readRegularFile(file, settingsLimit);
        const Words names = text ? namesIn(*text, row_.defaultSyntax, language_, false) : Words{};
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
        const std::string name = pin.file.filename().string();
        if (std::find(row_.pinFiles.begin(), row_.pinFiles.end(), name) == row_.pinFiles.end()) return;
        const Words names =
            pin.text ? namesIn(*pin.text, row_.pinSyntax, language_, name.ends_with(".toml")) : Words{};
        if (!names || !keepAll(*names, 0, nullptr)) problem_ = pin.file.string();
    }

    // The version whose folder changed last; nothing is understood when a time cannot be read.
    void keepLastChanged() {
        std::optional<Clock::time_point> latest;
        for (const auto& version : installed_) {
            const auto changed = platform::modificationTime(versions_ / version, false);
            if (!changed) {
                problem_ = (versions_ / version).string();
                return;
            }
            if (!latest || *changed > *latest) {
                latest = changed;
                newest_ = version;
            }
        }
        if (latest) kept_.insert(newest_);
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
    const std::string& newest() const { return newest_; }
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
        if (row_.naming == VersionNaming::plain && name == "latest") {
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
        for (const auto& version : installed_) {
            const std::string written = row_.naming == VersionNaming::nodeStyle ? nodeName(version) : version;
            if (written == name || written.starts_with(name + ".") || written.starts_with(name + "-"))
                kept_.insert(version);
        }
        return true;
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
    fs::path defaultFile_;
    fs::path versions_;
    std::vector<std::string> installed_;
    std::set<std::string> links_;
    std::set<std::string> kept_;
    std::vector<std::string> defaultNames_;
    std::optional<std::string> problem_;
    std::string lastLinked_;
    std::string newest_;
};

fs::path rootOf(const VersionManager& row, const Environment& env) {
    if (auto moved = env.locationVariable(row.rootVariable)) return *moved;
    std::optional<fs::path> first;
    for (const auto& relative : row.defaultRoots) {
        const fs::path place = relative.starts_with("$data/") ? env.dataHome() / relative.substr(6) : env.home / relative;
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

std::optional<LastUse> lastUseOf(const fs::path& folder, const std::string& program) {
    if (!program.empty() && platform::recordsAccessTimes(folder) == true)
        if (const auto accessed = platform::accessTime(folder / program)) return LastUse{*accessed, true};
    if (const auto modified = platform::modificationTime(folder, false)) return LastUse{*modified, false};
    return std::nullopt;
}

std::string joined(const std::vector<std::string>& names) {
    std::string text;
    for (const auto& name : names) text += (text.empty() ? "" : ", ") + name;
    return text;
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
        const auto defaultFile = [&](const fs::path& versions) -> fs::path {
            if (row.defaultFile.empty()) return {};
            if (row.defaultFile.starts_with("~/")) return env_.home / row.defaultFile.substr(2);
            return row.perLanguage ? versions / row.defaultFile : root / row.defaultFile;
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
            ManagerScan scan(row, root, language, defaultFile(root / row.versionsFolder / language));
            if (!scan.list()) continue;
            scans.push_back(std::move(scan));
            pinNames.insert(row.pinFiles.begin(), row.pinFiles.end());
        }
    }
    if (scans.empty()) return {};

    const auto pins = ProjectPins::read(env_.resolvedProjectRoots(), pinNames, context.stop);
    if (!pins.unreadable.empty()) {
        context.note(L10n::t("prepare.note.runtimesUnreadable", pins.unreadable.front().string()));
        return {};
    }

    const auto cutOff = monthsBefore(now_, olderThanMonths_);
    std::vector<CleanTarget> targets;
    std::set<std::string> noted;
    for (auto& scan : scans) {
        const VersionManager& row = scan.row();
        scan.readDefault();
        scan.readVariable(env_.versionVariables);
        if (row.newestInUse) scan.keepLastChanged();
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
        const std::string languageWord = scan.language().empty() ? "" : ShellCommand::word(scan.language()) + " ";
        for (const auto& version : scan.unkept()) {
            if (context.stop.stop_requested()) return targets;
            const fs::path folder = scan.versionsFolder() / version;
            if (probe_->isRunningFrom(Paths::standardized(folder).string())) continue;
            const auto used = lastUseOf(folder, row.mainProgram);
            if (!used || used->when >= cutOff) continue;
            const auto months = std::chrono::duration_cast<std::chrono::hours>(now_ - used->when).count() / (24 * 30);

            std::string why = row.newestInUse ? L10n::t("prepare.oldRuntime.why.notNewest", scan.newest())
                              : scan.defaultNames().empty()
                                  ? L10n::t("prepare.oldRuntime.why.noDefault")
                                  : L10n::t("prepare.oldRuntime.why.default", joined(scan.defaultNames()));
            if (!row.newestInUse) why += L10n::t("prepare.oldRuntime.why.unpinned");
            why += L10n::plural(used->ran ? "prepare.oldRuntime.why.unused" : "prepare.oldRuntime.why.unchanged",
                                months, static_cast<std::int64_t>(months));
            const auto measured = context.sizer.measure(folder);
            if (measured.hadErrors) why += " " + CleanTarget::partialSizeNote();
            auto kind = toolFound ? CleanKind::command("test -d " + ShellCommand::word(folder.string()) + "; " +
                                                       row.removal + " " + languageWord + ShellCommand::word(version))
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
