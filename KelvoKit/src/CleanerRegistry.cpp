#include "kelvo/CleanerRegistry.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <optional>
#include <set>

#include "kelvo/CommandCleaner.h"
#include "kelvo/L10n.h"
#include "kelvo/PathCleaner.h"
#include "kelvo/Paths.h"
#include "kelvo/PerProjectCleaner.h"
#include "kelvo/PlaceMarks.h"
#include "kelvo/VersionedDirCleaner.h"

namespace kelvo {
namespace {

// Metro's caches in the temporary folder, which may be shared: the executor runs this only
// when every entry it names is the user's own.
constexpr const char* metroCacheLine =
    "rm -rf \"$TMPDIR\"/metro-cache \"$TMPDIR\"/metro-bundler-cache-* "
    "\"$TMPDIR\"/react-native-packager-cache-* \"$TMPDIR\"/haste-map-*";

using Spec = PerProjectCleaner::ArtifactSpec;
using Marks = PlaceMarks::Marks;

constexpr Level safe = Level::safe;
constexpr Level moderate = Level::moderate;
constexpr Level aggressive = Level::aggressive;
constexpr RegenCost rebuild = RegenCost::rebuild;
constexpr RegenCost reindex = RegenCost::reindex;
constexpr RegenCost redownload = RegenCost::redownload;
// Everything this catalog offers can be regenerated; nothing in it is user data.
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

// The programs that write an entry's places while they run: the entry is left alone while
// one of them runs. Kept with the entry, not the family: bun or deno running does not hold
// npm's cache.
struct WhileRunning {
    std::vector<std::string> programs;
};
const WhileRunning npmRuns{{"npm"}};
const WhileRunning yarnRuns{{"yarn", "yarnpkg"}};
const WhileRunning pnpmRuns{{"pnpm"}};

// Folders below a project root that tag themselves as caches (Cargo, Meson, pytest, ...).
Spec cacheTaggedSpec() { return {"CACHEDIR.TAG", safe, regenerable, rebuild, {}}; }

// A folder of the Linux catalog, and the location variable that put it there, if one did.
struct Place {
    std::filesystem::path path;
    std::string variable;
};

// Places resolved the way the tools resolve them: the tool's own variable first, then the
// XDG base folder, then the default under home. A variable naming the default place itself
// moves nothing: the place counts as the default one.
class Places {
public:
    explicit Places(const Environment& env) : env_(env) {}

    Place home(const std::string& relative) const { return {env_.home / relative, {}}; }
    Place cache(const std::string& relative) const { return based("XDG_CACHE_HOME", ".cache", relative); }
    Place data(const std::string& relative) const { return based("XDG_DATA_HOME", ".local/share", relative); }
    Place config(const std::string& relative) const { return based("XDG_CONFIG_HOME", ".config", relative); }
    Place state(const std::string& relative) const { return based("XDG_STATE_HOME", ".local/state", relative); }
    // The variable's folder joined with `relative` when the variable is set, else `fallback`.
    Place tool(const std::string& variable, const std::string& relative, Place fallback) const {
        const auto value = env_.locationVariable(variable);
        if (!value) return fallback;
        auto path = joined(*value, relative);
        if (Paths::same(Paths::standardized(path).string(), Paths::standardized(fallback.path).string()))
            return fallback;
        return {std::move(path), variable};
    }
    // The same for several places kept under one variable's folder; the fallbacks are the
    // defaults of the relatives at the same positions.
    std::vector<Place> toolEach(const std::string& variable, const std::vector<std::string>& relatives,
                                const std::vector<Place>& fallbacks) const {
        if (!env_.locationVariable(variable)) return fallbacks;
        std::vector<Place> places;
        for (std::size_t index = 0; index < relatives.size(); ++index)
            places.push_back(tool(variable, relatives[index], index < fallbacks.size() ? fallbacks[index] : Place{}));
        return places;
    }

private:
    static std::filesystem::path joined(const std::filesystem::path& base, const std::string& relative) {
        return relative.empty() ? base : base / relative;
    }
    Place based(const char* variable, const char* defaultBase, const std::string& relative) const {
        return tool(variable, relative, {joined(env_.home / defaultBase, relative), {}});
    }

    const Environment& env_;
};

// Appends entries in catalog order; every display name is looked up as "cleaner.<id>".
class CatalogBuilder {
public:
    explicit CatalogBuilder(const Environment& env) : env_(env) {
        userFolders_.push_back(Paths::standardized(env.home).string());
        for (const auto& root : env.resolvedProjectRoots()) userFolders_.push_back(Paths::standardized(root).string());
    }

    void path(const std::string& id, Family family, std::vector<std::string> relativePaths, Level level,
              RegenCost cost, WhileRunning guard = {}) {
        pathFrom(env_.home, id, family, std::move(relativePaths), level, cost, std::move(guard));
    }
    void pathFrom(const std::filesystem::path& base, const std::string& id, Family family,
                  std::vector<std::string> relativePaths, Level level, RegenCost cost, WhileRunning guard = {}) {
        cleaners_.push_back(std::make_shared<PathCleaner>(id, nameOf(id), family, base, std::move(relativePaths),
                                                          level, regenerable, cost, PlaceMarks::Marks{},
                                                          std::move(guard.programs)));
    }
    void command(const std::string& id, Family family, std::string commandLine, Level level, RegenCost cost,
                 WhileRunning guard = {}) {
        cleaners_.push_back(std::make_shared<CommandCleaner>(id, nameOf(id), family, std::move(commandLine), level,
                                                             regenerable, cost, 0, CommandCleaner::ToolCheck(),
                                                             std::move(guard.programs)));
    }
    void versioned(const std::string& id, Family family, std::filesystem::path parent,
                   std::vector<std::string> prefixes, Level level, RegenCost cost, Marks marks = {}) {
        cleaners_.push_back(std::make_shared<VersionedDirCleaner>(id, nameOf(id), family, std::move(parent),
                                                                  std::move(prefixes), level, regenerable, cost,
                                                                  std::move(marks)));
    }
    // The parent given as one home-relative string, slashes included.
    void versionedInHome(const std::string& id, Family family, const std::string& relativeParent,
                         std::vector<std::string> prefixes, Level level, RegenCost cost) {
        versioned(id, family, env_.home / relativeParent, std::move(prefixes), level, cost);
    }
    void add(std::shared_ptr<const Cleaner> cleaner) { cleaners_.push_back(std::move(cleaner)); }

