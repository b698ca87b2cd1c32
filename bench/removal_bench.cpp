// Helper of removal_benchmark.sh: builds the trees the benchmark removes, removes one the
// way a clean run does (the executor's checks, measuring and removal, on its own worker
// pool), and plays the adversary of the race run.
//
//   kelvo-removal-bench packages DIR FILES       node_modules-like tree of small packages
//   kelvo-removal-bench wide DIR FILES LEVELS    one folder of FILES empty files beside a
//                                                narrow chain LEVELS folders deep
//   kelvo-removal-bench remove HOME PATH         removes PATH, a target inside HOME; prints
//                                                the report, peak open descriptors and memory
//   kelvo-removal-bench swap DIR OUTSIDE HOLDING STOP
//                                                swaps DIR's folders for links to OUTSIDE
//                                                (moving them to HOLDING and back) until the
//                                                file STOP exists; prints the number of swaps
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "kelvo/Executor.h"

namespace {

namespace fs = std::filesystem;
using kelvo::CleanKind;
using kelvo::CleanTarget;
using kelvo::Executor;

int fail(const std::string& message) {
    std::fprintf(stderr, "kelvo-removal-bench: %s\n", message.c_str());
    return 2;
}

void writeFile(int directory, const std::string& name, std::size_t size) {
    static const std::string data(96 * 1024, 'x');
    const int fd = ::openat(directory, name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0) return;
    if (size > 0 && ::write(fd, data.data(), size) < 0) std::perror("write");
    ::close(fd);
}

int openDirectory(int parent, const std::string& name) {
    ::mkdirat(parent, name.c_str(), 0755);
    return ::openat(parent, name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
}

// Mostly small files, a few larger ones: the shape of installed packages.
std::size_t fileSize(std::mt19937& random) {
    const auto roll = random() % 100;
    if (roll < 75) return random() % 3000;
    if (roll < 99) return 3000 + random() % 13000;
    return 32 * 1024 + random() % (64 * 1024);
}

// One package: a few folders of sources, and now and then packages of its own.
struct Package {
    std::vector<std::vector<int>> folders;  // per folder, the sizes of its files
    int files() const {
        int count = 0;
        for (const auto& folder : folders) count += static_cast<int>(folder.size());
        return count;
    }
};

const char* const folderNames[] = {"", "lib", "lib/util", "dist", "test", "node_modules/dep-a", "node_modules/dep-b"};

Package plan(unsigned index) {
    std::mt19937 random(index * 7919u + 1u);
    Package package;
    const int folders = random() % 10 == 0 ? 7 : 5;  // every tenth has nested packages
    for (int folder = 0; folder < folders; ++folder) {
        std::vector<int> sizes(3 + random() % 10);
        for (auto& size : sizes) size = static_cast<int>(fileSize(random));
        package.folders.push_back(std::move(sizes));
    }
    return package;
}

void build(int root, unsigned index, const Package& package) {
    const int top = openDirectory(root, "pkg-" + std::to_string(index));
    for (std::size_t folder = 0; folder < package.folders.size(); ++folder) {
        const std::string relative = folderNames[folder];
        int fd = ::dup(top);
        std::size_t start = 0;
        while (start < relative.size()) {
            const auto slash = relative.find('/', start);
            const auto end = slash == std::string::npos ? relative.size() : slash;
            const int next = openDirectory(fd, relative.substr(start, end - start));
            ::close(fd);
            fd = next;
            start = end + 1;
        }
        const auto& sizes = package.folders[folder];
        for (std::size_t file = 0; file < sizes.size(); ++file)
            writeFile(fd, (file == 0 && folder == 0 ? "package.json" : "m" + std::to_string(file) + ".js"),
                      static_cast<std::size_t>(sizes[file]));
        ::close(fd);
    }
    ::close(top);
}

int makePackages(const fs::path& directory, long files) {
    fs::create_directories(directory);
    const int root = ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (root < 0) return fail("cannot open " + directory.string());
    std::vector<Package> packages;
    long planned = 0;
    while (planned < files) {
        packages.push_back(plan(static_cast<unsigned>(packages.size())));
        planned += packages.back().files();
    }
    std::atomic<std::size_t> next{0};
    std::vector<std::thread> builders;
    for (int thread = 0; thread < 8; ++thread)
        builders.emplace_back([&] {
            for (std::size_t index = next++; index < packages.size(); index = next++)
                build(root, static_cast<unsigned>(index), packages[index]);
        });
    for (auto& builder : builders) builder.join();
    ::close(root);
    std::printf("%zu packages, %ld files\n", packages.size(), planned);
    return 0;
}

int makeWide(const fs::path& directory, long files, int levels) {
    fs::create_directories(directory / "wide");
    const int wide = ::open((directory / "wide").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (wide < 0) return fail("cannot open " + directory.string());
    for (long file = 0; file < files; ++file) writeFile(wide, "entry-" + std::to_string(file) + ".cache", 0);
    ::close(wide);
    int fd = ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    for (int level = 0; level < levels && fd >= 0; ++level) {
        const int next = openDirectory(fd, "level-" + std::to_string(level));
        writeFile(next, "file", 100);
        ::close(fd);
        fd = next;
    }
    if (fd >= 0) ::close(fd);
    return 0;
}

int openDescriptors() {
    std::error_code error;
    int count = 0;
    for (fs::directory_iterator it("/proc/self/fd", error), end; !error && it != end; it.increment(error)) ++count;
    return count;
}

int remove(const fs::path& home, const fs::path& target) {
    Executor executor;
    executor.safety = kelvo::SafetyGuard{home, {home}, {}, {}};
    CleanTarget cleanTarget;
    cleanTarget.id = "bench-tree";
    cleanTarget.name = "bench tree";
    cleanTarget.family = kelvo::Family::devMisc;
    cleanTarget.kind = CleanKind::paths({target});

    // Samples the open descriptors while the removal runs (every few milliseconds).
    std::atomic<bool> done{false};
    int peakDescriptors = openDescriptors();
    std::thread sampler([&] {
        while (!done.load()) {
            peakDescriptors = std::max(peakDescriptors, openDescriptors());
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    });
    const auto report = executor.execute({cleanTarget});
    done.store(true);
    sampler.join();

    struct rusage usage {};
    ::getrusage(RUSAGE_SELF, &usage);
    std::printf("deleted=%zu partial=%zu skipped=%zu errors=%zu freed=%lld peak_fds=%d peak_rss_kib=%ld\n",
                report.deleted.size(), report.partial.size(), report.skipped.size(), report.errors.size(),
                static_cast<long long>(report.freedBytes), peakDescriptors, usage.ru_maxrss);
    for (const auto& entry : report.skipped) std::printf("skipped: %s\n", entry.text.c_str());
    return report.deleted.size() == 1 ? 0 : 1;
}

int swap(const fs::path& directory, const fs::path& outside, const fs::path& holding, const fs::path& stop) {
    // The top-level folders, and one level below them: swapped in turn, over and over.
    std::vector<fs::path> victims;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(directory, error)) {
        victims.push_back(entry.path());
        victims.push_back(entry.path() / "lib");
    }
    fs::create_directories(holding);
    long swaps = 0;
    while (!fs::exists(stop)) {
        for (std::size_t index = 0; index < victims.size() && !fs::exists(stop); ++index) {
            const fs::path away = holding / std::to_string(index);
            if (::rename(victims[index].c_str(), away.c_str()) != 0) continue;
            if (::symlink(outside.c_str(), victims[index].c_str()) == 0) ++swaps;
            std::this_thread::yield();
            ::unlink(victims[index].c_str());
            ::rename(away.c_str(), victims[index].c_str());
        }
    }
    std::printf("%ld\n", swaps);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> args(argv + 1, argv + argc);
    if (args.size() == 3 && args[0] == "packages") return makePackages(args[1], std::stol(args[2]));
    if (args.size() == 4 && args[0] == "wide") return makeWide(args[1], std::stol(args[2]), std::stoi(args[3]));
    if (args.size() == 3 && args[0] == "remove") return remove(args[1], args[2]);
    if (args.size() == 5 && args[0] == "swap") return swap(args[1], args[2], args[3], args[4]);
    return fail("usage: packages DIR FILES | wide DIR FILES LEVELS | remove HOME PATH | swap DIR OUTSIDE HOLDING STOP");
}
