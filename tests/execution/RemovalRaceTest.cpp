// Removal against an adversary: while a tree is being removed, on one thread or side by
// side on a pool, another thread keeps swapping parts of it (or of its parent chain) for
// symbolic links into a folder outside the allowed roots. Whatever the interleaving,
// nothing in that folder may go.
#include <gtest/gtest.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <functional>
#include <thread>
#include <vector>

#include "ExecutionSupport.h"
#include "kelvo/WorkerPool.h"
#include "kelvo/platform/TreeRemoval.h"
#include "support/TempDir.h"

namespace kelvo {
namespace {

namespace fs = std::filesystem;
using fs::path;
using testing::makeDirectory;
using testing::pathTarget;
using testing::writeFile;

constexpr int rounds = 20;

// First-level folders d0..dN, each with sub-folders, one small file per first-level
// folder. Made through descriptors: a few thousand folders per round must stay cheap.
void buildTree(const path& tree, int folders, int subfolders) {
    fs::create_directories(tree);
    const int treeFd = ::open(tree.c_str(), O_RDONLY | O_DIRECTORY);
    ASSERT_GE(treeFd, 0);
    for (int folder = 0; folder < folders; ++folder) {
        const std::string name = "d" + std::to_string(folder);
        ::mkdirat(treeFd, name.c_str(), 0755);
        const int folderFd = ::openat(treeFd, name.c_str(), O_RDONLY | O_DIRECTORY);
        ASSERT_GE(folderFd, 0);
        for (int sub = 0; sub < subfolders; ++sub) ::mkdirat(folderFd, ("s" + std::to_string(sub)).c_str(), 0755);
        ::close(::openat(folderFd, "f", O_WRONLY | O_CREAT, 0644));
        ::close(folderFd);
    }
    ::close(treeFd);
}

// A folder outside every allowed root, shaped like the tree so that a removal that followed
// a link would find the same names there.
path buildOutside(const path& outside) {
    writeFile(outside / "canary", 64);
    for (int sub = 0; sub < 5; ++sub) writeFile(outside / ("s" + std::to_string(sub)) / "f", 16);
    return outside / "canary";
}

class RemovalRaceTest : public ::testing::Test {
protected:
    RemovalRaceTest() : home(makeDirectory(root / "home")), outside(root / "outside") {
        canary = buildOutside(outside);
        before = testing::listing(outside);
    }

    Executor executor() const { return testing::executorFor(home, root / "tmp"); }

    void expectOutsideIntact() const {
        ASSERT_TRUE(fs::exists(canary));
        EXPECT_EQ(testing::listing(outside), before);
    }

