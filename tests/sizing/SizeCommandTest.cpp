// `kelvo size` run as a user runs it.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "kelvo/L10n.h"
#include "support/TempDir.h"
#include "support/ToolRunner.h"
#include "support/Unprivileged.h"

namespace kelvo {
namespace {

using std::filesystem::path;
using testing::allocatedBytes;
using testing::allocatedBytesBelow;
using testing::makeDirectory;
using testing::runTool;
using testing::TempDir;
using testing::writeFile;

const std::map<std::string, std::string> english{{"LANG", "en_US.UTF-8"}};

std::string englishText(const std::string& key) { return L10n::bundle().catalogs.at("en").texts.at(key); }

std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> result;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) result.push_back(line);
    return result;
}

// A line is "<human size>  <bytes>  <path>[  <mark>]"; the byte count is the second word
// after the unit.
std::string bytesColumn(const std::string& line) {
    std::istringstream in(line);
    std::string number, unit, bytes;
    in >> number >> unit >> bytes;
    return bytes;
}

// Only an ordinary user meets the locked folder: the tool runs from a child that has
// switched to uid 65534 and sends back what the tool printed.
TEST(SizeCommand, PrintsAllocatedBytesMarksALowerBoundAndFailsOnAMissingPathAfterMeasuringTheRest) {
    TempDir root;
    const path tree = makeDirectory(root / "tree");
    const path readable = writeFile(tree / "readable", 20000);
    const path locked = makeDirectory(tree / "locked");
    writeFile(locked / "secret", 50000);
    ::chmod(locked.c_str(), 0);
    const path clean = makeDirectory(root / "clean");
    writeFile(clean / "a/one", 30000);
    writeFile(clean / ".hidden", 5000);
    const path file = writeFile(root / "file", 70000);
    const path missing = root / "missing";

    const auto run = testing::runAsUnprivileged([&] {
        const auto result = runTool({"size", tree.string(), missing.string(), clean.string(), file.string()}, english);
        return std::to_string(result.exitStatus) + "\n" + result.standardError + result.standardOutput;
    });
    if (run.switchRefused) GTEST_SKIP() << run.failure;
    ASSERT_TRUE(run.output) << run.failure;
    const auto printed = lines(*run.output);
    ASSERT_EQ(printed.size(), 5u) << *run.output;
    EXPECT_EQ(printed[0], "1");
    EXPECT_EQ(printed[1], L10n::formatText(englishText("cli.size.missing"), {missing.string()}));
    const std::string mark = englishText("cli.size.lowerBound");
    EXPECT_TRUE(printed[2].ends_with("  " + tree.string() + "  " + mark)) << printed[2];
    EXPECT_EQ(bytesColumn(printed[2]), std::to_string(allocatedBytes(readable) + allocatedBytes(locked)));
    EXPECT_TRUE(printed[3].ends_with("  " + clean.string())) << printed[3];
    EXPECT_EQ(bytesColumn(printed[3]), std::to_string(allocatedBytesBelow(clean)));
    EXPECT_TRUE(printed[4].ends_with("  " + file.string())) << printed[4];
    EXPECT_EQ(bytesColumn(printed[4]), std::to_string(allocatedBytes(file)));
}

// du run on the same paths: each file counted once across them, however many names it
// has. du adds a folder's own blocks, which kelvo leaves out, and prints nothing for a path
// that adds nothing new, where kelvo prints 0.
TEST(SizeCommand, CountsAFileWithSeveralNamesOnceAcrossThePathsAsDuDoes) {
    TempDir root;
    const path file = writeFile(root / "tree/file", 40000), twin = writeFile(root / "twin", 30000);
    std::filesystem::create_hard_link(file, root / "tree/again");
    std::filesystem::create_hard_link(file, root / "second");
    std::filesystem::create_hard_link(twin, root / "tree/twin");
    const std::vector<std::string> paths{(root / "tree").string(), (root / "second").string(), twin.string()};
    const path duOutput = root / "du.txt";
    ASSERT_EQ(std::system(("/usr/bin/du -s --block-size=1 '" + paths[0] + "' '" + paths[1] + "' '" + paths[2] + "' > " +
                           duOutput.string()).c_str()), 0);
    std::map<std::string, std::int64_t> du;
    std::ifstream duLines(duOutput);
    for (std::string line; std::getline(duLines, line);) du[line.substr(line.find('\t') + 1)] = std::stoll(line);
    const auto kelvo = lines(runTool({"size", paths[0], paths[1], paths[2]}, english).standardOutput);
    ASSERT_EQ(kelvo.size(), paths.size());
    for (std::size_t index = 0; index < paths.size(); ++index)
        EXPECT_EQ(std::stoll(bytesColumn(kelvo[index])) + (index == 0 ? allocatedBytes(paths[0]) : 0), du[paths[index]])
            << kelvo[index];
}

}  // namespace
}  // namespace kelvo
