// The states that a disk may have after a power cut, for records of a few operations.
#include <gtest/gtest.h>

#include <random>
#include <set>
#include <string>
#include <vector>

#include "fuzz/power_cut.h"

namespace vantrel::fuzz {
namespace {

constexpr Node kFile = 2;
constexpr Node kOther = 3;
constexpr Node kFolder = 4;
constexpr std::size_t kSector = 512;

using enum EDiskOperation;

SDiskOperation WriteOf(std::int64_t position, char value, std::size_t sectors) {
    return {Write, kFile, position, Bytes(sectors * kSector, static_cast<std::uint8_t>(value))};
}

SDiskOperation Named(std::vector<SNameChange> names, Node folder = kNothing) {
    return {ChangeNames, folder, 0, {}, std::move(names)};
}

/// A disk with the file "a", which has two sectors of "o".
SDiskTree DiskWithFile() {
    return {{{kFile, std::make_shared<Bytes>(2 * kSector, 'o')}}, {{kRoot, {{"a", kFile}}}}};
}

/// A file as the first byte of each sector: '-' for zero.
std::string SectorsOf(const Bytes& content) {
    std::string sectors;
    for (std::size_t start = 0; start < content.size(); start += kSector) {
        sectors += content[start] == 0 ? '-' : static_cast<char>(content[start]);
    }
    return sectors;
}

/// All states as texts like "/a:oo /d/".
std::set<std::string> StatesAfter(const SDiskTree& before, const std::vector<SDiskOperation>& done) {
    std::set<std::string> states;
    std::mt19937 random(1);
    const auto add = [&states](const SDiskTree& tree) {
        std::string text;
        for (const auto& [path, content] : ContentsOf(tree)) {
            const std::string sectors = path.ends_with('/') ? "" : ':' + SectorsOf(content);
            text += path == "/" ? "" : (text.empty() ? "" : " ") + path + sectors;
        }
        states.insert(text);
    };
    constexpr int kTries = 20;  // for torn writes
    for (int i = 0; i < kTries; ++i) {
        CPowerCut(before, done).ForEachState(random, 1, add);
    }
    return states;
}

using States = std::set<std::string>;

TEST(DiskStates, EachSectorOfAWriteIsOldOrNew) {
    EXPECT_EQ(StatesAfter(DiskWithFile(), {WriteOf(0, 'n', 2)}), (States{"/a:oo", "/a:on", "/a:no", "/a:nn"}));
}

TEST(DiskStates, LengthAndDataSurviveIndependently) {
    EXPECT_EQ(StatesAfter(DiskWithFile(), {WriteOf(2 * kSector, 'n', 1)}), (States{"/a:oo", "/a:oo-", "/a:oon"}));
    EXPECT_EQ(StatesAfter(DiskWithFile(), {{Resize, kFile, kSector}}), (States{"/a:oo", "/a:o-", "/a:o"}));
}

TEST(DiskStates, LaterWritesMayComeFirst) {
    EXPECT_EQ(StatesAfter(DiskWithFile(), {WriteOf(0, 'n', 1), WriteOf(kSector, 'm', 1)}),
              (States{"/a:oo", "/a:no", "/a:om", "/a:nm"}));
    EXPECT_EQ(StatesAfter(DiskWithFile(), {WriteOf(0, 'n', 1), WriteOf(0, 'm', 1)}),
              (States{"/a:oo", "/a:no", "/a:mo"}));
}

TEST(DiskStates, FlushedWritesSurvive) {
    const SDiskOperation flush = {FlushFile, kFile};
    EXPECT_EQ(StatesAfter(DiskWithFile(), {WriteOf(0, 'n', 2), flush}), States{"/a:nn"});
    EXPECT_EQ(StatesAfter(DiskWithFile(), {WriteOf(0, 'n', 1), flush, WriteOf(kSector, 'm', 1)}),
              (States{"/a:no", "/a:nm"}));
}

TEST(DiskStates, NameAndContentSurviveIndependently) {
    const SDiskTree empty;
    EXPECT_EQ(StatesAfter(empty, {Named({{kRoot, "b", kFile}}), WriteOf(0, 'n', 1)}),
              (States{"", "/b:", "/b:-", "/b:n"}));
    EXPECT_EQ(StatesAfter(empty, {Named({{kRoot, "b", kFile}}), WriteOf(0, 'n', 1), {FlushFile, kFile}}),
              (States{"", "/b:n"}));
    EXPECT_EQ(StatesAfter(empty, {Named({{kRoot, "b", kFile}}), {FlushFolder, kRoot}}), States{"/b:"});
}

TEST(DiskStates, NamesSurviveIndependently) {
    EXPECT_EQ(StatesAfter({}, {Named({{kRoot, "a", kFile}}), Named({{kRoot, "b", kOther}})}),
              (States{"", "/a:", "/b:", "/a: /b:"}));
}

TEST(DiskStates, ChangesOfOneNameSurviveInTheirOrder) {
    EXPECT_EQ(StatesAfter({}, {Named({{kRoot, "a", kFile}}), Named({{kRoot, "a", kNothing}}),
                               Named({{kRoot, "a", kFile}, {kRoot, "b", kOther}})}),
              (States{"", "/a:", "/a: /b:"}));
}

TEST(DiskStates, RenamingIsAllOrNothing) {
    SDiskTree disk = DiskWithFile();
    disk.folders[kFolder];
    disk.folders[kRoot]["d"] = kFolder;
    const SDiskOperation renaming = Named({{kRoot, "a", kNothing}, {kFolder, "b", kFile}});
    EXPECT_EQ(StatesAfter(disk, {renaming}), (States{"/a:oo /d/", "/d/ /d/b:oo"}));
    EXPECT_EQ(StatesAfter(disk, {renaming, {FlushFolder, kFolder}}), States{"/d/ /d/b:oo"});
}

TEST(DiskStates, FoldersWithoutANameAreLost) {
    EXPECT_EQ(
        StatesAfter({},
                    {Named({{kRoot, "d", kFolder}}, kFolder), Named({{kFolder, "a", kFile}}), {FlushFolder, kFolder}}),
        (States{"", "/d/ /d/a:"}));
}

TEST(DiskStates, FoldersDisappearWhenTheyAreEmpty) {
    SDiskTree disk = DiskWithFile();
    disk.folders[kFolder] = {{"b", kFile}};
    disk.folders[kRoot] = {{"d", kFolder}};
    EXPECT_EQ(StatesAfter(disk, {Named({{kFolder, "b", kNothing}}), Named({{kRoot, "d", kNothing}}, kFolder)}),
              (States{"/d/ /d/b:oo", "/d/", ""}));
}

}  // namespace
}  // namespace vantrel::fuzz
