#include "kelvo/CleanerRegistry.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <optional>
#include <set>

#include "catalog/CatalogPlaces.h"
#include "catalog/CatalogTable.h"
#include "catalog/CommandCleaner.h"
#include "kelvo/L10n.h"
#include "catalog/PathCleaner.h"
#include "vocabulary/Paths.h"
#include "kelvo/PerProjectCleaner.h"
#include "catalog/PlaceMarks.h"
#include "catalog/VersionedDirCleaner.h"
#include "vocabulary/Text.h"

namespace kelvo {
namespace {

using Spec = PerProjectCleaner::ArtifactSpec;

using enum Level;
using enum RegenCost;
// Every kind of project folder can be regenerated; none is user data.
constexpr Reversibility regenerable = Reversibility::regenerable;

// The kinds of folder found inside projects, in the order they are matched and reported.
std::vector<Spec> artifactSpecs() {
    const std::vector<std::string> dotNetProject{"*.csproj|*.fsproj|*.vbproj|*.sln"};
    const std::vector<std::string> unityProject{"Assets", "ProjectSettings"};
    const std::vector<std::string> unrealProject{"*.uproject"};
    return {
        {"node_modules", moderate, regenerable, redownload, {}},
        {"build", moderate, regenerable, rebuild, {}},
        {".dart_tool", safe, regenerable, reindex, {}},
        {"Pods", safe, regenerable, redownload, {}},
        {".gradle", safe, regenerable, rebuild, {}},
        {".next", safe, regenerable, rebuild, {}},
        {".build", safe, regenerable, rebuild, {}},
        {".expo", safe, regenerable, rebuild, {}},
        {".nuxt", safe, regenerable, rebuild, {}},
        {".svelte-kit", safe, regenerable, rebuild, {}},
        {".astro", safe, regenerable, rebuild, {}},
        {".parcel-cache", safe, regenerable, rebuild, {}},
        {".turbo", safe, regenerable, rebuild, {}},
        {".angular", safe, regenerable, rebuild, {}},
        {".nx", safe, regenerable, rebuild, {}},
        {".output", moderate, regenerable, rebuild, {"nuxt.config.js|nuxt.config.ts|nuxt.config.mjs"}},
        {".cache", moderate, regenerable, rebuild,
         {"gatsby-config.js|gatsby-config.ts|gatsby-config.mjs|gatsby-config.cjs"}},
        {"bin", safe, regenerable, rebuild, dotNetProject},
        {"obj", safe, regenerable, rebuild, dotNetProject},
        {".scala-build", safe, regenerable, rebuild, {}},
        {".bloop", moderate, regenerable, rebuild, {}},
        {".metals", moderate, regenerable, reindex, {}},
        {"__pycache__", safe, regenerable, rebuild, {}},
        {".pytest_cache", safe, regenerable, rebuild, {}},
        {".mypy_cache", safe, regenerable, rebuild, {}},
        {".ruff_cache", safe, regenerable, rebuild, {}},
        {".tox", moderate, regenerable, redownload, {}},
        {"_build", safe, regenerable, rebuild, {"mix.exs|rebar.config"}},
        {".zig-cache", safe, regenerable, rebuild, {}},
        {"zig-cache", safe, regenerable, rebuild, {}},
        {".terraform", safe, regenerable, redownload, {}},
        {"Library", aggressive, regenerable, rebuild, unityProject},
        {"Temp", safe, regenerable, rebuild, unityProject},
        {"DerivedDataCache", safe, regenerable, rebuild, unrealProject},
        {"Intermediate", safe, regenerable, rebuild, unrealProject},
    };
}

// The kinds of the Linux profile: the same 35, "_build" also beside an OCaml project, then
// the build folders of tool chains that live mostly on Linux. Left out on purpose: .bundle
// (Bundler settings), .vercel and .netlify (project links), .swiftpm, .idea,
// .ipynb_checkpoints (notebook backups), .devenv (service state), vendor (committed in
// Go projects), and result and bazel-* (links).
std::vector<Spec> linuxArtifactSpecs() {
    std::vector<Spec> specs = artifactSpecs();
    for (auto& spec : specs)
        if (spec.dirName == "_build") spec.requiresSibling = {"mix.exs|rebar.config|dune-project"};
    const std::vector<std::string> cmakeProject{"CMakeLists.txt"};
    const std::vector<std::string> pythonProject{"pyproject.toml|requirements.txt|setup.py|setup.cfg|Pipfile"};
    // An environment is one only with its pyvenv.cfg, and can be made again only from a
    // file that records what it held.
    const std::vector<std::string> pythonEnvironment{"pyvenv.cfg"};
    const std::string pythonLocks = "uv.lock|poetry.lock|pdm.lock|Pipfile.lock|requirements*.txt";
    const std::vector<std::string> mixProject{"mix.exs"};
    const std::vector<std::string> nodeProject{"package.json"};
    const std::vector<Spec> added{
        {"target", safe, regenerable, rebuild, {"Cargo.toml|pom.xml|build.sbt"}},
        {"cmake-build-debug", safe, regenerable, rebuild, cmakeProject},
        {"cmake-build-release", safe, regenerable, rebuild, cmakeProject},
        {"cmake-build-relwithdebinfo", safe, regenerable, rebuild, cmakeProject},
        {"cmake-build-minsizerel", safe, regenerable, rebuild, cmakeProject},
        {"CMakeFiles", moderate, regenerable, rebuild, {"CMakeCache.txt"}},
        {"zig-out", moderate, regenerable, rebuild, {"build.zig"}},
        {".nox", moderate, regenerable, redownload, {"noxfile.py"}},
        {".venv", moderate, regenerable, redownload, pythonProject, pythonEnvironment, pythonLocks},
        {"venv", moderate, regenerable, redownload, pythonProject, pythonEnvironment, pythonLocks},
        {"__pypackages__", moderate, regenerable, redownload, {"pyproject.toml"}},
        {".pixi", moderate, regenerable, redownload, {"pixi.toml|pyproject.toml"}},
        {".pytype", safe, regenerable, rebuild, {}},
        {".pyre", safe, regenerable, rebuild, {}},
        // Keeps the examples that made tests fail.
        {".hypothesis", moderate, regenerable, rebuild, {}},
        {"dist-newstyle", safe, regenerable, rebuild, {"cabal.project|*.cabal"}},
        {".stack-work", safe, regenerable, rebuild, {"stack.yaml"}},
        {"elm-stuff", safe, regenerable, redownload, {"elm.json"}},
        {"deps", safe, regenerable, redownload, mixProject},
        {".elixir_ls", safe, regenerable, reindex, mixProject},
        {".lexical", safe, regenerable, reindex, mixProject},
        {"_opam", aggressive, regenerable, redownload, {"dune-project|*.opam"}},
        {".cpcache", safe, regenerable, rebuild, {"deps.edn"}},
        {".shadow-cljs", safe, regenerable, rebuild, {"shadow-cljs.edn"}},
        {".godot", safe, regenerable, rebuild, {"project.godot"}},
        {".import", safe, regenerable, rebuild, {"project.godot"}},
        {".cxx", safe, regenerable, rebuild, {"build.gradle|build.gradle.kts"}},
        {".kotlin", safe, regenerable, rebuild, {"settings.gradle.kts|settings.gradle|build.gradle.kts"}},
        {".terragrunt-cache", safe, regenerable, redownload, {"terragrunt.hcl"}},
        {".direnv", safe, regenerable, redownload, {".envrc"}},
        {".pio", safe, regenerable, redownload, {"platformio.ini"}},
        {"nimcache", safe, regenerable, rebuild, {"*.nimble"}},
        {".docusaurus", safe, regenerable, rebuild, nodeProject},
        {".nyc_output", safe, regenerable, rebuild, nodeProject},
        {".swc", safe, regenerable, rebuild, nodeProject},
        {"storybook-static", safe, regenerable, rebuild, nodeProject},
        {".ccls-cache", safe, regenerable, reindex, {}},
    };
    specs.insert(specs.end(), added.begin(), added.end());
    return specs;
}

std::vector<Spec> profileSpecs(const Environment& env) {
    return env.catalog == CatalogProfile::gnuLinux ? linuxArtifactSpecs() : artifactSpecs();
}

// Folders below a project root that tag themselves as caches (Cargo, Meson, pytest, ...).
Spec cacheTaggedSpec() { return {"CACHEDIR.TAG", safe, regenerable, rebuild, {}}; }

// Builds the profile's entries from the table, each place found the one way (CatalogPlaces)
// and admitted or left out by the one rule below; every display name is "cleaner.<id>".
class CatalogBuilder {
public:
    explicit CatalogBuilder(const Environment& env) : env_(env), roots_(CleanerRegistry::allowedRoots(env)) {
        userFolders_.push_back(Paths::standardized(env.home).string());
        for (const auto& root : env.resolvedProjectRoots()) userFolders_.push_back(Paths::standardized(root).string());
    }

