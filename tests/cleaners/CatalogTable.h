#pragma once
// The clean catalog written out a second time, independently of the code that builds it:
// every entry, in order, with what it removes and its risk. The Flutter SDK entry (it depends
// on the environment) and the per-project entry are checked on their own.
#include <string>
#include <vector>

#include "kelvo/Family.h"
#include "kelvo/PerProjectCleaner.h"
#include "kelvo/RiskAxes.h"

namespace kelvo::testing {

enum class EntryKind { path, command, versioned };

struct ExpectedEntry {
    std::string id;
    EntryKind kind;
    Family family;
    // path: the home-relative paths; command: the one command line; versioned: the
    // home-relative parent ("" for the temporary directory) followed by the prefixes.
    std::vector<std::string> places;
    Level level;
    RegenCost regenCost;
};

inline const std::vector<ExpectedEntry>& expectedCatalog() {
    static const std::vector<ExpectedEntry> entries{
        {"derived-data", EntryKind::path, Family::xcodeCore, {"Library/Developer/Xcode/DerivedData"}, Level::safe, RegenCost::rebuild},  // 1
        {"xcode-app-cache", EntryKind::path, Family::xcodeCore, {"Library/Caches/com.apple.dt.Xcode"}, Level::safe, RegenCost::rebuild},  // 2
        {"xcode-products", EntryKind::path, Family::xcodeCore, {"Library/Developer/Xcode/Products"}, Level::safe, RegenCost::rebuild},  // 3
        {"xcode-doc-cache", EntryKind::path, Family::xcodeCore, {"Library/Developer/Xcode/DocumentationCache"}, Level::moderate, RegenCost::redownload},  // 4
        {"xcode-downloads", EntryKind::path, Family::xcodeCore, {"Library/Developer/Xcode/Downloads"}, Level::moderate, RegenCost::redownload},  // 5
        {"xcode-device-logs", EntryKind::path, Family::xcodeCore, {"Library/Developer/Xcode/DeviceLogs"}, Level::safe, RegenCost::rebuild},  // 6
        {"ios-device-support", EntryKind::path, Family::simulators, {"Library/Developer/Xcode/iOS DeviceSupport"}, Level::moderate, RegenCost::redownload},  // 7
        {"watchos-device-support", EntryKind::path, Family::simulators, {"Library/Developer/Xcode/watchOS DeviceSupport"}, Level::moderate, RegenCost::redownload},  // 8
        {"tvos-device-support", EntryKind::path, Family::simulators, {"Library/Developer/Xcode/tvOS DeviceSupport"}, Level::moderate, RegenCost::redownload},  // 9
        {"coresimulator-caches", EntryKind::path, Family::simulators, {"Library/Developer/CoreSimulator/Caches"}, Level::safe, RegenCost::rebuild},  // 10
        {"coresimulator-logs", EntryKind::path, Family::simulators, {"Library/Logs/CoreSimulator"}, Level::safe, RegenCost::rebuild},  // 11
        {"simctl-unavailable", EntryKind::command, Family::simulators, {"xcrun simctl delete unavailable"}, Level::safe, RegenCost::redownload},  // 12
        {"cocoapods-cache", EntryKind::path, Family::cocoapods, {"Library/Caches/CocoaPods"}, Level::safe, RegenCost::redownload},  // 13
        {"cocoapods-repos", EntryKind::path, Family::cocoapods, {".cocoapods/repos"}, Level::moderate, RegenCost::redownload},  // 14
        {"pub-cache", EntryKind::path, Family::flutterDart, {".pub-cache"}, Level::moderate, RegenCost::redownload},  // 15
        {"dart-analysis-cache", EntryKind::path, Family::flutterDart, {".dartServer"}, Level::safe, RegenCost::reindex},  // 16
        {"gradle-caches", EntryKind::path, Family::androidGradle, {".gradle/caches"}, Level::moderate, RegenCost::redownload},  // 18
        {"gradle-wrapper", EntryKind::path, Family::androidGradle, {".gradle/wrapper/dists"}, Level::moderate, RegenCost::redownload},  // 19
        {"gradle-daemon", EntryKind::path, Family::androidGradle, {".gradle/daemon"}, Level::safe, RegenCost::rebuild},  // 20
        {"android-cache", EntryKind::path, Family::androidGradle, {".android/cache"}, Level::safe, RegenCost::rebuild},  // 21
        {"android-build-cache", EntryKind::path, Family::androidGradle, {".android/build-cache"}, Level::safe, RegenCost::rebuild},  // 22
        {"maven-repo", EntryKind::path, Family::androidGradle, {".m2/repository"}, Level::moderate, RegenCost::redownload},  // 23
        {"konan", EntryKind::path, Family::androidGradle, {".konan"}, Level::aggressive, RegenCost::redownload},  // 24
        {"android-ndk", EntryKind::versioned, Family::androidGradle, {"Library/Android/sdk/ndk"}, Level::aggressive, RegenCost::redownload},  // 25
        {"android-system-images", EntryKind::versioned, Family::androidGradle, {"Library/Android/sdk/system-images"}, Level::aggressive, RegenCost::redownload},  // 26
        {"npm-cache", EntryKind::path, Family::jsPackages, {".npm/_cacache"}, Level::safe, RegenCost::redownload},  // 27
        {"yarn-cache-lib", EntryKind::path, Family::jsPackages, {"Library/Caches/Yarn"}, Level::safe, RegenCost::redownload},  // 28
        {"yarn-cache-xdg", EntryKind::path, Family::jsPackages, {".cache/yarn"}, Level::safe, RegenCost::redownload},  // 29
        {"bun-cache", EntryKind::command, Family::jsPackages, {"bun pm cache rm"}, Level::safe, RegenCost::redownload},  // 30
        {"pnpm-store-prune", EntryKind::command, Family::jsPackages, {"pnpm store prune"}, Level::moderate, RegenCost::redownload},  // 31
        {"homebrew-cache", EntryKind::path, Family::devMisc, {"Library/Caches/Homebrew"}, Level::safe, RegenCost::redownload},  // 32
        {"brew-cleanup", EntryKind::command, Family::devMisc, {"brew cleanup -s"}, Level::safe, RegenCost::redownload},  // 33
        {"pip-cache", EntryKind::path, Family::devMisc, {"Library/Caches/pip"}, Level::safe, RegenCost::redownload},  // 34
        {"swiftpm-cache", EntryKind::path, Family::devMisc, {"Library/Caches/org.swift.swiftpm"}, Level::moderate, RegenCost::redownload},  // 35
        {"carthage-cache", EntryKind::path, Family::devMisc, {"Library/Caches/org.carthage.CarthageKit"}, Level::moderate, RegenCost::redownload},  // 36
        {"go-build", EntryKind::path, Family::devMisc, {"Library/Caches/go-build"}, Level::safe, RegenCost::rebuild},  // 37
        {"go-mod", EntryKind::path, Family::devMisc, {"go/pkg/mod"}, Level::moderate, RegenCost::redownload},  // 38
        {"cargo-registry", EntryKind::path, Family::devMisc, {".cargo/registry"}, Level::moderate, RegenCost::redownload},  // 39
        {"cargo-git", EntryKind::path, Family::devMisc, {".cargo/git"}, Level::moderate, RegenCost::redownload},  // 40
        {"rubygems", EntryKind::path, Family::devMisc, {".gem"}, Level::moderate, RegenCost::redownload},  // 41
        {"ccache", EntryKind::path, Family::devMisc, {".ccache", "Library/Caches/ccache"}, Level::safe, RegenCost::rebuild},  // 42
        {"uv-cache", EntryKind::path, Family::devMisc, {".cache/uv"}, Level::safe, RegenCost::redownload},  // 43
        {"puppeteer-cache", EntryKind::path, Family::devMisc, {".cache/puppeteer"}, Level::safe, RegenCost::redownload},  // 44
        {"playwright-cache", EntryKind::path, Family::devMisc, {"Library/Caches/ms-playwright"}, Level::safe, RegenCost::redownload},  // 45
        {"huggingface-cache", EntryKind::path, Family::devMisc, {".cache/huggingface"}, Level::aggressive, RegenCost::redownload},  // 46
        {"jetbrains-caches", EntryKind::versioned, Family::macosGeneral, {"Library/Caches/JetBrains"}, Level::safe, RegenCost::rebuild},  // 47
        {"androidstudio-caches", EntryKind::versioned, Family::macosGeneral, {"Library/Caches/Google", "AndroidStudio"}, Level::safe, RegenCost::rebuild},  // 48
        {"vscode-caches", EntryKind::path, Family::macosGeneral, {"Library/Application Support/Code/Cache", "Library/Application Support/Code/CachedData", "Library/Application Support/Code/Code Cache", "Library/Application Support/Code/GPUCache"}, Level::safe, RegenCost::rebuild},  // 49
        {"cursor-caches", EntryKind::path, Family::macosGeneral, {"Library/Application Support/Cursor/Cache", "Library/Application Support/Cursor/CachedData", "Library/Application Support/Cursor/Code Cache", "Library/Application Support/Cursor/GPUCache"}, Level::safe, RegenCost::rebuild},  // 50
        {"user-logs", EntryKind::path, Family::macosGeneral, {"Library/Logs"}, Level::safe, RegenCost::rebuild},  // 51
        {"crashreporter", EntryKind::path, Family::macosGeneral, {"Library/Application Support/CrashReporter"}, Level::safe, RegenCost::rebuild},  // 52
        {"tmpdir-scratch", EntryKind::versioned, Family::macosGeneral, {"", "metro-", "react-native-", "haste-map-", "flutter_tools."}, Level::safe, RegenCost::rebuild},  // 53
        {"trash", EntryKind::path, Family::macosGeneral, {".Trash"}, Level::safe, RegenCost::rebuild},  // 54
        {"docker-prune", EntryKind::command, Family::docker, {"docker system prune -f"}, Level::aggressive, RegenCost::redownload},  // 55
        {"docker-builder-prune", EntryKind::command, Family::docker, {"docker builder prune -f"}, Level::aggressive, RegenCost::redownload},  // 56
        {"nuget-http-cache", EntryKind::path, Family::dotNet, {".local/share/NuGet/v3-cache"}, Level::safe, RegenCost::redownload},  // 57
        {"nuget-plugins-cache", EntryKind::path, Family::dotNet, {".local/share/NuGet/plugins-cache"}, Level::safe, RegenCost::rebuild},  // 58
        {"dotnet-toolresolver", EntryKind::path, Family::dotNet, {".dotnet/toolResolverCache"}, Level::safe, RegenCost::rebuild},  // 59
        {"xamarin-mtbs", EntryKind::path, Family::dotNet, {"Library/Caches/Xamarin/mtbs"}, Level::safe, RegenCost::rebuild},  // 60
        {"xamarin-components", EntryKind::path, Family::dotNet, {"Library/Caches/Xamarin/Components"}, Level::safe, RegenCost::redownload},  // 61
        {"xamarin-android-sdk", EntryKind::path, Family::dotNet, {".local/share/Xamarin"}, Level::moderate, RegenCost::redownload},  // 62
        {"dotnet-workload-clean", EntryKind::command, Family::dotNet, {"dotnet workload clean"}, Level::safe, RegenCost::redownload},  // 63
        {"metro-cache", EntryKind::command, Family::reactNative, {"rm -rf \"$TMPDIR\"/metro-cache \"$TMPDIR\"/metro-bundler-cache-* \"$TMPDIR\"/react-native-packager-cache-* \"$TMPDIR\"/haste-map-*"}, Level::safe, RegenCost::rebuild},  // 64
        {"watchman-state", EntryKind::command, Family::reactNative, {"watchman watch-del-all; watchman shutdown-server"}, Level::safe, RegenCost::rebuild},  // 65
        {"coursier-v1", EntryKind::path, Family::jvm, {"Library/Caches/Coursier/v1"}, Level::safe, RegenCost::redownload},  // 66
        {"coursier-legacy", EntryKind::path, Family::jvm, {".coursier/cache"}, Level::safe, RegenCost::redownload},  // 67
        {"coursier-jvm", EntryKind::path, Family::jvm, {"Library/Caches/Coursier/jvm", "Library/Caches/Coursier/arc"}, Level::aggressive, RegenCost::redownload},  // 68
        {"ivy2-cache", EntryKind::path, Family::jvm, {".ivy2/cache"}, Level::safe, RegenCost::redownload},  // 69
        {"sbt-boot", EntryKind::path, Family::jvm, {".sbt/boot"}, Level::safe, RegenCost::redownload},  // 70
        {"scala-cli-cache", EntryKind::path, Family::jvm, {"Library/Caches/ScalaCli"}, Level::moderate, RegenCost::redownload},  // 71
        {"ammonite-cache", EntryKind::path, Family::jvm, {".ammonite/cache"}, Level::safe, RegenCost::rebuild},  // 72
        {"kotlin-daemon", EntryKind::path, Family::jvm, {"Library/Application Support/kotlin/daemon"}, Level::safe, RegenCost::rebuild},  // 73
        {"poetry-cache", EntryKind::path, Family::python, {"Library/Caches/pypoetry/cache", "Library/Caches/pypoetry/artifacts"}, Level::safe, RegenCost::redownload},  // 74
        {"poetry-venvs", EntryKind::path, Family::python, {"Library/Caches/pypoetry/virtualenvs"}, Level::moderate, RegenCost::redownload},  // 75
        {"conda-clean", EntryKind::command, Family::python, {"conda clean --all --yes"}, Level::safe, RegenCost::redownload},  // 76
        {"stack-snapshots", EntryKind::path, Family::otherLangs, {".stack/snapshots"}, Level::moderate, RegenCost::rebuild},  // 77
        {"stack-programs", EntryKind::path, Family::otherLangs, {".stack/programs"}, Level::moderate, RegenCost::redownload},  // 78
        {"cabal-packages", EntryKind::path, Family::otherLangs, {".cache/cabal/packages", ".cabal/packages"}, Level::safe, RegenCost::redownload},  // 79
        {"cabal-store", EntryKind::path, Family::otherLangs, {".local/state/cabal/store", ".cabal/store"}, Level::moderate, RegenCost::rebuild},  // 80
        {"hex-packages", EntryKind::path, Family::otherLangs, {".hex/packages"}, Level::safe, RegenCost::redownload},  // 81
        {"rebar3-cache", EntryKind::path, Family::otherLangs, {".cache/rebar3"}, Level::safe, RegenCost::redownload},  // 82
        {"zig-cache-global", EntryKind::path, Family::otherLangs, {".cache/zig"}, Level::safe, RegenCost::rebuild},  // 83
        {"nim-cache", EntryKind::path, Family::otherLangs, {".cache/nim"}, Level::safe, RegenCost::rebuild},  // 84
        {"composer-cache", EntryKind::path, Family::otherLangs, {"Library/Caches/composer"}, Level::safe, RegenCost::redownload},  // 85
        {"deno-cache", EntryKind::path, Family::jsPackages, {"Library/Caches/deno"}, Level::safe, RegenCost::redownload},  // 86
        {"cypress-cache", EntryKind::path, Family::jsPackages, {"Library/Caches/Cypress"}, Level::safe, RegenCost::redownload},  // 87
        {"electron-cache", EntryKind::path, Family::jsPackages, {"Library/Caches/electron"}, Level::safe, RegenCost::redownload},  // 88
        {"electron-builder-cache", EntryKind::path, Family::jsPackages, {"Library/Caches/electron-builder", ".cache/electron-builder"}, Level::safe, RegenCost::redownload},  // 89
        {"node-gyp-cache", EntryKind::path, Family::jsPackages, {"Library/Caches/node-gyp", ".node-gyp"}, Level::safe, RegenCost::redownload},  // 90
        {"corepack-cache", EntryKind::path, Family::jsPackages, {".cache/node/corepack"}, Level::safe, RegenCost::redownload},  // 91
        {"node-sass-cache", EntryKind::path, Family::jsPackages, {".npm/node-sass"}, Level::safe, RegenCost::redownload},  // 92
        {"vscode-extra", EntryKind::path, Family::macosGeneral, {"Library/Application Support/Code/Service Worker/CacheStorage", "Library/Application Support/Code/CachedExtensionVSIXs", "Library/Application Support/Code/logs", "Library/Caches/com.microsoft.VSCode"}, Level::safe, RegenCost::rebuild},  // 93
        {"cursor-extra", EntryKind::path, Family::macosGeneral, {"Library/Application Support/Cursor/Service Worker/CacheStorage", "Library/Application Support/Cursor/logs"}, Level::safe, RegenCost::rebuild},  // 94
        {"zed-caches", EntryKind::path, Family::macosGeneral, {"Library/Caches/dev.zed.Zed", "Library/Caches/Zed", "Library/Logs/Zed"}, Level::safe, RegenCost::rebuild},  // 95
        {"fleet-caches", EntryKind::path, Family::macosGeneral, {"Library/Caches/JetBrains/Fleet", "Library/Logs/JetBrains/Fleet"}, Level::safe, RegenCost::reindex},  // 96
        {"terraform-plugin-cache", EntryKind::path, Family::devMisc, {".terraform.d/plugin-cache"}, Level::moderate, RegenCost::redownload},  // 97
        {"vagrant-tmp", EntryKind::path, Family::devMisc, {".vagrant.d/tmp"}, Level::safe, RegenCost::redownload},  // 98
        {"minikube-cache", EntryKind::path, Family::devMisc, {".minikube/cache"}, Level::moderate, RegenCost::redownload},  // 99
        {"sccache", EntryKind::path, Family::devMisc, {"Library/Caches/Mozilla.sccache"}, Level::safe, RegenCost::rebuild},  // 100
        {"unity-bee", EntryKind::path, Family::gameEngines, {"Library/Unity/cache/bee"}, Level::moderate, RegenCost::rebuild},  // 101
        {"unity-upm", EntryKind::path, Family::gameEngines, {"Library/Caches/Unity/upm"}, Level::safe, RegenCost::redownload},  // 102
    };
    return entries;
}

inline const std::vector<PerProjectCleaner::ArtifactSpec>& expectedArtifactSpecs() {
    static const std::vector<PerProjectCleaner::ArtifactSpec> specs{
        {"node_modules", Level::moderate, Reversibility::regenerable, RegenCost::redownload, {}},  // 1
        {"build", Level::moderate, Reversibility::regenerable, RegenCost::rebuild, {}},  // 2
        {".dart_tool", Level::safe, Reversibility::regenerable, RegenCost::reindex, {}},  // 3
        {"Pods", Level::safe, Reversibility::regenerable, RegenCost::redownload, {}},  // 4
        {".gradle", Level::safe, Reversibility::regenerable, RegenCost::rebuild, {}},  // 5
        {".next", Level::safe, Reversibility::regenerable, RegenCost::rebuild, {}},  // 6
        {".build", Level::safe, Reversibility::regenerable, RegenCost::rebuild, {}},  // 7
        {".expo", Level::safe, Reversibility::regenerable, RegenCost::rebuild, {}},  // 8
        {".nuxt", Level::safe, Reversibility::regenerable, RegenCost::rebuild, {}},  // 9
        {".svelte-kit", Level::safe, Reversibility::regenerable, RegenCost::rebuild, {}},  // 10
        {".astro", Level::safe, Reversibility::regenerable, RegenCost::rebuild, {}},  // 11
        {".parcel-cache", Level::safe, Reversibility::regenerable, RegenCost::rebuild, {}},  // 12
        {".turbo", Level::safe, Reversibility::regenerable, RegenCost::rebuild, {}},  // 13
        {".angular", Level::safe, Reversibility::regenerable, RegenCost::rebuild, {}},  // 14
        {".nx", Level::safe, Reversibility::regenerable, RegenCost::rebuild, {}},  // 15
        {".output", Level::moderate, Reversibility::regenerable, RegenCost::rebuild, {"nuxt.config.js|nuxt.config.ts|nuxt.config.mjs"}},  // 16
        {".cache", Level::moderate, Reversibility::regenerable, RegenCost::rebuild, {"gatsby-config.js|gatsby-config.ts|gatsby-config.mjs|gatsby-config.cjs"}},  // 17
        {"bin", Level::safe, Reversibility::regenerable, RegenCost::rebuild, {"*.csproj|*.fsproj|*.vbproj|*.sln"}},  // 18
        {"obj", Level::safe, Reversibility::regenerable, RegenCost::rebuild, {"*.csproj|*.fsproj|*.vbproj|*.sln"}},  // 19
        {".scala-build", Level::safe, Reversibility::regenerable, RegenCost::rebuild, {}},  // 20
        {".bloop", Level::moderate, Reversibility::regenerable, RegenCost::rebuild, {}},  // 21
        {".metals", Level::moderate, Reversibility::regenerable, RegenCost::reindex, {}},  // 22
        {"__pycache__", Level::safe, Reversibility::regenerable, RegenCost::rebuild, {}},  // 23
        {".pytest_cache", Level::safe, Reversibility::regenerable, RegenCost::rebuild, {}},  // 24
        {".mypy_cache", Level::safe, Reversibility::regenerable, RegenCost::rebuild, {}},  // 25
        {".ruff_cache", Level::safe, Reversibility::regenerable, RegenCost::rebuild, {}},  // 26
        {".tox", Level::moderate, Reversibility::regenerable, RegenCost::redownload, {}},  // 27
        {"_build", Level::safe, Reversibility::regenerable, RegenCost::rebuild, {"mix.exs|rebar.config"}},  // 28
        {".zig-cache", Level::safe, Reversibility::regenerable, RegenCost::rebuild, {}},  // 29
        {"zig-cache", Level::safe, Reversibility::regenerable, RegenCost::rebuild, {}},  // 30
        {".terraform", Level::safe, Reversibility::regenerable, RegenCost::redownload, {}},  // 31
        {"Library", Level::aggressive, Reversibility::regenerable, RegenCost::rebuild, {"Assets", "ProjectSettings"}},  // 32
        {"Temp", Level::safe, Reversibility::regenerable, RegenCost::rebuild, {"Assets", "ProjectSettings"}},  // 33
        {"DerivedDataCache", Level::safe, Reversibility::regenerable, RegenCost::rebuild, {"*.uproject"}},  // 34
        {"Intermediate", Level::safe, Reversibility::regenerable, RegenCost::rebuild, {"*.uproject"}},  // 35
    };
    return specs;
}

}  // namespace kelvo::testing
