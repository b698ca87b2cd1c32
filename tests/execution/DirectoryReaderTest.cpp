#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <map>
#include <set>

#include "kelvo/platform/Descriptor.h"
#include "kelvo/platform/DirectoryReader.h"
#include "support/TempDir.h"

namespace kelvo::platform {
namespace {

namespace fs = std::filesystem;
using kelvo::testing::TempDir;
using Method = DirectoryReader::Method;

Descriptor openDirectory(const fs::path& path) { return Descriptor(::open(path.c_str(), O_RDONLY | O_DIRECTORY)); }

TEST(DirectoryReader, EntriesComeWithTheirOwnTypeFromBothMethodsAndFromAStatusCall) {
    TempDir root;
    kelvo::testing::writeFile(root / "file");
    kelvo::testing::makeDirectory(root / "dir");
    fs::create_directory_symlink(root / "dir", root / "link");
    ASSERT_EQ(::mkfifo((root / "pipe").c_str(), 0600), 0);
    const struct { const char* name; EntryType type; int error; } entries[] = {
        {"file", EntryType::file, 0}, {"dir", EntryType::directory, 0}, {"link", EntryType::symlink, 0},
        {"pipe", EntryType::other, 0}, {"gone", EntryType::other, ENOENT}};
    const Descriptor fd = openDirectory(root.path());
    std::map<std::string, EntryType> expected;
    for (const auto& entry : entries) {
        int error = -1;
        EXPECT_EQ(DirectoryReader::typeOf(fd.get(), entry.name, error), entry.type) << entry.name;
        EXPECT_EQ(error, entry.error) << entry.name;
        if (entry.error == 0) expected[entry.name] = entry.type;
    }
    // The stream reads from the start, wherever the first read left the descriptor.
    for (const Method method : {Method::systemCall, Method::stream}) {
        std::map<std::string, EntryType> listed;
        const auto progress = DirectoryReader(method).read(fd.get(), [&](const DirectoryRecord& record) {
            return listed.emplace(record.name, record.type).second;  // a repeat ends it short
        });
        EXPECT_TRUE(!progress.error && progress.atEnd);
        EXPECT_EQ(listed, expected) << "method " << static_cast<int>(method);
    }
}

TEST(DirectoryReader, AListingStoppedPartWayGoesOnThroughAnotherDescriptorWithoutLossOrRepeat) {
    TempDir root(TempDir::memory);
    constexpr int names = 3000;  // long names: several reads of the buffer
    for (int index = 0; index < names; ++index) kelvo::testing::writeFile(root / (std::string(40, 'n') + std::to_string(index)));
    // Stopped by the record limit after one read, or by the visitor within one.
    for (const bool byLimit : {true, false}) {
        std::multiset<std::string> seen;
        std::int64_t resumeAt = 0;
        ListingProgress first;
        {
            const Descriptor fd = openDirectory(root.path());
            first = DirectoryReader().read(
                fd.get(),
                [&](const DirectoryRecord& record) {
                    seen.insert(record.name);
                    resumeAt = record.positionAfter;
                    return byLimit || seen.size() < 10;
                },
                byLimit ? 1 : SIZE_MAX);
        }
        ASSERT_FALSE(first.atEnd);
        ASSERT_LT(seen.size(), std::size_t{names});
        if (byLimit) resumeAt = first.position;
        const Descriptor fd = openDirectory(root.path());
        ASSERT_FALSE(DirectoryReader::seek(fd.get(), resumeAt));
        const auto rest = DirectoryReader().read(fd.get(), [&](const DirectoryRecord& record) {
            seen.insert(record.name);
            return true;
        });
        EXPECT_TRUE(rest.atEnd);
        EXPECT_EQ(seen.size(), std::size_t{names}) << (byLimit ? "limit" : "visitor");
        EXPECT_EQ(std::set<std::string>(seen.begin(), seen.end()).size(), std::size_t{names});
    }
}

}  // namespace
}  // namespace kelvo::platform