    void add(const CatalogTable::Entry& entry) {
        const auto& placement = entry.on(env_.catalog);
        if (placement.places.empty()) return;
        const std::string id(entry.id);
        std::string name = L10n::t("cleaner." + id);
        auto guards = CatalogPlaces::list(entry.guards);
        if (entry.kind == CatalogTable::Kind::command) {
            cleaners_.push_back(std::make_shared<CommandCleaner>(
                id, std::move(name), entry.family, std::string(placement.places), entry.level, placement.reversibility,
                entry.cost, 0, CommandCleaner::ToolCheck(), std::move(guards)));
            return;
        }
        auto marks = CatalogPlaces::list(placement.marks);
        const bool versioned = entry.kind == CatalogTable::Kind::versioned;
        std::vector<std::filesystem::path> places;
        for (auto& place : CatalogPlaces::resolve(placement.places, env_))
            if (admits(id, place, marks, versioned)) places.push_back(std::move(place.path));
        // An entry left without places is not offered.
        if (places.empty()) return;
        if (versioned) {
            cleaners_.push_back(std::make_shared<VersionedDirCleaner>(
                id, std::move(name), entry.family, std::move(places.front()), CatalogPlaces::list(entry.prefixes),
                entry.level, placement.reversibility, entry.cost, std::move(marks)));
            return;
        }
        // Based at the root, so that base and relative path together name each place.
        std::vector<std::string> relativePaths;
        for (const auto& place : places) relativePaths.push_back(place.relative_path().string());
        cleaners_.push_back(std::make_shared<PathCleaner>(id, std::move(name), entry.family, "/",
                                                          std::move(relativePaths), entry.level,
                                                          placement.reversibility, entry.cost, std::move(marks),
                                                          std::move(guards), std::string(entry.unlessFound)));
    }
    void add(std::shared_ptr<const Cleaner> cleaner) { cleaners_.push_back(std::move(cleaner)); }