    // The rounds build and remove tens of thousands of folders.
    testing::TempDir root{testing::TempDir::memory};
    path home;
    path outside;
    path canary;
    std::string before;
};

// Swaps folders of the tree, at both levels and spread over the order of removal, for
// links to the outside folder and back, for as long as it lives.
class SwappingAdversary {
public:
    SwappingAdversary(const path& tree, const path& holding, const path& outside) {
        std::vector<path> victims;
        for (int folder = 0; folder < 50; folder += 5) {
            victims.push_back(tree / ("d" + std::to_string(folder)));
            victims.push_back(tree / ("d" + std::to_string(folder + 2)) / "s0");
        }
        thread_ = std::thread([this, victims, holding, outside] {
            while (running_.load()) {
                for (std::size_t index = 0; index < victims.size(); ++index) {
                    const path& victim = victims[index];
                    const path away = holding / std::to_string(index);
                    // Move the real folder out, plant a link in its place, then put it back.
                    if (::rename(victim.c_str(), away.c_str()) != 0) continue;
                    if (::symlink(outside.c_str(), victim.c_str()) == 0) swaps_.fetch_add(1);
                    std::this_thread::yield();
                    ::unlink(victim.c_str());
                    ::rename(away.c_str(), victim.c_str());
                }
                std::this_thread::yield();
            }
        });
    }
    // Stops and says how many links it planted.
    std::int64_t stop() {
        running_.store(false);
        if (thread_.joinable()) thread_.join();
        return swaps_.load();
    }
    ~SwappingAdversary() { stop(); }

private:
    std::atomic<bool> running_{true};
    std::atomic<std::int64_t> swaps_{0};
    std::thread thread_;
};

TEST_F(RemovalRaceTest, SubfoldersSwappedForLinksAreNeverFollowedAloneOrSideBySide) {
    const path tree = home / "cache/tree";
    const path holding = makeDirectory(home / "holding");
    WorkerPool pool(8);
    std::atomic<std::int64_t> handedOver{0};
    TaskGroup group;
    const platform::TreeRemovalOptions sideBySide{
        .addOwnerPermissions = true,
        .sharing = {.submit =
                        [&](std::function<void()> task) {
                            handedOver.fetch_add(1);
                            pool.submit(group, std::move(task));
                        },
                    .waitForAll = [&] { pool.wait(group); },
                    .hasIdleWorker = [&] { return pool.hasIdleWorker(); }}};
    // The executor's whole run on one thread, and the bare removal spread over the pool.
    const std::function<void()> removals[] = {
        [&] {
            const auto report = executor().execute({pathTarget("tree", {tree})});
            // However the race went, the target ends in one outcome.
            EXPECT_LE(report.deleted.size() + report.partial.size(), 1u);
            EXPECT_TRUE(report.errors.empty());
        },
        [&] { platform::removeTree(tree, sideBySide); },
    };
    for (const auto& remove : removals) {
        std::int64_t swapsDuringRemoval = 0;
        for (int round = 0; round < rounds; ++round) {
            buildTree(tree, 50, 40);
            SwappingAdversary adversary(tree, holding, outside);
            remove();
            swapsDuringRemoval += adversary.stop();

            expectOutsideIntact();
            std::error_code error;
            fs::remove_all(tree, error);
            for (const auto& entry : fs::directory_iterator(holding)) fs::remove_all(entry.path(), error);
        }
        // The adversary must really have raced the removals, or the test proves nothing.
        EXPECT_GT(swapsDuringRemoval, rounds) << (&remove - removals);
    }
    EXPECT_GT(handedOver.load(), rounds) << "the subtrees were not removed side by side";
}

TEST_F(RemovalRaceTest, ALinkPlantedInTheParentChainIsNeverFollowed) {
    // The target lies at home/cache/chain/b/tree; the adversary swaps "chain" for a link to a
    // folder outside whose b/tree holds a canary of its own.
    const path chain = home / "cache/chain";
    const path tree = chain / "b/tree";
    const path decoy = root / "decoy";
    const path decoyCanary = writeFile(decoy / "b/tree/canary", 64);
    writeFile(decoy / "b/tree/d0/s0/f", 16);
    const std::string decoyBefore = testing::listing(decoy);
    const path parked = home / "parked";
    std::int64_t swapsDuringRemoval = 0;

    for (int round = 0; round < rounds; ++round) {
        buildTree(tree, 20, 20);
        std::atomic<bool> removing{true};
        std::atomic<std::int64_t> swaps{0};
        std::thread adversary([&] {
            while (removing.load()) {
                if (::rename(chain.c_str(), parked.c_str()) != 0) continue;
                if (::symlink(decoy.c_str(), chain.c_str()) == 0) swaps.fetch_add(1);
                std::this_thread::yield();
                // Put the real folder back so the removal has something to race for.
                ::unlink(chain.c_str());
                ::rename(parked.c_str(), chain.c_str());
            }
        });
        // The executor's checks and the bare removal both run against the adversary.
        executor().execute({pathTarget("tree", {tree})});
        for (int attempt = 0; attempt < 20; ++attempt)
            if (!platform::removeTree(tree, {.addOwnerPermissions = true, .sharing = {}})) break;
        removing.store(false);
        adversary.join();
        swapsDuringRemoval += swaps.load();

        ASSERT_TRUE(fs::exists(decoyCanary));
        ASSERT_EQ(testing::listing(decoy), decoyBefore);
        std::error_code error;
        if (fs::is_symlink(chain)) fs::remove(chain, error);
        if (fs::exists(parked)) {
            fs::remove_all(chain, error);
            fs::rename(parked, chain, error);
        }
        fs::remove_all(tree, error);
    }
    EXPECT_GT(swapsDuringRemoval, rounds);
    expectOutsideIntact();
}

}  // namespace
}  // namespace kelvo