    // Entries of absolute places, each with the marks its tool leaves in every one of them
    // (none where no mark is certain). A place is left out, and noted when a variable put it
    // there, when it is not strictly inside an allowed root (the guard would refuse it),
    // when its variable names the home, a project root or a folder holding one (the tool
    // then keeps its data among the user's files), or when a variable moved it and the
    // entry has no marks to tell the tool's data from the user's. An entry left without
    // places is not offered.
    void paths(const std::string& id, Family family, const std::vector<Place>& places, Marks marks, Level level,
               RegenCost cost, Reversibility reversibility = regenerable, WhileRunning guard = {}) {
        std::vector<std::string> relativePaths;
        for (const auto& place : places)
            if (admits(id, place, marks)) relativePaths.push_back(place.path.relative_path().string());
        if (relativePaths.empty()) return;
        cleaners_.push_back(std::make_shared<PathCleaner>(id, nameOf(id), family, "/", std::move(relativePaths), level,
                                                          reversibility, cost, std::move(marks),
                                                          std::move(guard.programs)));
    }
    void paths(const std::string& id, Family family, const std::vector<Place>& places, Marks marks, Level level,
               RegenCost cost, WhileRunning guard) {
        paths(id, family, places, std::move(marks), level, cost, regenerable, std::move(guard));
    }
    // Marks of a versioned entry are looked for in each subfolder it would offer.
    void versionedAt(const std::string& id, Family family, const Place& parent, std::vector<std::string> prefixes,
                     Marks marks, Level level, RegenCost cost) {
        if (admits(id, parent, marks))
            versioned(id, family, parent.path, std::move(prefixes), level, cost, std::move(marks));
    }
    void command(const std::string& id, Family family, std::string commandLine, Level level, RegenCost cost,
                 Reversibility reversibility) {
        cleaners_.push_back(std::make_shared<CommandCleaner>(id, nameOf(id), family, std::move(commandLine), level,
                                                             reversibility, cost, 0));
    }

    CleanerList take() { return std::move(cleaners_); }

    // One note per variable that cost entries their places, saying why and naming them.
    std::vector<std::string> notes() const {
        std::vector<std::string> texts;
        for (const auto& [variable, refused] : refused_) {
            std::string ids;
            for (const auto& id : refused.ids) ids += (ids.empty() ? "" : ", ") + id;
            texts.push_back(L10n::t(refused.reasonKey, variable, refused.value, ids));
        }
        return texts;
    }

private:
    static std::string nameOf(const std::string& id) { return L10n::t("cleaner." + id); }

    // The home, a project root, or a folder holding one of them.
    bool holdsUserFolder(const std::filesystem::path& folder) const {
        const std::string path = Paths::standardized(folder).string();
        for (const auto& user : userFolders_)
            if (path == "/" || Paths::same(user, path) || Paths::isInside(user, path)) return true;
        return false;
    }

    bool admits(const std::string& id, const Place& place, const Marks& marks) {
        const char* reason = nullptr;
        if (!place.variable.empty() && holdsUserFolder(*env_.locationVariable(place.variable)))
            reason = "catalog.note.holdsUserFolders";
        else if (!insideAllowedRoot(place.path))
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
        for (const auto& root : CleanerRegistry::allowedRoots(env_))
            if (Paths::isInside(path, Paths::standardized(root).string())) return true;
        return false;
    }

    struct Refused {
        std::string reasonKey;
        std::string value;
        std::vector<std::string> ids;
    };