    CleanerList take() { return std::move(cleaners_); }

    // One note per variable that cost entries their places, saying why and naming them.
    std::vector<std::string> notes() const {
        std::vector<std::string> texts;
        for (const auto& [variable, refused] : refused_) {
            texts.push_back(L10n::t(refused.reasonKey, variable, refused.value, joined(refused.ids)));
        }
        return texts;
    }

private:
    // The home, a project root, or a folder holding one of them.
    bool holdsUserFolder(const std::filesystem::path& folder) const {
        const std::string path = Paths::standardized(folder).string();
        for (const auto& user : userFolders_)
            if (path == "/" || Paths::same(user, path) || Paths::isInside(user, path)) return true;
        return false;
    }

    // A place is left out, and noted when a variable put it there, when its variable names
    // the home, a project root or a folder holding one (the tool then keeps its data among
    // the user's files), when it is not strictly inside an allowed root (the guard would
    // refuse it; a versioned entry may list the temporary folder itself, whose entries lie
    // inside), or when a variable moved it and the entry has no marks to tell the tool's
    // data from the user's.
    bool admits(const std::string& id, const CatalogPlaces::Place& place, const PlaceMarks::Marks& marks,
                bool offersChildren) {
        const char* reason = nullptr;
        if (!place.variable.empty() && holdsUserFolder(*env_.locationVariable(place.variable)))
            reason = "catalog.note.holdsUserFolders";
        else if (!insideAllowedRoot(place.path) && !(offersChildren && isTemporaryFolder(place.path)))
            reason = "catalog.note.outsideAllowedRoots";
        else if (!place.variable.empty() && marks.empty())
            reason = "catalog.note.unmarked";
        if (!reason) return true;
        if (!place.variable.empty()) {
            auto& refused = refused_[place.variable];
            if (refused.ids.empty()) refused = {reason, env_.locationVariables.at(place.variable), {}};
            if (std::find(refused.ids.begin(), refused.ids.end(), id) == refused.ids.end()) refused.ids.push_back(id);
        }
        return false;
    }

