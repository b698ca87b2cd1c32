// Removal against an adversary: while a tree is being removed, on one thread or side by
// side on a pool, another thread keeps swapping parts of it (or of its parent chain) for
// symbolic links into a folder outside the allowed roots. Whatever the interleaving,
// nothing in that folder may go.
#include <unistd.h>

#include <thread>

#include "ExecutionSupport.h"
#include "kelvo/WorkerPool.h"
#include "kelvo/platform/TreeRemoval.h"

namespace kelvo::testing {
namespace {

namespace fs = std::filesystem;
using fs::path;

constexpr int rounds = 20;

struct RemovalRaceTest : ExecutionTest {
    // Outside every allowed root, shaped like the trees below so that a removal that
    // followed a link would find the same names there.
    RemovalRaceTest() {
        for (const char* name : {"s0/f", "s1/f", "s2/f", "s3/f", "s4/f", "b/tree/canary", "b/tree/d0/s0/f"}) writeFile(outside / name, 16);
        before = listing(outside);
    }

    // Each round builds the tree afresh and removes it while a thread keeps swapping the
    // victims for links to the outside folder and back; nothing outside may go. Returns
    // how many links were planted during the removals.
    std::int64_t race(const path& tree, int folders, const std::vector<path>& victims, const std::function<void()>& remove) {
        const path holding = makeDirectory(home / "holding");
        std::int64_t swaps = 0;
        for (int round = 0; round < rounds; ++round) {
            // First-level folders d0..dN, each with 40 sub-folders and one small file.
            for (int folder = 0; folder < folders; ++folder) {
                const path top = tree / ("d" + std::to_string(folder));
                for (int sub = 0; sub < 40; ++sub) fs::create_directories(top / ("s" + std::to_string(sub)));
                writeFile(top / "f");
            }
            std::atomic<bool> running{true};
            std::atomic<std::int64_t> planted{0};
            std::thread adversary([&] {
                while (running.load()) {
                    for (std::size_t index = 0; index < victims.size(); ++index) {
                        const path away = holding / std::to_string(index);
                        // Move the real folder out, plant a link in its place, then put it back.
                        if (::rename(victims[index].c_str(), away.c_str()) != 0) continue;
                        if (::symlink(outside.c_str(), victims[index].c_str()) == 0) planted.fetch_add(1);
                        std::this_thread::yield();
                        ::unlink(victims[index].c_str());
                        ::rename(away.c_str(), victims[index].c_str());
                    }
                    std::this_thread::yield();
                }
            });
            remove();
            running.store(false);
            adversary.join();
            swaps += planted.load();

            EXPECT_TRUE(fs::exists(canary));
            EXPECT_EQ(listing(outside), before);
            std::error_code error;
            fs::remove_all(tree, error);
            for (const auto& entry : fs::directory_iterator(holding)) fs::remove_all(entry.path(), error);
        }
        return swaps;
    }

    path canary = writeFile(outside / "canary", 64);
    std::string before;
};

TEST_F(RemovalRaceTest, SubfoldersSwappedForLinksAreNeverFollowedAloneOrSideBySide) {
    const path tree = home / "cache/tree";
    // Folders at both levels, spread over the order of removal.
    std::vector<path> victims;
    for (int folder = 0; folder < 50; folder += 5) {
        victims.push_back(tree / ("d" + std::to_string(folder)));
        victims.push_back(tree / ("d" + std::to_string(folder + 2)) / "s0");
    }
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
    EXPECT_GT(race(tree, 50, victims,
                   [&] {
                       const auto report = executor().execute({pathTarget("tree", {tree})});
                       // However the race went, the target ends in one outcome.
                       EXPECT_LE(report.deleted.size() + report.partial.size(), 1u);
                       EXPECT_TRUE(report.errors.empty());
                   }),
              rounds);
    // The adversary must really have raced the removals, or the test proves nothing.
    EXPECT_GT(race(tree, 50, victims, [&] { platform::removeTree(tree, sideBySide); }), rounds);
    EXPECT_GT(handedOver.load(), rounds) << "the subtrees were not removed side by side";
}

TEST_F(RemovalRaceTest, ALinkPlantedInTheParentChainIsNeverFollowed) {
    // The target lies at home/cache/chain/b/tree; "chain" is swapped for a link to the
    // outside folder, whose b/tree holds a canary of its own.
    const path chain = home / "cache/chain";
    const path tree = chain / "b/tree";
    EXPECT_GT(race(tree, 20, {chain},
                   [&] {
                       // The executor's checks and the bare removal both run against the adversary.
                       (void)executor().execute({pathTarget("tree", {tree})});  // what stays is the race's to judge
                       for (int attempt = 0; attempt < 20; ++attempt)
                           if (!platform::removeTree(tree, {.addOwnerPermissions = true, .sharing = {}})) break;
                   }),
              rounds);
}

}  // namespace
}  // namespace kelvo::testing
