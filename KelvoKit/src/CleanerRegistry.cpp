#include "kelvo/CleanerRegistry.h"

#include <chrono>

#include "kelvo/CommandCleaner.h"
#include "kelvo/L10n.h"
#include "kelvo/PathCleaner.h"
#include "kelvo/PerProjectCleaner.h"
#include "kelvo/VersionedDirCleaner.h"

namespace kelvo {
namespace {

using Spec = PerProjectCleaner::ArtifactSpec;

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

// Appends entries in catalog order; every display name is looked up as "cleaner.<id>".
class CatalogBuilder {
public:
    explicit CatalogBuilder(const Environment& env) : env_(env) {}

    void path(const std::string& id, Family family, std::vector<std::string> relativePaths, Level level,
              RegenCost cost) {
        pathFrom(env_.home, id, family, std::move(relativePaths), level, cost);
    }
    void pathFrom(const std::filesystem::path& base, const std::string& id, Family family,
                  std::vector<std::string> relativePaths, Level level, RegenCost cost) {
        cleaners_.push_back(std::make_shared<PathCleaner>(id, nameOf(id), family, base, std::move(relativePaths),
                                                          level, regenerable, cost));
    }
    void command(const std::string& id, Family family, std::string commandLine, Level level, RegenCost cost) {
        cleaners_.push_back(std::make_shared<CommandCleaner>(id, nameOf(id), family, std::move(commandLine), level,
                                                             regenerable, cost, 0));
    }
    void versioned(const std::string& id, Family family, std::filesystem::path parent, std::vector<std::string> prefixes,
                   Level level, RegenCost cost) {
        cleaners_.push_back(std::make_shared<VersionedDirCleaner>(id, nameOf(id), family, std::move(parent),
                                                                  std::move(prefixes), level, regenerable, cost));
    }
    // The parent given as one home-relative string, slashes included.
    void versionedInHome(const std::string& id, Family family, const std::string& relativeParent,
                         std::vector<std::string> prefixes, Level level, RegenCost cost) {
        versioned(id, family, env_.home / relativeParent, std::move(prefixes), level, cost);
    }
    void add(std::shared_ptr<const Cleaner> cleaner) { cleaners_.push_back(std::move(cleaner)); }

    CleanerList take() { return std::move(cleaners_); }

private:
    static std::string nameOf(const std::string& id) { return L10n::t("cleaner." + id); }

    const Environment& env_;
    CleanerList cleaners_;
};

}  // namespace

CleanerList CleanerRegistry::makeCleaners(const Environment& env) {
    CatalogBuilder c(env);
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

    c.path("npm-cache", F::jsPackages, {".npm/_cacache"}, safe, redownload);
    c.path("yarn-cache-lib", F::jsPackages, {"Library/Caches/Yarn"}, safe, redownload);
    c.path("yarn-cache-xdg", F::jsPackages, {".cache/yarn"}, safe, redownload);
    c.command("bun-cache", F::jsPackages, "bun pm cache rm", safe, redownload);
    c.command("pnpm-store-prune", F::jsPackages, "pnpm store prune", moderate, redownload);

    c.path("homebrew-cache", F::devMisc, {"Library/Caches/Homebrew"}, safe, redownload);
    c.command("brew-cleanup", F::devMisc, "brew cleanup -s", safe, redownload);
    c.path("pip-cache", F::devMisc, {"Library/Caches/pip"}, safe, redownload);
    c.path("swiftpm-cache", F::devMisc, {"Library/Caches/org.swift.swiftpm"}, moderate, redownload);
    c.path("carthage-cache", F::devMisc, {"Library/Caches/org.carthage.CarthageKit"}, moderate, redownload);
    c.path("go-build", F::devMisc, {"Library/Caches/go-build"}, safe, rebuild);
    c.path("go-mod", F::devMisc, {"go/pkg/mod"}, moderate, redownload);
    c.path("cargo-registry", F::devMisc, {".cargo/registry"}, moderate, redownload);
    c.path("cargo-git", F::devMisc, {".cargo/git"}, moderate, redownload);
    c.path("rubygems", F::devMisc, {".gem"}, moderate, redownload);
    c.path("ccache", F::devMisc, {".ccache", "Library/Caches/ccache"}, safe, rebuild);
    c.path("uv-cache", F::devMisc, {".cache/uv"}, safe, redownload);
    c.path("puppeteer-cache", F::devMisc, {".cache/puppeteer"}, safe, redownload);
    c.path("playwright-cache", F::devMisc, {"Library/Caches/ms-playwright"}, safe, redownload);
    c.path("huggingface-cache", F::devMisc, {".cache/huggingface"}, aggressive, redownload);

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
              "rm -rf \"$TMPDIR\"/metro-cache \"$TMPDIR\"/metro-bundler-cache-* "
              "\"$TMPDIR\"/react-native-packager-cache-* \"$TMPDIR\"/haste-map-*",
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

    c.add(std::make_shared<PerProjectCleaner>(env.resolvedProjectRoots(), artifactSpecs(), env.keepRecentDays,
                                              std::chrono::system_clock::now()));
    return c.take();
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
