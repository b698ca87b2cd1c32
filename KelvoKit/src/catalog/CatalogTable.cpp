#include "catalog/CatalogTable.h"

#include <array>

#include "catalog/CatalogPlaces.h"

namespace kelvo {
namespace {

using CatalogTable::Entry;
using CatalogTable::Kind;
using CatalogTable::Placement;
using F = Family;

using enum Level;
using enum RegenCost;
constexpr Placement nowhere{};

// The package managers that hold their caches while they run.
struct Runs {
    std::string_view programs;
};
constexpr Runs npmRuns{"npm"};
constexpr Runs yarnRuns{"yarn; yarnpkg"};
constexpr Runs pnpmRuns{"pnpm"};

// Rows of each kind, with the placement on macOS then on Linux; one placement: the same
// on both.
constexpr Entry path(std::string_view id, Family family, Level level, RegenCost cost, Placement macos,
                     Placement gnuLinux, Runs guards = {}) {
    return {id, Kind::path, family, level, cost, {}, guards.programs, macos, gnuLinux};
}
constexpr Entry path(std::string_view id, Family family, Level level, RegenCost cost, Placement both) {
    return path(id, family, level, cost, both, both);
}
constexpr Entry pathUnlessFound(std::string_view program, std::string_view id, Family family, Level level,
                                RegenCost cost, Placement macos, Placement gnuLinux, Runs guards) {
    Entry entry = path(id, family, level, cost, macos, gnuLinux, guards);
    entry.unlessFound = program;
    return entry;
}
constexpr Entry versioned(std::string_view id, Family family, Level level, RegenCost cost, std::string_view prefixes,
                          Placement macos, Placement gnuLinux) {
    return {id, Kind::versioned, family, level, cost, prefixes, {}, macos, gnuLinux};
}
enum class On { both, macos, gnuLinux };
constexpr Entry command(std::string_view id, Family family, Level level, RegenCost cost, std::string_view line,
                        On on = On::both, Reversibility reversibility = Reversibility::regenerable,
                        Runs guards = {}) {
    const Placement placement{line, {}, reversibility};
    return {id, Kind::command, family, level, cost, {}, guards.programs, on == On::gnuLinux ? nowhere : placement,
            on == On::macos ? nowhere : placement};
}

// On Linux each path and versioned entry names the marks its tool leaves at the top of
// every place it keeps (PlaceMarks): a place without them is not offered, wherever it is.
// No marks means the tool leaves none certain across its versions (content-addressed or
// version-named folders, or what the user put there, as in the trash): such a place is
// offered where the tool keeps it by default, never where a variable moved it, since
// there nothing tells its data from the user's. No entry runs a command that needs root.
// The macOS places are the ones the catalog has always had, without marks; what has no
// counterpart on Linux (Xcode, the simulators, Carthage, the Xamarin caches, ~/Library
// logs and crash reports) is not in the Linux catalog.
constexpr std::array table{
    path("derived-data", F::xcodeCore, safe, rebuild, {"~/Library/Developer/Xcode/DerivedData"}, nowhere),
    path("xcode-app-cache", F::xcodeCore, safe, rebuild, {"~/Library/Caches/com.apple.dt.Xcode"}, nowhere),
    path("xcode-products", F::xcodeCore, safe, rebuild, {"~/Library/Developer/Xcode/Products"}, nowhere),
    path("xcode-doc-cache", F::xcodeCore, moderate, redownload, {"~/Library/Developer/Xcode/DocumentationCache"},
         nowhere),
    path("xcode-downloads", F::xcodeCore, moderate, redownload, {"~/Library/Developer/Xcode/Downloads"}, nowhere),
    path("xcode-device-logs", F::xcodeCore, safe, rebuild, {"~/Library/Developer/Xcode/DeviceLogs"}, nowhere),

    path("ios-device-support", F::simulators, moderate, redownload, {"~/Library/Developer/Xcode/iOS DeviceSupport"},
         nowhere),
    path("watchos-device-support", F::simulators, moderate, redownload,
         {"~/Library/Developer/Xcode/watchOS DeviceSupport"}, nowhere),
    path("tvos-device-support", F::simulators, moderate, redownload, {"~/Library/Developer/Xcode/tvOS DeviceSupport"},
         nowhere),
    path("coresimulator-caches", F::simulators, safe, rebuild, {"~/Library/Developer/CoreSimulator/Caches"}, nowhere),
    path("coresimulator-logs", F::simulators, safe, rebuild, {"~/Library/Logs/CoreSimulator"}, nowhere),
    command("simctl-unavailable", F::simulators, safe, redownload, "xcrun simctl delete unavailable", On::macos),

    path("cocoapods-cache", F::cocoapods, safe, redownload, {"~/Library/Caches/CocoaPods"}, nowhere),
    path("cocoapods-repos", F::cocoapods, moderate, redownload, {"~/.cocoapods/repos"}),

    path("pub-cache", F::flutterDart, moderate, redownload, {"~/.pub-cache"}, {"$PUB_CACHE > ~/.pub-cache", "hosted"}),
    path("dart-analysis-cache", F::flutterDart, safe, reindex, {"~/.dartServer"}),
    path("flutter-sdk-cache", F::flutterDart, aggressive, redownload, {"@flutter"}),

    path("gradle-caches", F::androidGradle, moderate, redownload, {"~/.gradle/caches"},
         {"$GRADLE_USER_HOME/caches > ~/.gradle/caches", "modules-2|journal-1"}),
    // On Linux the wrapper's distributions, Gradle's and Maven's, are weighed one by one with
    // the old runtimes (prepare).
    path("gradle-wrapper", F::androidGradle, moderate, redownload, {"~/.gradle/wrapper/dists"}, nowhere),
    path("gradle-daemon", F::androidGradle, safe, rebuild, {"~/.gradle/daemon"},
         {"$GRADLE_USER_HOME/daemon > ~/.gradle/daemon"}),
    path("gradle-jdks", F::androidGradle, moderate, redownload, nowhere, {"$GRADLE_USER_HOME/jdks > ~/.gradle/jdks"}),
    path("android-cache", F::androidGradle, safe, rebuild, {"~/.android/cache"}),
    path("android-build-cache", F::androidGradle, safe, rebuild, {"~/.android/build-cache"}),
    path("maven-repo", F::androidGradle, moderate, redownload, {"~/.m2/repository"}),
    path("konan", F::androidGradle, aggressive, redownload, {"~/.konan"}, {"$KONAN_DATA_DIR > ~/.konan"}),
    versioned("android-ndk", F::androidGradle, aggressive, redownload, {}, {"~/Library/Android/sdk/ndk"},
              {"$ANDROID_HOME/ndk > ~/Android/Sdk/ndk", "source.properties"}),
    versioned("android-system-images", F::androidGradle, aggressive, redownload, {},
              {"~/Library/Android/sdk/system-images"}, {"$ANDROID_HOME/system-images > ~/Android/Sdk/system-images"}),

    path("npm-cache", F::jsPackages, safe, redownload, {"~/.npm/_cacache"},
         {"$npm_config_cache/_cacache > $NPM_CONFIG_CACHE/_cacache > ~/.npm/_cacache", "index-v5|content-v2"},
         npmRuns),
    path("yarn-cache-lib", F::jsPackages, safe, redownload, {"~/Library/Caches/Yarn"}, nowhere, yarnRuns),
    path("yarn-cache-xdg", F::jsPackages, safe, redownload, {"~/.cache/yarn"},
         {"$YARN_CACHE_FOLDER > @cache/yarn", "v6"}, yarnRuns),
    path("yarn-berry-cache", F::jsPackages, safe, redownload, nowhere,
         {"$YARN_GLOBAL_FOLDER/cache > ~/.yarn/berry/cache"}, yarnRuns),
    command("bun-cache", F::jsPackages, safe, redownload, "bun pm cache rm"),
    // The store is hard-linked into every project's node_modules: while pnpm is there, only
    // it may prune it. Without pnpm nothing will link from the store again, and removing it
    // frees what no project links to (the sizer counts only that): it goes by path.
    command("pnpm-store-prune", F::jsPackages, moderate, redownload, "pnpm store prune", On::both,
            Reversibility::regenerable, pnpmRuns),
    pathUnlessFound("pnpm", "pnpm-store", F::jsPackages, moderate, redownload, nowhere,
                    {"$PNPM_HOME/store > @data/pnpm/store", "v3|v10"}, pnpmRuns),
    path("pnpm-metadata-cache", F::jsPackages, safe, redownload, nowhere, {"@cache/pnpm"}, pnpmRuns),

    path("homebrew-cache", F::devMisc, safe, redownload, {"~/Library/Caches/Homebrew"},
         {"$HOMEBREW_CACHE > @cache/Homebrew"}),
    command("brew-cleanup", F::devMisc, safe, redownload, "brew cleanup -s"),
    path("pip-cache", F::devMisc, safe, redownload, {"~/Library/Caches/pip"},
         {"$PIP_CACHE_DIR > @cache/pip", "http|http-v2|wheels"}),
    path("swiftpm-cache", F::devMisc, moderate, redownload, {"~/Library/Caches/org.swift.swiftpm"},
         {"@cache/org.swift.swiftpm"}),
    path("carthage-cache", F::devMisc, moderate, redownload, {"~/Library/Caches/org.carthage.CarthageKit"}, nowhere),
    path("go-build", F::devMisc, safe, rebuild, {"~/Library/Caches/go-build"},
         {"$GOCACHE > @cache/go-build", "README; trim.txt"}),
    path("go-mod", F::devMisc, moderate, redownload, {"~/go/pkg/mod"},
         {"$GOMODCACHE > $GOPATH/pkg/mod > ~/go/pkg/mod", "cache/download"}),
    path("go-tool-caches", F::devMisc, safe, rebuild, nowhere, {"@cache/gopls; @cache/golangci-lint"}),
    path("cargo-registry", F::devMisc, moderate, redownload, {"~/.cargo/registry"},
         {"$CARGO_HOME/registry > ~/.cargo/registry", "index|cache"}),
    path("cargo-git", F::devMisc, moderate, redownload, {"~/.cargo/git"},
         {"$CARGO_HOME/git > ~/.cargo/git", "db|checkouts"}),
    path("rustup-downloads", F::devMisc, safe, redownload, nowhere,
         {"$RUSTUP_HOME/downloads > ~/.rustup/downloads; $RUSTUP_HOME/tmp > ~/.rustup/tmp"}),
    // Never ~/.gem itself: it also holds credentials, the user's key for the gem host. On
    // Linux GEM_HOME holds the gems and their gemspecs, but ~/.gem and the XDG folder keep them
    // one level deeper, under ruby/<version>: no one mark fits every place. Never GEM_HOME's
    // bin either, which may be a folder of the user's own programs.
    path("rubygems", F::devMisc, moderate, redownload, {"~/.gem/{ruby,specs}"},
         {"~/.gem/{ruby,specs} unless $GEM_HOME; @data/gem/{ruby,specs} unless $GEM_HOME; "
          "$GEM_HOME/{gems,specifications,cache,extensions,build_info,doc}"}),
    // On Linux the XDG cache only: CCACHE_DIR and the legacy ~/.ccache also hold ccache.conf.
    // Its top holds hashed subfolders and, in some versions only, a CACHEDIR.TAG: no mark.
    path("ccache", F::devMisc, safe, rebuild, {"~/.ccache; ~/Library/Caches/ccache"}, {"@cache/ccache"}),
    command("conan-cache-clean", F::devMisc, safe, rebuild, "conan cache clean \"*\"", On::gnuLinux),
    path("vcpkg-archives", F::devMisc, safe, rebuild, nowhere, {"$VCPKG_DEFAULT_BINARY_CACHE > @cache/vcpkg/archives"}),
    path("bazelisk-cache", F::devMisc, safe, redownload, nowhere, {"$BAZELISK_HOME > @cache/bazelisk"}),
    path("uv-cache", F::devMisc, safe, redownload, {"~/.cache/uv"}, {"$UV_CACHE_DIR > @cache/uv", "CACHEDIR.TAG"}),
    path("puppeteer-cache", F::devMisc, safe, redownload, {"~/.cache/puppeteer"},
         {"$PUPPETEER_CACHE_DIR > ~/.cache/puppeteer", "chrome|chrome-headless-shell|firefox"}),
    path("playwright-cache", F::devMisc, safe, redownload, {"~/Library/Caches/ms-playwright"},
         {"$PLAYWRIGHT_BROWSERS_PATH > @cache/ms-playwright; "
          "@cache/ms-playwright-go unless $PLAYWRIGHT_BROWSERS_PATH"}),
    // The downloads only: the folder above (HF_HOME) also holds the user's access token.
    path("huggingface-cache", F::devMisc, aggressive, redownload, {"~/.cache/huggingface/hub"},
         {"$HF_HOME/hub > @cache/huggingface/hub"}),

    // On Linux the caches and logs of each IDE version are weighed with the old runtimes
    // (prepare), which offers every version but the newest of each product; the newest is the
    // IDE in use, whose indexes only the IDE itself may drop (File | Invalidate Caches).
    versioned("jetbrains-caches", F::general, safe, rebuild, {}, {"~/Library/Caches/JetBrains"}, nowhere),
    versioned("androidstudio-caches", F::general, safe, rebuild, "AndroidStudio", {"~/Library/Caches/Google"},
              {"@cache/Google"}),
    path("vscode-caches", F::general, safe, rebuild,
         {"~/Library/Application Support/Code/{Cache,CachedData,Code Cache,GPUCache}"},
         {"@config/{Code,Code - Insiders,VSCodium,Windsurf}/"
          "{Cache,CachedData,Code Cache,GPUCache,DawnGraphiteCache,DawnWebGPUCache}; "
          "~/.var/app/com.visualstudio.code/config/Code/"
          "{Cache,CachedData,Code Cache,GPUCache,DawnGraphiteCache,DawnWebGPUCache}"}),
    path("cursor-caches", F::general, safe, rebuild,
         {"~/Library/Application Support/Cursor/{Cache,CachedData,Code Cache,GPUCache}"},
         {"@config/Cursor/{Cache,CachedData,Code Cache,GPUCache,DawnGraphiteCache,DawnWebGPUCache}"}),
    path("user-logs", F::general, safe, rebuild, {"~/Library/Logs"}, nowhere),
    path("crashreporter", F::general, safe, rebuild, {"~/Library/Application Support/CrashReporter"}, nowhere),
    // The temporary folder is shared: only entries named like these tools' scratch folders.
    versioned("tmpdir-scratch", F::general, safe, rebuild, "metro-; react-native-; haste-map-; flutter_tools.",
              {"@tmp"}, {"@tmp"}),
    // On Linux what the user threw away but may still take back: offered, never preselected.
    path("trash", F::general, safe, rebuild, {"~/.Trash"},
         {"@data/Trash/{files,info,expunged}", {}, Reversibility::userData}),
    path("thumbnails", F::general, safe, rebuild, nowhere,
         {"@cache/thumbnails; ~/.thumbnails", "normal|large|x-large|xx-large|fail"}),

    command("docker-prune", F::docker, aggressive, redownload, "docker system prune -f"),
    command("docker-builder-prune", F::docker, aggressive, redownload, "docker builder prune -f"),
    command("podman-image-prune", F::docker, moderate, redownload, "podman image prune -f", On::gnuLinux),
    // Also removes stopped toolbox and distrobox containers, with whatever their users kept in them.
    command("podman-system-prune", F::docker, aggressive, redownload, "podman system prune -f", On::gnuLinux,
            Reversibility::userData),

    path("nuget-http-cache", F::dotNet, safe, redownload, {"~/.local/share/NuGet/v3-cache"},
         {"@data/NuGet/v3-cache; @data/NuGet/http-cache"}),
    path("nuget-plugins-cache", F::dotNet, safe, rebuild, {"~/.local/share/NuGet/plugins-cache"},
         {"@data/NuGet/plugins-cache"}),
    path("nuget-packages", F::dotNet, moderate, redownload, nowhere, {"$NUGET_PACKAGES > ~/.nuget/packages"}),
    path("dotnet-toolresolver", F::dotNet, safe, rebuild, {"~/.dotnet/toolResolverCache"}),
    path("xamarin-mtbs", F::dotNet, safe, rebuild, {"~/Library/Caches/Xamarin/mtbs"}, nowhere),
    path("xamarin-components", F::dotNet, safe, redownload, {"~/Library/Caches/Xamarin/Components"}, nowhere),
    path("xamarin-android-sdk", F::dotNet, moderate, redownload, {"~/.local/share/Xamarin"}, {"@data/Xamarin"}),
    command("dotnet-workload-clean", F::dotNet, safe, redownload, "dotnet workload clean"),

    // Metro's caches in the temporary folder, which may be shared: the executor runs this
    // only when every entry it names is the user's own.
    command("metro-cache", F::reactNative, safe, rebuild,
            "rm -rf \"$TMPDIR\"/metro-cache \"$TMPDIR\"/metro-bundler-cache-* "
            "\"$TMPDIR\"/react-native-packager-cache-* \"$TMPDIR\"/haste-map-*"),
    command("watchman-state", F::reactNative, safe, rebuild, "watchman watch-del-all; watchman shutdown-server"),

    path("coursier-v1", F::jvm, safe, redownload, {"~/Library/Caches/Coursier/v1"},
         {"$COURSIER_CACHE > @cache/coursier/v1", "https"}),
    path("coursier-legacy", F::jvm, safe, redownload, {"~/.coursier/cache"}),
    path("coursier-jvm", F::jvm, aggressive, redownload, {"~/Library/Caches/Coursier/{jvm,arc}"},
         {"@cache/coursier/{jvm,arc}"}),
    path("ivy2-cache", F::jvm, safe, redownload, {"~/.ivy2/cache"}),
    path("sbt-boot", F::jvm, safe, redownload, {"~/.sbt/boot"}),
    path("scala-cli-cache", F::jvm, moderate, redownload, {"~/Library/Caches/ScalaCli"}, {"@cache/scalacli"}),
    path("ammonite-cache", F::jvm, safe, rebuild, {"~/.ammonite/cache"}),
    path("kotlin-daemon", F::jvm, safe, rebuild, {"~/Library/Application Support/kotlin/daemon"},
         {"@data/kotlin/daemon"}),

    path("poetry-cache", F::python, safe, redownload, {"~/Library/Caches/pypoetry/{cache,artifacts}"},
         {"$POETRY_CACHE_DIR/cache > @cache/pypoetry/cache; $POETRY_CACHE_DIR/artifacts > @cache/pypoetry/artifacts"}),
    path("poetry-venvs", F::python, moderate, redownload, {"~/Library/Caches/pypoetry/virtualenvs"},
         {"$POETRY_CACHE_DIR/virtualenvs > @cache/pypoetry/virtualenvs"}),
    command("conda-clean", F::python, safe, redownload, "conda clean --all --yes"),
    command("mamba-clean", F::python, safe, redownload, "mamba clean --all --yes", On::gnuLinux),
    path("pipenv-cache", F::python, safe, redownload, nowhere, {"$PIPENV_CACHE_DIR > @cache/pipenv"}),
    // The environments of `pipx run`; never venvs/, where the installed applications live.
    path("pipx-run-cache", F::python, safe, redownload, nowhere,
         {"$PIPX_HOME/.cache > @cache/pipx; ~/.local/pipx/.cache"}),
    command("pre-commit-gc", F::python, safe, redownload, "pre-commit gc", On::gnuLinux),

    path("stack-snapshots", F::otherLangs, moderate, rebuild, {"~/.stack/snapshots"},
         {"$STACK_ROOT/snapshots > ~/.stack/snapshots"}),
    path("stack-programs", F::otherLangs, moderate, redownload, {"~/.stack/programs"},
         {"$STACK_ROOT/programs > ~/.stack/programs"}),
    path("cabal-packages", F::otherLangs, safe, redownload, {"~/.cache/cabal/packages; ~/.cabal/packages"},
         {"@cache/cabal/packages; ~/.cabal/packages", "hackage.haskell.org"}),
    path("cabal-store", F::otherLangs, moderate, rebuild, {"~/.local/state/cabal/store; ~/.cabal/store"},
         {"@state/cabal/store; ~/.cabal/store"}),
    path("hex-packages", F::otherLangs, safe, redownload, {"~/.hex/packages"}),
    path("rebar3-cache", F::otherLangs, safe, redownload, {"~/.cache/rebar3"}, {"@cache/rebar3"}),
    path("zig-cache-global", F::otherLangs, safe, rebuild, {"~/.cache/zig"},
         {"$ZIG_GLOBAL_CACHE_DIR > @cache/zig", "h|o"}),
    path("nim-cache", F::otherLangs, safe, rebuild, {"~/.cache/nim"}, {"@cache/nim"}),
    path("composer-cache", F::otherLangs, safe, redownload, {"~/Library/Caches/composer"},
         {"$COMPOSER_CACHE_DIR > $COMPOSER_HOME/cache > @cache/composer; ~/.composer/cache", "repo; files"}),
    path("bundler-cache", F::otherLangs, safe, redownload, nowhere, {"$BUNDLE_USER_CACHE > ~/.bundle/cache"}),
    command("ghcup-gc", F::otherLangs, safe, redownload, "ghcup gc --cache --tmpdirs", On::gnuLinux),
    command("opam-clean", F::otherLangs, safe, redownload, "opam clean", On::gnuLinux),

    // On Linux location_data holds the scripts' localStorage: every other child is a download.
    path("deno-cache", F::jsPackages, safe, redownload, {"~/Library/Caches/deno"},
         {"$DENO_DIR/deps > @cache/deno/deps; $DENO_DIR/gen > @cache/deno/gen; $DENO_DIR/npm > @cache/deno/npm; "
          "$DENO_DIR/registries > @cache/deno/registries; $DENO_DIR/remote > @cache/deno/remote"}),
    path("cypress-cache", F::jsPackages, safe, redownload, {"~/Library/Caches/Cypress"},
         {"$CYPRESS_CACHE_FOLDER > @cache/Cypress"}),
    path("electron-cache", F::jsPackages, safe, redownload, {"~/Library/Caches/electron"},
         {"$ELECTRON_CACHE > @cache/electron"}),
    path("electron-builder-cache", F::jsPackages, safe, redownload,
         {"~/Library/Caches/electron-builder; ~/.cache/electron-builder"},
         {"$ELECTRON_BUILDER_CACHE > @cache/electron-builder"}),
    path("node-gyp-cache", F::jsPackages, safe, redownload, {"~/Library/Caches/node-gyp; ~/.node-gyp"},
         {"@cache/node-gyp; ~/.node-gyp; ~/.electron-gyp"}),
    path("corepack-cache", F::jsPackages, safe, redownload, {"~/.cache/node/corepack"},
         {"$COREPACK_HOME > @cache/node/corepack"}),
    path("node-sass-cache", F::jsPackages, safe, redownload, {"~/.npm/node-sass"}),
    path("selenium-cache", F::jsPackages, safe, redownload, nowhere, {"@cache/selenium"}),

    path("vscode-extra", F::general, safe, rebuild,
         {"~/Library/Application Support/Code/{Service Worker/CacheStorage,CachedExtensionVSIXs,logs}; "
          "~/Library/Caches/com.microsoft.VSCode"},
         {"@config/Code/{Service Worker/CacheStorage,CachedExtensionVSIXs,CachedProfilesData,logs,Crashpad}"}),
    path("cursor-extra", F::general, safe, rebuild,
         {"~/Library/Application Support/Cursor/{Service Worker/CacheStorage,logs}"},
         {"@config/Cursor/{Service Worker/CacheStorage,logs}"}),
    path("zed-caches", F::general, safe, rebuild,
         {"~/Library/Caches/dev.zed.Zed; ~/Library/Caches/Zed; ~/Library/Logs/Zed"},
         {"@cache/zed; @data/zed/logs"}),
    path("zed-downloads", F::general, moderate, redownload, nowhere,
         {"@data/zed/{languages,node,prettier,copilot,remote_servers}"}),
    path("fleet-caches", F::general, safe, reindex,
         {"~/Library/Caches/JetBrains/Fleet; ~/Library/Logs/JetBrains/Fleet"}, {"@cache/JetBrains/Fleet"}),
    // Never the swap, undo or shada files next to these: they are the user's.
    path("nvim-caches", F::general, safe, rebuild, nowhere, {"@cache/nvim; @state/nvim/log; @state/nvim/lsp.log"}),
    path("nvim-plugin-downloads", F::general, moderate, redownload, nowhere, {"@data/nvim/mason; @data/nvim/lazy"}),
    // --user: the system installation needs an administrator.
    command("flatpak-unused", F::general, moderate, redownload, "flatpak uninstall --user --unused -y --noninteractive",
            On::gnuLinux),

    path("terraform-plugin-cache", F::devMisc, moderate, redownload, {"~/.terraform.d/plugin-cache"},
         {"$TF_PLUGIN_CACHE_DIR > ~/.terraform.d/plugin-cache", "registry.terraform.io|registry.opentofu.org"}),
    path("vagrant-tmp", F::devMisc, safe, redownload, {"~/.vagrant.d/tmp"}, {"$VAGRANT_HOME/tmp > ~/.vagrant.d/tmp"}),
    path("minikube-cache", F::devMisc, moderate, redownload, {"~/.minikube/cache"}),
    path("sccache", F::devMisc, safe, rebuild, {"~/Library/Caches/Mozilla.sccache"}, {"$SCCACHE_DIR > @cache/sccache"}),
    command("nix-gc", F::devMisc, moderate, redownload, "nix-collect-garbage", On::gnuLinux),
    path("nix-user-cache", F::devMisc, safe, redownload, nowhere, {"@cache/nix"}),
    path("helm-kube-caches", F::devMisc, safe, redownload, nowhere, {"$HELM_CACHE_HOME > @cache/helm; ~/.kube/cache"}),

    path("unity-bee", F::gameEngines, moderate, rebuild, {"~/Library/Unity/cache/bee"}, {"@config/unity3d/cache/bee"}),
    path("unity-upm", F::gameEngines, safe, redownload, {"~/Library/Caches/Unity/upm"},
         {"$UPM_CACHE_ROOT/npm > @config/unity3d/cache/npm; "
          "$UPM_CACHE_ROOT/packages > @config/unity3d/cache/packages"}),
    path("godot-cache", F::gameEngines, safe, rebuild, nowhere, {"@cache/godot"}),
};

// Checked when the library is built: unique ids, places in the notation, one parent per
// versioned entry, which takes no guards.
constexpr bool wellFormed(const Placement& placement, Kind kind) {
    if (kind == Kind::command) return placement.marks.empty();
    if (!CatalogPlaces::wellFormed(placement.places)) return false;
    return kind == Kind::path || placement.places.find("; ") == std::string_view::npos;
}

constexpr bool wellFormed() {
    for (std::size_t index = 0; index < table.size(); ++index) {
        const Entry& entry = table[index];
        if (entry.id.empty() || !wellFormed(entry.macos, entry.kind) || !wellFormed(entry.gnuLinux, entry.kind))
            return false;
        if (entry.macos.places.empty() && entry.gnuLinux.places.empty()) return false;
        if (entry.kind == Kind::versioned && !entry.guards.empty()) return false;
        for (std::size_t other = 0; other < index; ++other)
            if (table[other].id == entry.id) return false;
    }
    return true;
}
static_assert(wellFormed(), "the catalog table holds a duplicate id or a malformed place");

}  // namespace

std::span<const CatalogTable::Entry> CatalogTable::entries() { return table; }

}  // namespace kelvo