    const Environment& env_;
    std::vector<std::string> userFolders_;
    CleanerList cleaners_;
    std::map<std::string, Refused> refused_;
};

// The macOS profile: the catalog as it has always been, 103 entries (102 without Flutter).
void addMacosEntries(CatalogBuilder& c, const Environment& env) {
    using F = Family;

    c.path("derived-data", F::xcodeCore, {"Library/Developer/Xcode/DerivedData"}, safe, rebuild);
    c.path("xcode-app-cache", F::xcodeCore, {"Library/Caches/com.apple.dt.Xcode"}, safe, rebuild);
    c.path("xcode-products", F::xcodeCore, {"Library/Developer/Xcode/Products"}, safe, rebuild);
    c.path("xcode-doc-cache", F::xcodeCore, {"Library/Developer/Xcode/DocumentationCache"}, moderate, redownload);
    c.path("xcode-downloads", F::xcodeCore, {"Library/Developer/Xcode/Downloads"}, moderate, redownload);
    c.path("xcode-device-logs", F::xcodeCore, {"Library/Developer/Xcode/DeviceLogs"}, safe, rebuild);

    c.path("ios-device-support", F::simulators, {"Library/Developer/Xcode/iOS DeviceSupport"}, moderate, redownload);
    c.path("watchos-device-support", F::simulators, {"Library/Developer/Xcode/watchOS DeviceSupport"}, moderate,
           redownload);
    c.path("tvos-device-support", F::simulators, {"Library/Developer/Xcode/tvOS DeviceSupport"}, moderate, redownload);
    c.path("coresimulator-caches", F::simulators, {"Library/Developer/CoreSimulator/Caches"}, safe, rebuild);
    c.path("coresimulator-logs", F::simulators, {"Library/Logs/CoreSimulator"}, safe, rebuild);
    c.command("simctl-unavailable", F::simulators, "xcrun simctl delete unavailable", safe, redownload);

    c.path("cocoapods-cache", F::cocoapods, {"Library/Caches/CocoaPods"}, safe, redownload);
    c.path("cocoapods-repos", F::cocoapods, {".cocoapods/repos"}, moderate, redownload);

    c.path("pub-cache", F::flutterDart, {".pub-cache"}, moderate, redownload);
    c.path("dart-analysis-cache", F::flutterDart, {".dartServer"}, safe, reindex);
    if (env.flutterBinCache) {
        // Based at the file-system root so that base and relative path name the cache itself.
        const std::string cache = env.flutterBinCache->string();
        c.pathFrom("/", "flutter-sdk-cache", F::flutterDart, {cache.empty() ? cache : cache.substr(1)}, aggressive,
                   redownload);
    }

    c.path("gradle-caches", F::androidGradle, {".gradle/caches"}, moderate, redownload);
    c.path("gradle-wrapper", F::androidGradle, {".gradle/wrapper/dists"}, moderate, redownload);
    c.path("gradle-daemon", F::androidGradle, {".gradle/daemon"}, safe, rebuild);
    c.path("android-cache", F::androidGradle, {".android/cache"}, safe, rebuild);
    c.path("android-build-cache", F::androidGradle, {".android/build-cache"}, safe, rebuild);
    c.path("maven-repo", F::androidGradle, {".m2/repository"}, moderate, redownload);
    c.path("konan", F::androidGradle, {".konan"}, aggressive, redownload);
    c.versionedInHome("android-ndk", F::androidGradle, "Library/Android/sdk/ndk", {}, aggressive, redownload);
    c.versionedInHome("android-system-images", F::androidGradle, "Library/Android/sdk/system-images", {}, aggressive,
                      redownload);

    c.path("npm-cache", F::jsPackages, {".npm/_cacache"}, safe, redownload, npmRuns);
    c.path("yarn-cache-lib", F::jsPackages, {"Library/Caches/Yarn"}, safe, redownload, yarnRuns);
    c.path("yarn-cache-xdg", F::jsPackages, {".cache/yarn"}, safe, redownload, yarnRuns);
    c.command("bun-cache", F::jsPackages, "bun pm cache rm", safe, redownload);
    c.command("pnpm-store-prune", F::jsPackages, "pnpm store prune", moderate, redownload, pnpmRuns);

    c.path("homebrew-cache", F::devMisc, {"Library/Caches/Homebrew"}, safe, redownload);
    c.command("brew-cleanup", F::devMisc, "brew cleanup -s", safe, redownload);
    c.path("pip-cache", F::devMisc, {"Library/Caches/pip"}, safe, redownload);
    c.path("swiftpm-cache", F::devMisc, {"Library/Caches/org.swift.swiftpm"}, moderate, redownload);
    c.path("carthage-cache", F::devMisc, {"Library/Caches/org.carthage.CarthageKit"}, moderate, redownload);
    c.path("go-build", F::devMisc, {"Library/Caches/go-build"}, safe, rebuild);
    c.path("go-mod", F::devMisc, {"go/pkg/mod"}, moderate, redownload);
    c.path("cargo-registry", F::devMisc, {".cargo/registry"}, moderate, redownload);
    c.path("cargo-git", F::devMisc, {".cargo/git"}, moderate, redownload);
    // Never ~/.gem itself: it also holds credentials, the user's key for the gem host.
    c.path("rubygems", F::devMisc, {".gem/ruby", ".gem/specs"}, moderate, redownload);
    c.path("ccache", F::devMisc, {".ccache", "Library/Caches/ccache"}, safe, rebuild);
    c.path("uv-cache", F::devMisc, {".cache/uv"}, safe, redownload);
    c.path("puppeteer-cache", F::devMisc, {".cache/puppeteer"}, safe, redownload);
    c.path("playwright-cache", F::devMisc, {"Library/Caches/ms-playwright"}, safe, redownload);
    // The downloads only: the folder above also holds the user's access token.
    c.path("huggingface-cache", F::devMisc, {".cache/huggingface/hub"}, aggressive, redownload);

    c.versionedInHome("jetbrains-caches", F::macosGeneral, "Library/Caches/JetBrains", {}, safe, rebuild);
    c.versionedInHome("androidstudio-caches", F::macosGeneral, "Library/Caches/Google", {"AndroidStudio"}, safe,
                      rebuild);
    c.path("vscode-caches", F::macosGeneral,
           {"Library/Application Support/Code/Cache", "Library/Application Support/Code/CachedData",
            "Library/Application Support/Code/Code Cache", "Library/Application Support/Code/GPUCache"},
           safe, rebuild);
    c.path("cursor-caches", F::macosGeneral,
           {"Library/Application Support/Cursor/Cache", "Library/Application Support/Cursor/CachedData",
            "Library/Application Support/Cursor/Code Cache", "Library/Application Support/Cursor/GPUCache"},
           safe, rebuild);
    c.path("user-logs", F::macosGeneral, {"Library/Logs"}, safe, rebuild);
    c.path("crashreporter", F::macosGeneral, {"Library/Application Support/CrashReporter"}, safe, rebuild);
    c.versioned("tmpdir-scratch", F::macosGeneral, env.tmpDir, {"metro-", "react-native-", "haste-map-", "flutter_tools."},
                safe, rebuild);
    c.path("trash", F::macosGeneral, {".Trash"}, safe, rebuild);

    c.command("docker-prune", F::docker, "docker system prune -f", aggressive, redownload);
    c.command("docker-builder-prune", F::docker, "docker builder prune -f", aggressive, redownload);

    c.path("nuget-http-cache", F::dotNet, {".local/share/NuGet/v3-cache"}, safe, redownload);
    c.path("nuget-plugins-cache", F::dotNet, {".local/share/NuGet/plugins-cache"}, safe, rebuild);
    c.path("dotnet-toolresolver", F::dotNet, {".dotnet/toolResolverCache"}, safe, rebuild);
    c.path("xamarin-mtbs", F::dotNet, {"Library/Caches/Xamarin/mtbs"}, safe, rebuild);
    c.path("xamarin-components", F::dotNet, {"Library/Caches/Xamarin/Components"}, safe, redownload);
    c.path("xamarin-android-sdk", F::dotNet, {".local/share/Xamarin"}, moderate, redownload);
    c.command("dotnet-workload-clean", F::dotNet, "dotnet workload clean", safe, redownload);

    c.command("metro-cache", F::reactNative,
              metroCacheLine,
              safe, rebuild);
    c.command("watchman-state", F::reactNative, "watchman watch-del-all; watchman shutdown-server", safe, rebuild);

    c.path("coursier-v1", F::jvm, {"Library/Caches/Coursier/v1"}, safe, redownload);
    c.path("coursier-legacy", F::jvm, {".coursier/cache"}, safe, redownload);
    c.path("coursier-jvm", F::jvm, {"Library/Caches/Coursier/jvm", "Library/Caches/Coursier/arc"}, aggressive,
           redownload);
    c.path("ivy2-cache", F::jvm, {".ivy2/cache"}, safe, redownload);
    c.path("sbt-boot", F::jvm, {".sbt/boot"}, safe, redownload);
    c.path("scala-cli-cache", F::jvm, {"Library/Caches/ScalaCli"}, moderate, redownload);
    c.path("ammonite-cache", F::jvm, {".ammonite/cache"}, safe, rebuild);
    c.path("kotlin-daemon", F::jvm, {"Library/Application Support/kotlin/daemon"}, safe, rebuild);

    c.path("poetry-cache", F::python, {"Library/Caches/pypoetry/cache", "Library/Caches/pypoetry/artifacts"}, safe,
           redownload);
    c.path("poetry-venvs", F::python, {"Library/Caches/pypoetry/virtualenvs"}, moderate, redownload);
    c.command("conda-clean", F::python, "conda clean --all --yes", safe, redownload);

    c.path("stack-snapshots", F::otherLangs, {".stack/snapshots"}, moderate, rebuild);
    c.path("stack-programs", F::otherLangs, {".stack/programs"}, moderate, redownload);
    c.path("cabal-packages", F::otherLangs, {".cache/cabal/packages", ".cabal/packages"}, safe, redownload);
    c.path("cabal-store", F::otherLangs, {".local/state/cabal/store", ".cabal/store"}, moderate, rebuild);
    c.path("hex-packages", F::otherLangs, {".hex/packages"}, safe, redownload);
    c.path("rebar3-cache", F::otherLangs, {".cache/rebar3"}, safe, redownload);
    c.path("zig-cache-global", F::otherLangs, {".cache/zig"}, safe, rebuild);
    c.path("nim-cache", F::otherLangs, {".cache/nim"}, safe, rebuild);
    c.path("composer-cache", F::otherLangs, {"Library/Caches/composer"}, safe, redownload);

    c.path("deno-cache", F::jsPackages, {"Library/Caches/deno"}, safe, redownload);
    c.path("cypress-cache", F::jsPackages, {"Library/Caches/Cypress"}, safe, redownload);
    c.path("electron-cache", F::jsPackages, {"Library/Caches/electron"}, safe, redownload);
    c.path("electron-builder-cache", F::jsPackages, {"Library/Caches/electron-builder", ".cache/electron-builder"}, safe,
           redownload);
    c.path("node-gyp-cache", F::jsPackages, {"Library/Caches/node-gyp", ".node-gyp"}, safe, redownload);
    c.path("corepack-cache", F::jsPackages, {".cache/node/corepack"}, safe, redownload);
    c.path("node-sass-cache", F::jsPackages, {".npm/node-sass"}, safe, redownload);

    c.path("vscode-extra", F::macosGeneral,
           {"Library/Application Support/Code/Service Worker/CacheStorage",
            "Library/Application Support/Code/CachedExtensionVSIXs", "Library/Application Support/Code/logs",
            "Library/Caches/com.microsoft.VSCode"},
           safe, rebuild);
    c.path("cursor-extra", F::macosGeneral,
           {"Library/Application Support/Cursor/Service Worker/CacheStorage", "Library/Application Support/Cursor/logs"},
           safe, rebuild);
    c.path("zed-caches", F::macosGeneral, {"Library/Caches/dev.zed.Zed", "Library/Caches/Zed", "Library/Logs/Zed"},
           safe, rebuild);
    c.path("fleet-caches", F::macosGeneral, {"Library/Caches/JetBrains/Fleet", "Library/Logs/JetBrains/Fleet"}, safe,
           reindex);

    c.path("terraform-plugin-cache", F::devMisc, {".terraform.d/plugin-cache"}, moderate, redownload);
    c.path("vagrant-tmp", F::devMisc, {".vagrant.d/tmp"}, safe, redownload);
    c.path("minikube-cache", F::devMisc, {".minikube/cache"}, moderate, redownload);
    c.path("sccache", F::devMisc, {"Library/Caches/Mozilla.sccache"}, safe, rebuild);

    c.path("unity-bee", F::gameEngines, {"Library/Unity/cache/bee"}, moderate, rebuild);
    c.path("unity-upm", F::gameEngines, {"Library/Caches/Unity/upm"}, safe, redownload);
}

// The Linux profile. Entries whose tool exists on Linux keep their id and family with the
// places the tool uses there; those without a Linux counterpart (Xcode, the simulators,
// Carthage, the Xamarin Mac caches, ~/Library logs and crash reports) are not here. No
// entry runs a command that needs root. Where a tool shares a folder with other users
// (the temporary folder), only the user's own entries are removed.
// Each path entry names the marks its tool leaves at the top of every place it keeps
// (PlaceMarks): a place without them is not offered, wherever it is. "{}" means the tool
// leaves no mark certain across its versions (content-addressed or version-named folders,
// or what the user put there, as in the trash): such an entry is offered at its default
// place only, never where a variable moved it, since there nothing tells its data from
// the user's.
void addLinuxEntries(CatalogBuilder& c, const Environment& env, const Places& at) {
    using F = Family;

    c.paths("cocoapods-repos", F::cocoapods, {at.home(".cocoapods/repos")}, {}, moderate, redownload);

    c.paths("pub-cache", F::flutterDart, {at.tool("PUB_CACHE", "", at.home(".pub-cache"))}, {"hosted"}, moderate,
            redownload);
    c.paths("dart-analysis-cache", F::flutterDart, {at.home(".dartServer")}, {}, safe, reindex);
    if (env.flutterBinCache)
        c.paths("flutter-sdk-cache", F::flutterDart, {{*env.flutterBinCache, {}}}, {}, aggressive, redownload);

    const auto gradle = [&](const std::string& relative) {
        return at.tool("GRADLE_USER_HOME", relative, at.home(".gradle/" + relative));
    };
    c.paths("gradle-caches", F::androidGradle, {gradle("caches")}, {"modules-2|journal-1"}, moderate, redownload);
    // The wrapper's distributions are weighed one by one with the old runtimes (prepare).
    c.paths("gradle-daemon", F::androidGradle, {gradle("daemon")}, {}, safe, rebuild);
    c.paths("gradle-jdks", F::androidGradle, {gradle("jdks")}, {}, moderate, redownload);
    c.paths("android-cache", F::androidGradle, {at.home(".android/cache")}, {}, safe, rebuild);
    c.paths("android-build-cache", F::androidGradle, {at.home(".android/build-cache")}, {}, safe, rebuild);
    c.paths("maven-repo", F::androidGradle, {at.home(".m2/repository")}, {}, moderate, redownload);
    c.paths("maven-wrapper", F::androidGradle, {at.home(".m2/wrapper/dists")}, {}, moderate, redownload);
    c.paths("konan", F::androidGradle, {at.tool("KONAN_DATA_DIR", "", at.home(".konan"))}, {}, aggressive, redownload);
    c.versionedAt("android-ndk", F::androidGradle, at.tool("ANDROID_HOME", "ndk", at.home("Android/Sdk/ndk")), {},
                  {"source.properties"}, aggressive, redownload);
    c.versionedAt("android-system-images", F::androidGradle,
                  at.tool("ANDROID_HOME", "system-images", at.home("Android/Sdk/system-images")), {}, {}, aggressive,
                  redownload);

    const auto npmCache = at.tool("npm_config_cache", "", at.tool("NPM_CONFIG_CACHE", "", at.home(".npm")));
    c.paths("npm-cache", F::jsPackages, {{npmCache.path / "_cacache", npmCache.variable}}, {"index-v5|content-v2"},
            safe, redownload, npmRuns);
    c.paths("yarn-cache-xdg", F::jsPackages, {at.tool("YARN_CACHE_FOLDER", "", at.cache("yarn"))}, {"v6"}, safe,
            redownload, yarnRuns);
    c.paths("yarn-berry-cache", F::jsPackages, {at.tool("YARN_GLOBAL_FOLDER", "cache", at.home(".yarn/berry/cache"))},
            {}, safe, redownload, yarnRuns);
    c.command("bun-cache", F::jsPackages, "bun pm cache rm", safe, redownload);
    // The store is hard-linked into every project's node_modules: only pnpm may prune it.
    c.command("pnpm-store-prune", F::jsPackages, "pnpm store prune", moderate, redownload, pnpmRuns);
    c.paths("pnpm-metadata-cache", F::jsPackages, {at.cache("pnpm")}, {}, safe, redownload, pnpmRuns);
    // location_data holds the scripts' localStorage: every other child is a download.
    c.paths("deno-cache", F::jsPackages,
            at.toolEach("DENO_DIR", {"deps", "gen", "npm", "registries", "remote"},
                        {at.cache("deno/deps"), at.cache("deno/gen"), at.cache("deno/npm"), at.cache("deno/registries"),
                         at.cache("deno/remote")}),
            {}, safe, redownload);
    c.paths("cypress-cache", F::jsPackages, {at.tool("CYPRESS_CACHE_FOLDER", "", at.cache("Cypress"))}, {}, safe,
            redownload);
    c.paths("electron-cache", F::jsPackages, {at.tool("ELECTRON_CACHE", "", at.cache("electron"))}, {}, safe,
            redownload);
    c.paths("electron-builder-cache", F::jsPackages,
            {at.tool("ELECTRON_BUILDER_CACHE", "", at.cache("electron-builder"))}, {}, safe, redownload);
    c.paths("node-gyp-cache", F::jsPackages, {at.cache("node-gyp"), at.home(".node-gyp"), at.home(".electron-gyp")}, {},
            safe, redownload);
    c.paths("corepack-cache", F::jsPackages, {at.tool("COREPACK_HOME", "", at.cache("node/corepack"))}, {}, safe,
            redownload);
    c.paths("node-sass-cache", F::jsPackages, {at.home(".npm/node-sass")}, {}, safe, redownload);
    c.paths("selenium-cache", F::jsPackages, {at.cache("selenium")}, {}, safe, redownload);

    c.paths("homebrew-cache", F::devMisc, {at.tool("HOMEBREW_CACHE", "", at.cache("Homebrew"))}, {}, safe, redownload);
    c.command("brew-cleanup", F::devMisc, "brew cleanup -s", safe, redownload);
    c.paths("pip-cache", F::devMisc, {at.tool("PIP_CACHE_DIR", "", at.cache("pip"))}, {"http|http-v2|wheels"}, safe,
            redownload);
    c.paths("swiftpm-cache", F::devMisc, {at.cache("org.swift.swiftpm")}, {}, moderate, redownload);
    c.paths("go-build", F::devMisc, {at.tool("GOCACHE", "", at.cache("go-build"))}, {"README", "trim.txt"}, safe,
            rebuild);
    c.paths("go-mod", F::devMisc, {at.tool("GOMODCACHE", "", at.tool("GOPATH", "pkg/mod", at.home("go/pkg/mod")))},
            {"cache/download"}, moderate, redownload);
    c.paths("go-tool-caches", F::devMisc, {at.cache("gopls"), at.cache("golangci-lint")}, {}, safe, rebuild);
    const auto cargo = [&](const std::string& relative) {
        return at.tool("CARGO_HOME", relative, at.home(".cargo/" + relative));
    };
    c.paths("cargo-registry", F::devMisc, {cargo("registry")}, {"index|cache"}, moderate, redownload);
    c.paths("cargo-git", F::devMisc, {cargo("git")}, {"db|checkouts"}, moderate, redownload);
    c.paths("rustup-downloads", F::devMisc,
            at.toolEach("RUSTUP_HOME", {"downloads", "tmp"}, {at.home(".rustup/downloads"), at.home(".rustup/tmp")}),
            {}, safe, redownload);
    // GEM_HOME holds gems/ and specifications/, but ~/.gem and the XDG folder keep them one
    // level deeper, under ruby/<version>: no one mark fits every place. Never those folders
    // themselves: they also hold credentials, the user's key for the gem host; nor GEM_HOME's
    // bin, which may be a folder of the user's own programs.
    c.paths("rubygems", F::devMisc,
            at.toolEach("GEM_HOME", {"gems", "specifications", "cache", "extensions", "build_info", "doc"},
                        {at.home(".gem/ruby"), at.home(".gem/specs"), at.data("gem/ruby"), at.data("gem/specs")}),
            {}, moderate, redownload);
    // The XDG cache only: CCACHE_DIR and the legacy ~/.ccache also hold ccache.conf. Its
    // top holds hashed subfolders and, in some versions only, a CACHEDIR.TAG: no mark.
    c.paths("ccache", F::devMisc, {at.cache("ccache")}, {}, safe, rebuild);
    c.paths("sccache", F::devMisc, {at.tool("SCCACHE_DIR", "", at.cache("sccache"))}, {}, safe, rebuild);
    c.command("conan-cache-clean", F::devMisc, "conan cache clean \"*\"", safe, rebuild);
    c.paths("vcpkg-archives", F::devMisc, {at.tool("VCPKG_DEFAULT_BINARY_CACHE", "", at.cache("vcpkg/archives"))}, {},
            safe, rebuild);
    c.paths("bazelisk-cache", F::devMisc, {at.tool("BAZELISK_HOME", "", at.cache("bazelisk"))}, {}, safe, redownload);
    c.paths("uv-cache", F::devMisc, {at.tool("UV_CACHE_DIR", "", at.cache("uv"))}, {"CACHEDIR.TAG"}, safe, redownload);
    c.paths("puppeteer-cache", F::devMisc, {at.tool("PUPPETEER_CACHE_DIR", "", at.home(".cache/puppeteer"))},
            {"chrome|chrome-headless-shell|firefox"}, safe, redownload);
    c.paths("playwright-cache", F::devMisc,
            at.toolEach("PLAYWRIGHT_BROWSERS_PATH", {""}, {at.cache("ms-playwright"), at.cache("ms-playwright-go")}),
            {}, safe, redownload);
    // The downloads only: HF_HOME also holds the user's access token.
    c.paths("huggingface-cache", F::devMisc, {at.tool("HF_HOME", "hub", at.cache("huggingface/hub"))}, {}, aggressive,
            redownload);
    c.paths("terraform-plugin-cache", F::devMisc,
            {at.tool("TF_PLUGIN_CACHE_DIR", "", at.home(".terraform.d/plugin-cache"))},
            {"registry.terraform.io|registry.opentofu.org"}, moderate, redownload);
    c.paths("vagrant-tmp", F::devMisc, {at.tool("VAGRANT_HOME", "tmp", at.home(".vagrant.d/tmp"))}, {}, safe,
            redownload);
    c.paths("minikube-cache", F::devMisc, {at.home(".minikube/cache")}, {}, moderate, redownload);
    c.command("nix-gc", F::devMisc, "nix-collect-garbage", moderate, redownload);
    c.paths("nix-user-cache", F::devMisc, {at.cache("nix")}, {}, safe, redownload);
    c.paths("helm-kube-caches", F::devMisc, {at.tool("HELM_CACHE_HOME", "", at.cache("helm")), at.home(".kube/cache")},
            {}, safe, redownload);

    c.versionedAt("jetbrains-caches", F::macosGeneral, at.cache("JetBrains"), {}, {}, safe, rebuild);
    c.versionedAt("androidstudio-caches", F::macosGeneral, at.cache("Google"), {"AndroidStudio"}, {}, safe, rebuild);
    const std::vector<std::string> electronCaches{"Cache", "CachedData", "Code Cache", "GPUCache", "DawnGraphiteCache",
                                                  "DawnWebGPUCache"};
    std::vector<Place> vscodeCaches;
    for (const char* editor : {"Code", "Code - Insiders", "VSCodium", "Windsurf"})
        for (const auto& cache : electronCaches) vscodeCaches.push_back(at.config(std::string(editor) + "/" + cache));
    for (const auto& cache : electronCaches)
        vscodeCaches.push_back(at.home(".var/app/com.visualstudio.code/config/Code/" + cache));
    c.paths("vscode-caches", F::macosGeneral, vscodeCaches, {}, safe, rebuild);
    std::vector<Place> cursorCaches;
    for (const auto& cache : electronCaches) cursorCaches.push_back(at.config("Cursor/" + cache));
    c.paths("cursor-caches", F::macosGeneral, cursorCaches, {}, safe, rebuild);
    c.versioned("tmpdir-scratch", F::macosGeneral, env.tmpDir,
                {"metro-", "react-native-", "haste-map-", "flutter_tools."}, safe, rebuild);
    // What the user threw away but may still take back: offered, never preselected.
    c.paths("trash", F::macosGeneral, {at.data("Trash/files"), at.data("Trash/info"), at.data("Trash/expunged")}, {},
            safe, rebuild, Reversibility::userData);
    c.paths("thumbnails", F::macosGeneral, {at.cache("thumbnails"), at.home(".thumbnails")},
            {"normal|large|x-large|xx-large|fail"}, safe, rebuild);
    c.paths("vscode-extra", F::macosGeneral,
            {at.config("Code/Service Worker/CacheStorage"), at.config("Code/CachedExtensionVSIXs"),
             at.config("Code/CachedProfilesData"), at.config("Code/logs"), at.config("Code/Crashpad")},
            {}, safe, rebuild);
    c.paths("cursor-extra", F::macosGeneral,
            {at.config("Cursor/Service Worker/CacheStorage"), at.config("Cursor/logs")}, {}, safe, rebuild);
    c.paths("zed-caches", F::macosGeneral, {at.cache("zed"), at.data("zed/logs")}, {}, safe, rebuild);
    c.paths("zed-downloads", F::macosGeneral,
            {at.data("zed/languages"), at.data("zed/node"), at.data("zed/prettier"), at.data("zed/copilot"),
             at.data("zed/remote_servers")},
            {}, moderate, redownload);
    c.paths("fleet-caches", F::macosGeneral, {at.cache("JetBrains/Fleet")}, {}, safe, reindex);
    // Never the swap, undo or shada files next to these: they are the user's.
    c.paths("nvim-caches", F::macosGeneral, {at.cache("nvim"), at.state("nvim/log"), at.state("nvim/lsp.log")}, {},
            safe, rebuild);
    c.paths("nvim-plugin-downloads", F::macosGeneral, {at.data("nvim/mason"), at.data("nvim/lazy")}, {}, moderate,
            redownload);
    // --user: the system installation needs an administrator.
    c.command("flatpak-unused", F::macosGeneral, "flatpak uninstall --user --unused -y --noninteractive", moderate,
              redownload);

    c.command("docker-prune", F::docker, "docker system prune -f", aggressive, redownload);
    c.command("docker-builder-prune", F::docker, "docker builder prune -f", aggressive, redownload);
    c.command("podman-image-prune", F::docker, "podman image prune -f", moderate, redownload);
    // Also removes stopped toolbox and distrobox containers, with whatever their users kept in them.
    c.command("podman-system-prune", F::docker, "podman system prune -f", aggressive, redownload,
              Reversibility::userData);

    c.paths("nuget-http-cache", F::dotNet, {at.data("NuGet/v3-cache"), at.data("NuGet/http-cache")}, {}, safe,
            redownload);
    c.paths("nuget-plugins-cache", F::dotNet, {at.data("NuGet/plugins-cache")}, {}, safe, rebuild);
    c.paths("nuget-packages", F::dotNet, {at.tool("NUGET_PACKAGES", "", at.home(".nuget/packages"))}, {}, moderate,
            redownload);
    c.paths("dotnet-toolresolver", F::dotNet, {at.home(".dotnet/toolResolverCache")}, {}, safe, rebuild);
    c.paths("xamarin-android-sdk", F::dotNet, {at.data("Xamarin")}, {}, moderate, redownload);
    c.command("dotnet-workload-clean", F::dotNet, "dotnet workload clean", safe, redownload);

    c.command("metro-cache", F::reactNative,
              metroCacheLine,
              safe, rebuild);
    c.command("watchman-state", F::reactNative, "watchman watch-del-all; watchman shutdown-server", safe, rebuild);

    c.paths("coursier-v1", F::jvm, {at.tool("COURSIER_CACHE", "", at.cache("coursier/v1"))}, {"https"}, safe,
            redownload);
    c.paths("coursier-legacy", F::jvm, {at.home(".coursier/cache")}, {}, safe, redownload);
    c.paths("coursier-jvm", F::jvm, {at.cache("coursier/jvm"), at.cache("coursier/arc")}, {}, aggressive, redownload);
    c.paths("ivy2-cache", F::jvm, {at.home(".ivy2/cache")}, {}, safe, redownload);
    c.paths("sbt-boot", F::jvm, {at.home(".sbt/boot")}, {}, safe, redownload);
    c.paths("scala-cli-cache", F::jvm, {at.cache("scalacli")}, {}, moderate, redownload);
    c.paths("ammonite-cache", F::jvm, {at.home(".ammonite/cache")}, {}, safe, rebuild);
    c.paths("kotlin-daemon", F::jvm, {at.data("kotlin/daemon")}, {}, safe, rebuild);

    c.paths("poetry-cache", F::python,
            at.toolEach("POETRY_CACHE_DIR", {"cache", "artifacts"},
                        {at.cache("pypoetry/cache"), at.cache("pypoetry/artifacts")}),
            {}, safe, redownload);
    c.paths("poetry-venvs", F::python, {at.tool("POETRY_CACHE_DIR", "virtualenvs", at.cache("pypoetry/virtualenvs"))},
            {}, moderate, redownload);
    c.command("conda-clean", F::python, "conda clean --all --yes", safe, redownload);
    c.command("mamba-clean", F::python, "mamba clean --all --yes", safe, redownload);
    c.paths("pipenv-cache", F::python, {at.tool("PIPENV_CACHE_DIR", "", at.cache("pipenv"))}, {}, safe, redownload);
    // The environments of `pipx run`; never venvs/, where the installed applications live.
    c.paths("pipx-run-cache", F::python,
            {at.tool("PIPX_HOME", ".cache", at.cache("pipx")), at.home(".local/pipx/.cache")}, {}, safe, redownload);
    c.command("pre-commit-gc", F::python, "pre-commit gc", safe, redownload);

    const auto stack = [&](const std::string& relative) {
        return at.tool("STACK_ROOT", relative, at.home(".stack/" + relative));
    };
    c.paths("stack-snapshots", F::otherLangs, {stack("snapshots")}, {}, moderate, rebuild);
    c.paths("stack-programs", F::otherLangs, {stack("programs")}, {}, moderate, redownload);
    c.paths("cabal-packages", F::otherLangs, {at.cache("cabal/packages"), at.home(".cabal/packages")},
            {"hackage.haskell.org"}, safe, redownload);
    c.paths("cabal-store", F::otherLangs, {at.state("cabal/store"), at.home(".cabal/store")}, {}, moderate, rebuild);
    c.paths("hex-packages", F::otherLangs, {at.home(".hex/packages")}, {}, safe, redownload);
    c.paths("rebar3-cache", F::otherLangs, {at.cache("rebar3")}, {}, safe, redownload);
    c.paths("zig-cache-global", F::otherLangs, {at.tool("ZIG_GLOBAL_CACHE_DIR", "", at.cache("zig"))}, {"h|o"}, safe,
            rebuild);
    c.paths("nim-cache", F::otherLangs, {at.cache("nim")}, {}, safe, rebuild);
    c.paths("composer-cache", F::otherLangs,
            {at.tool("COMPOSER_CACHE_DIR", "", at.tool("COMPOSER_HOME", "cache", at.cache("composer"))),
             at.home(".composer/cache")},
            {"repo", "files"}, safe, redownload);
    c.paths("bundler-cache", F::otherLangs, {at.tool("BUNDLE_USER_CACHE", "", at.home(".bundle/cache"))}, {}, safe,
            redownload);
    c.command("ghcup-gc", F::otherLangs, "ghcup gc --cache --tmpdirs", safe, redownload);
    c.command("opam-clean", F::otherLangs, "opam clean", safe, redownload);

    c.paths("unity-bee", F::gameEngines, {at.config("unity3d/cache/bee")}, {}, moderate, rebuild);
    c.paths("unity-upm", F::gameEngines,
            at.toolEach("UPM_CACHE_ROOT", {"npm", "packages"},
                        {at.config("unity3d/cache/npm"), at.config("unity3d/cache/packages")}),
            {}, safe, redownload);
    c.paths("godot-cache", F::gameEngines, {at.cache("godot")}, {}, safe, rebuild);
}
}  // namespace

CleanerRegistry::BuiltCatalog CleanerRegistry::build(const Environment& env) {
    CatalogBuilder c(env);
    const bool isLinux = env.catalog == CatalogProfile::gnuLinux;
    if (isLinux) addLinuxEntries(c, env, Places(env));
    else addMacosEntries(c, env);
    c.add(std::make_shared<PerProjectCleaner>(
        env.resolvedProjectRoots(), isLinux ? linuxArtifactSpecs() : artifactSpecs(), env.keepRecentDays,
        std::chrono::system_clock::now(), isLinux ? std::optional<Spec>(cacheTaggedSpec()) : std::nullopt));
    auto notes = c.notes();
    return {c.take(), std::move(notes)};
}

CleanerList CleanerRegistry::makeCleaners(const Environment& env) { return build(env).cleaners; }

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