    bool insideAllowedRoot(const std::filesystem::path& place) const {
        const std::string path = Paths::standardized(place).string();
        for (const auto& root : roots_)
            if (Paths::isInside(path, Paths::standardized(root).string())) return true;
        return false;
    }

    bool isTemporaryFolder(const std::filesystem::path& place) const {
        return Paths::same(Paths::standardized(place).string(), Paths::standardized(env_.tmpDir).string());
    }

    struct Refused {
        std::string reasonKey;
        std::string value;
        std::vector<std::string> ids;
    };

    const Environment& env_;
    std::vector<std::filesystem::path> roots_;
    std::vector<std::string> userFolders_;
    CleanerList cleaners_;
    std::map<std::string, Refused> refused_;
};

}  // namespace

CleanerRegistry::BuiltCatalog CleanerRegistry::build(const Environment& env) {
    CatalogBuilder c(env);
    for (const auto& entry : CatalogTable::entries()) c.add(entry);
    const bool isLinux = env.catalog == CatalogProfile::gnuLinux;
    c.add(std::make_shared<PerProjectCleaner>(
        env.resolvedProjectRoots(), profileSpecs(env), env.keepRecentDays,
        std::chrono::system_clock::now(), isLinux ? std::optional<Spec>(cacheTaggedSpec()) : std::nullopt));
    auto notes = c.notes();
    return {c.take(), std::move(notes)};
}

CleanerList CleanerRegistry::makeCleaners(const Environment& env) { return build(env).cleaners; }

std::vector<std::filesystem::path> CleanerRegistry::places(const Environment& env) {
    std::vector<std::filesystem::path> found;
    for (const auto& cleaner : makeCleaners(env)) {
        if (const auto* paths = dynamic_cast<const PathCleaner*>(cleaner.get()))
            for (const auto& relative : paths->relativePaths()) found.push_back(Paths::appending(paths->home(), relative));
        else if (const auto* versioned = dynamic_cast<const VersionedDirCleaner*>(cleaner.get()))
            found.push_back(versioned->parent());
    }
    return found;
}

std::vector<std::string> CleanerRegistry::artifactNames(const Environment& env) {
    std::vector<std::string> names;
    for (const auto& spec : profileSpecs(env)) names.push_back(spec.dirName);
    return names;
}

std::vector<std::string> CleanerRegistry::projectManifests(const Environment& env) {
    std::set<std::string> manifests;
    for (const auto& spec : profileSpecs(env)) {
        if (spec.requiresSibling.size() != 1) continue;
        std::string_view pattern = spec.requiresSibling.front();
        while (!pattern.empty()) {
            const auto bar = pattern.find('|');
            if (const auto alternative = pattern.substr(0, bar); !alternative.empty()) manifests.emplace(alternative);
            if (bar == std::string_view::npos) break;
            pattern.remove_prefix(bar + 1);
        }
    }
    return {manifests.begin(), manifests.end()};
}

std::vector<std::filesystem::path> CleanerRegistry::allowedRoots(const Environment& env) {
    std::vector<std::filesystem::path> roots{env.home, env.tmpDir};
    if (env.flutterBinCache) roots.push_back(env.flutterBinCache->parent_path());
    return roots;
}

std::vector<Family> CleanerRegistry::familiesWithDetectors(const Environment& env) {
    std::set<Family> present;
    for (const auto& cleaner : makeCleaners(env)) present.insert(cleaner->family());
    std::vector<Family> families;
    for (Family family : cleanDomainFamilies())
        if (present.contains(family)) families.push_back(family);
    return families;
}

std::vector<std::filesystem::path> CleanerRegistry::protectedPaths(const Environment& env) {
    return {
        env.home / "Library/Developer/Xcode/Archives",
        env.home / "Library/Developer/Xcode/UserData",
        env.home / "Library/Developer/CoreSimulator/Devices",
        env.home / ".android/avd",
        env.home / ".flutter",
        env.home / ".swiftpm",
    };
}

}  // namespace kelvo
