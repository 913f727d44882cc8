// Plans as data: placements and patches, without writing an image.
#include "iso/edit/edit_plan.h"

#include <gtest/gtest.h>

#include "files/refused.h"
#include "tests/unit/iso/edit/memory_image.h"

namespace vantrel {
namespace {

using test::CMemoryImage;
using test::EImageKind;
using test::PlaceOf;

class EditPlan : public testing::Test {
protected:
    EditPlan() {
        m_description.kind = EImageKind::Umd;
        m_description.files = {{"A.BIN", test::RandomBytes(5000, 1)},
                               {"B.BIN", test::RandomBytes(3000, 2)},
                               {"C.BIN", test::RandomBytes(4096, 3), 3},
                               {"EMPTY.DAT", {}, 0, test::EEmptyFile::SharesSector},
                               {"Z.BIN", test::RandomBytes(10, 4)}};
        Build();
    }

    void Build() {
        m_built = test::BuildImage(m_description);
        m_image.m_bytes = m_built.bytes;
    }

    SEditPlan Plan(const std::vector<std::pair<std::string, std::int64_t>>& changes, SEditRules rules = {}) {
        const SDiscMap map = ReadDiscMap(m_image, EMapRule::Complete);
        std::vector<SFileChange> list;
        for (const auto& [path, size] : changes) {
            list.push_back({PlaceOf(map, path), size, "new/" + path});
        }
        return PlanEdit(m_image, map, list, rules);
    }

    std::string Refusal(const std::vector<std::pair<std::string, std::int64_t>>& changes, SEditRules rules = {}) {
        try {
            Plan(changes, rules);
        } catch (const CRefused& refused) {
            return refused.what();
        }
        return "not refused";
    }

    std::uint32_t SectorOf(const std::string& name) const { return m_built.File("\\" + name).sector; }
    std::uint32_t Sectors() const { return static_cast<std::uint32_t>(m_image.m_bytes.size() / 2048); }

    /// The patch at a position as a 32-bit number at an offset.
    static std::uint32_t PatchedAt(const SEditPlan& plan, std::int64_t position, std::size_t offset) {
        for (const SSectorPatch& patch : plan.patches) {
            if (patch.position == position) {
                return test::Read32(patch.bytes, offset);
            }
        }
        return 0xDEADBEEF;
    }

    test::SImageDescription m_description;
    test::SBuiltImage m_built;
    CMemoryImage m_image{{}};
};

TEST_F(EditPlan, AShorterFileStaysAndLeavesZeros) {
    const SEditPlan plan = Plan({{"A.BIN", 100}});
    ASSERT_EQ(plan.edits.size(), 1U);
    EXPECT_FALSE(plan.edits[0].IsMoved());
    EXPECT_EQ(plan.edits[0].names, (std::vector<std::string>{"A.BIN"}));
    EXPECT_EQ(plan.edits[0].source, "new/A.BIN");
    const std::int64_t start = std::int64_t{SectorOf("A.BIN")} * 2048;
    EXPECT_EQ(plan.zeros, (std::vector<SImageArea>{{start + 100, 3 * 2048 - 100}}));
    const auto record = static_cast<std::int64_t>(m_built.File("\\A.BIN").recordOffset);
    ASSERT_EQ(plan.patches.size(), 1U);
    EXPECT_EQ(PatchedAt(plan, record + 2, 0), SectorOf("A.BIN"));
    EXPECT_EQ(PatchedAt(plan, record + 2, 4), __builtin_bswap32(SectorOf("A.BIN")));
    EXPECT_EQ(PatchedAt(plan, record + 2, 8), 100U);
    EXPECT_EQ(PatchedAt(plan, record + 2, 12), __builtin_bswap32(100));
    EXPECT_EQ(plan.newLength, plan.oldLength);
    EXPECT_EQ(plan.unchanged, 4);
}

TEST_F(EditPlan, TheSameLengthChangesNoStructure) {
    const SEditPlan plan = Plan({{"A.BIN", 5000}});
    EXPECT_TRUE(plan.patches.empty());
    EXPECT_EQ(plan.zeros.size(), 1U) << "the rest of the last sector";
}

TEST_F(EditPlan, AFileGrowsIntoFreeSectorsAndNotFurther) {
    // Three sectors are free behind B.
    EXPECT_FALSE(Plan({{"B.BIN", 5 * 2048}}).edits[0].IsMoved());
    const SEditPlan plan = Plan({{"B.BIN", 5 * 2048 + 1}});
    EXPECT_EQ(plan.edits[0].to, Sectors());
    EXPECT_EQ(plan.SectorsAdded(), 6);
    EXPECT_EQ(PatchedAt(plan, 16 * 2048 + 80, 0), m_built.volumeSectors + 6);
    EXPECT_EQ(PatchedAt(plan, 16 * 2048 + 80, 4), __builtin_bswap32(m_built.volumeSectors + 6));
}

TEST_F(EditPlan, SectorsWithDataAreNotFree) {
    m_image.m_bytes[(std::size_t{SectorOf("B.BIN")} + 4) * 2048 + 7] = 1;
    EXPECT_FALSE(Plan({{"B.BIN", 4 * 2048}}).edits[0].IsMoved());
    EXPECT_TRUE(Plan({{"B.BIN", 5 * 2048}}).edits[0].IsMoved());
}

TEST_F(EditPlan, OnlyOneFileTakesFreeSectors) {
    m_description.files[2] = {"C.BIN", {}, 0, test::EEmptyFile::OwnsSector};
    m_description.files[3].holeBefore = 4;
    Build();
    // C lies at the first of the free sectors behind B; B takes them first.
    const SEditPlan plan = Plan({{"B.BIN", 4 * 2048}, {"C.BIN", 2048}});
    ASSERT_EQ(plan.edits.size(), 2U);
    EXPECT_FALSE(plan.edits[0].IsMoved());
    EXPECT_TRUE(plan.edits[1].IsMoved());
}

TEST_F(EditPlan, AFilledFileStaysAtASectorOfItsOwnOnly) {
    EXPECT_EQ(Plan({{"EMPTY.DAT", 10}}).edits[0].to, Sectors()) << "it shares the sector of Z";
    m_description.files[3].whenEmpty = test::EEmptyFile::OwnsSector;
    Build();
    EXPECT_FALSE(Plan({{"EMPTY.DAT", 2048}}).edits[0].IsMoved());
    EXPECT_TRUE(Plan({{"EMPTY.DAT", 2049}}).edits[0].IsMoved());
}

TEST_F(EditPlan, MovedFilesLieBehindEachOtherAndLeaveZeros) {
    const SEditPlan plan = Plan({{"Z.BIN", 9000}, {"A.BIN", 70000}});
    ASSERT_EQ(plan.edits.size(), 2U);
    EXPECT_EQ(plan.edits[0].names[0], "A.BIN");
    EXPECT_EQ(plan.edits[0].to, Sectors());
    EXPECT_EQ(plan.edits[1].from, SectorOf("Z.BIN"));
    // Z is the last file, but free sectors behind it belong to no image.
    EXPECT_EQ(plan.edits[1].to, Sectors() + 35);
    EXPECT_EQ(plan.newLength, (std::int64_t{Sectors()} + 35 + 5) * 2048);
    ASSERT_EQ(plan.zeros.size(), 4U);
    EXPECT_EQ(plan.zeros[0], (SImageArea{std::int64_t{SectorOf("A.BIN")} * 2048, 3 * 2048}));
    EXPECT_EQ(plan.zeros[2].End(), std::int64_t{plan.edits[1].to} * 2048);
}

TEST_F(EditPlan, FreeSectorsAtTheEndHoldMovedFilesWithoutGrowth) {
    m_description.tailSectors = 10;
    Build();
    const SEditPlan plan = Plan({{"A.BIN", 4 * 2048}});
    EXPECT_EQ(plan.edits[0].to, SectorOf("Z.BIN") + 1);
    EXPECT_EQ(plan.SectorsAdded(), 0);
    EXPECT_EQ(plan.patches.size(), 1U);
}

TEST_F(EditPlan, ThePostgapMovesToTheNewEnd) {
    m_description.kind = EImageKind::Cd;
    m_description.postgap = test::EPostgap::Uncounted;
    Build();
    const std::size_t start = m_image.m_bytes.size() - 150 * 2048;
    std::copy_n("postgap", 7, m_image.m_bytes.begin() + static_cast<std::ptrdiff_t>(start));
    const SEditPlan plan = Plan({{"Z.BIN", 5000}});
    EXPECT_EQ(plan.edits[0].to, Sectors() - 150);
    EXPECT_EQ(plan.SectorsAdded(), 3);
    const std::int64_t moved = (std::int64_t{Sectors()} - 150 + 3) * 2048;
    const auto patch = std::find_if(plan.patches.begin(), plan.patches.end(),
                                    [moved](const SSectorPatch& a) { return a.position == moved; });
    ASSERT_NE(patch, plan.patches.end());
    EXPECT_EQ(patch->bytes.size(), 150U * 2048);
    EXPECT_EQ(patch->bytes[0], 'p');
    EXPECT_EQ(PatchedAt(plan, 16 * 2048 + 80, 0), m_built.volumeSectors + 3) << "the difference to the length stays";
}

TEST_F(EditPlan, APartialLastSectorIsCompletedByGrowthOnly) {
    m_image.m_bytes.resize(m_image.m_bytes.size() - 2048 + 10);
    EXPECT_EQ(Plan({{"Z.BIN", 4}}).newLength, m_image.Size());
    EXPECT_EQ(Plan({{"Z.BIN", 11}}).newLength, m_image.Size() + 2038);
    const SEditPlan moved = Plan({{"A.BIN", 9000}});
    EXPECT_EQ(moved.edits[0].to, Sectors() + 1);
    EXPECT_EQ(moved.newLength % 2048, 0);
}

TEST_F(EditPlan, AVolumeThatCountsAMissingPostgapStaysThatMuchLonger) {
    m_description.kind = EImageKind::Cd;
    m_description.postgap = test::EPostgap::Missing;
    Build();
    EXPECT_EQ(m_built.volumeSectors, Sectors() + 150);
    EXPECT_EQ(PatchedAt(Plan({{"Z.BIN", 5000}}), 16 * 2048 + 80, 0), m_built.volumeSectors + 3);
}

TEST_F(EditPlan, AVolumeEndsBehindAllFiles) {
    m_description.tailSectors = 10;
    Build();
    test::Write32(m_image.m_bytes, 16 * 2048 + 80, SectorOf("Z.BIN") + 1);
    const SEditPlan plan = Plan({{"A.BIN", 4 * 2048}});
    EXPECT_EQ(plan.SectorsAdded(), 0);
    EXPECT_EQ(PatchedAt(plan, 16 * 2048 + 80, 0), SectorOf("Z.BIN") + 5);
}

TEST_F(EditPlan, AFilledFileNeverStaysInTheSystemArea) {
    test::SetRecord(m_image.m_bytes, m_built.File("\\EMPTY.DAT").recordOffset, 0, 0);
    EXPECT_EQ(Plan({{"EMPTY.DAT", 10}}).edits[0].to, Sectors());
}

TEST_F(EditPlan, AnImageWhoseEndCannotBeRead) {
    m_description.kind = EImageKind::Cd;
    m_description.postgap = test::EPostgap::Counted;
    Build();
    const SDiscMap map = ReadDiscMap(m_image, EMapRule::Complete);
    m_image.m_bytes.resize(m_image.m_bytes.size() - 10);
    try {
        PlanEdit(m_image, map, {{PlaceOf(map, "A.BIN"), 9000, "new"}}, {});
        ADD_FAILURE() << "not refused";
    } catch (const CRefused& refused) {
        EXPECT_STREQ(refused.what(), "the end of the image cannot be read");
    }
}

/// A DVD with a UDF volume.
class EditPlanOfUdf : public EditPlan {
protected:
    EditPlanOfUdf() {
        m_description.kind = EImageKind::Dvd;
        m_description.udf = test::EUdf::Volume;
        Build();
    }

    /// Sets a number of a descriptor, whose tag stays valid.
    void SetNumber(std::uint32_t sector, std::size_t offset, std::uint32_t value) {
        auto& bytes = m_image.m_bytes;
        const std::size_t at = std::size_t{sector} * 2048;
        test::Write32(bytes, at + offset, value);
        const std::size_t covered = bytes[at + 10] + 256U * bytes[at + 11];
        test::WriteUdfTag(bytes, at, bytes[at], covered + 16, sector);
    }
};

TEST_F(EditPlanOfUdf, TheClosingAnchorMoves) {
    const SEditPlan plan = Plan({{"A.BIN", 9000}});
    EXPECT_EQ(plan.edits[0].to, Sectors() - 1);
    EXPECT_EQ(plan.SectorsAdded(), 5);
    EXPECT_EQ(Refusal({{"A.BIN", 9000}}, {true}).substr(0, 21), "these files no longer");
}

TEST_F(EditPlanOfUdf, AVolumeWithoutAClosingAnchorIsLengthenedToo) {
    m_description.anchorAtEnd = false;
    m_description.tailSectors = 1;
    Build();
    const std::uint32_t partition = Sectors() - test::Read32(m_image.m_bytes, 34 * 2048 + 188);
    for (const std::uint32_t sector : {34U, 50U}) {
        SetNumber(sector, 192, partition);
    }
    const SEditPlan plan = Plan({{"A.BIN", 9000}});
    EXPECT_EQ(plan.SectorsAdded(), 4) << "one of five was free";
    const test::Bytes after = test::Patched(m_image.m_bytes, plan.patches);
    EXPECT_EQ(after.size(), m_image.m_bytes.size()) << "no anchor moves";
    for (const std::size_t sector : {34U, 50U}) {
        EXPECT_EQ(test::Read32(after, sector * 2048 + 192), partition + 4);
    }
}

TEST_F(EditPlanOfUdf, ContentInAFileEntryMovesToTheSectorsOfTheFile) {
    m_description.files[0] = {"A.BIN", test::RandomBytes(1000, 1), 10};
    Build();
    test::ReplaceUdf(m_image.m_bytes, {{"A.BIN", {}, test::EUdfAllocation::Embedded, m_description.files[0].content}});
    // Also without a change of length: the entry would keep the old content.
    for (const std::int64_t size : {std::int64_t{1000}, std::int64_t{2000}}) {
        CMemoryImage after(test::Patched(m_image.m_bytes, Plan({{"A.BIN", size}}).patches));
        const SUdfFile file = ReadUdfVolume(after).value().files.at(1);
        EXPECT_FALSE(file.embedded);
        EXPECT_EQ(file.size, size);
        EXPECT_EQ(file.extents, (std::vector<SExtent>{{SectorOf("A.BIN"), size}}));
    }
}

TEST_F(EditPlanOfUdf, AnEntryThatSeveralNamesShareIsChangedOnce) {
    m_description.files[0].holeBefore = 10;
    Build();
    test::SUdfFileDescription link = {"LINK"};
    link.sharesEntryOf = "A.BIN";
    const test::SBuiltUdf udf =
        test::ReplaceUdf(m_image.m_bytes, {{"A.BIN", {{SectorOf("A.BIN"), 5000}}}, std::move(link)});
    const SEditPlan plan = Plan({{"A.BIN", 100}});
    const std::int64_t entry = udf.entries.at("A.BIN") * std::int64_t{2048};
    EXPECT_EQ(std::count_if(plan.patches.begin(), plan.patches.end(),
                            [entry](const SSectorPatch& patch) { return patch.position == entry; }),
              1);
    CMemoryImage after(test::Patched(m_image.m_bytes, plan.patches));
    const SUdfVolume volume = ReadUdfVolume(after).value();
    EXPECT_EQ(volume.files.at(1).size, 100);
    EXPECT_EQ(volume.files.at(2).size, 100);
}

TEST_F(EditPlanOfUdf, AVolumeWithADamagedCopyIsNotLengthened) {
    for (std::uint32_t sector = 48; sector < 54; ++sector) {
        m_image.m_bytes[sector * 2048 + 100] ^= 1;
    }
    const std::string refusal = Refusal({{"A.BIN", 9000}});
    EXPECT_TRUE(refusal.starts_with("the UDF volume cannot be lengthened: the reserve UDF volume")) << refusal;
    EXPECT_EQ(Refusal({{"A.BIN", 10}}), "not refused");
}

TEST_F(EditPlanOfUdf, FilesBehindTheClosingAnchorKeepTheVolumeAsLongAsItIs) {
    const std::uint32_t behind = Sectors();
    m_image.m_bytes.resize(m_image.m_bytes.size() + 2048, 1);
    test::SetRecord(m_image.m_bytes, m_built.File("\\EMPTY.DAT").recordOffset, behind, 10);
    EXPECT_EQ(Refusal({{"A.BIN", 9000}}), "the UDF partition ends before the sectors to which a file would move");
    EXPECT_EQ(Refusal({{"A.BIN", 10}}), "not refused");
    // With a partition that reaches to the end of the image.
    for (const std::uint32_t sequence : {32U, 48U}) {
        for (std::uint32_t sector = sequence; sector < sequence + 6; ++sector) {
            if (m_image.m_bytes[sector * 2048] == 5) {
                SetNumber(sector, 192, Sectors() - test::Read32(m_image.m_bytes, sector * 2048 + 188));
            }
        }
    }
    SetNumber(64, 84, test::Read32(m_image.m_bytes, 64 * 2048 + 84) + 2);
    EXPECT_EQ(Refusal({{"A.BIN", 9000}}),
              "files lie behind the closing anchor of the UDF volume, so it cannot be lengthened");
}

TEST_F(EditPlan, KeepPlacesNamesEveryFileThatDoesNotFit) {
    EXPECT_EQ(Refusal({{"A.BIN", 7000}, {"B.BIN", 2000}, {"Z.BIN", 4000}}, {true}),
              "these files no longer fit their places and would have to move: A.BIN (5000 bytes, now 7000), Z.BIN (10 "
              "bytes, now 4000)");
    EXPECT_EQ(Refusal({{"A.BIN", 6144}, {"Z.BIN", 2048}}, {true}), "not refused");
}

TEST_F(EditPlan, LimitsOfFilesAndMedia) {
    EXPECT_TRUE(Refusal({{"A.BIN", 1LL << 32U}}).starts_with("A.BIN: 4294967296 bytes are too many"));
    EXPECT_EQ(Refusal({{"A.BIN", 1'790'000'000}}), "not refused");
    const std::int64_t mostOfUmd = (1'800'000'000 / 2048 - std::int64_t{Sectors()}) * 2048;
    EXPECT_EQ(Refusal({{"A.BIN", mostOfUmd}}), "not refused");
    EXPECT_EQ(Refusal({{"A.BIN", mostOfUmd + 1}}),
              "the image would have 1800001536 bytes; a UMD has at most 1800000000");
    m_description.kind = EImageKind::Cd;
    Build();
    EXPECT_NE(Refusal({{"A.BIN", 333'000LL * 2048}}).find("a CD has at most 333000"), std::string::npos);
    const std::int64_t most = (333'000 - std::int64_t{Sectors()}) * 2048;
    EXPECT_EQ(Refusal({{"A.BIN", most}}), "not refused");
    EXPECT_EQ(Refusal({{"A.BIN", most + 1}}), "the image would have 333001 sectors; a CD has at most 333000");
    m_image.m_bytes[33792] = 0;  // neither CD nor UMD
    EXPECT_EQ(Refusal({{"A.BIN", 333'000LL * 2048}}), "not refused");
}

TEST_F(EditPlan, AnImageOfMoreSectorsThan32BitsCount) {
    constexpr std::int64_t kLargestFile = 0xFFFFFFFF;
    std::vector<std::pair<std::string, std::int64_t>> changes;
    m_description.kind = EImageKind::Cd;
    m_description.files.clear();
    for (int i = 0; i < 2048; ++i) {
        changes.emplace_back("F" + std::to_string(i) + ".BIN", kLargestFile);
        m_description.files.push_back({changes.back().first, {1}});
    }
    Build();
    m_image.m_bytes[33792] = 0;  // neither CD nor UMD
    EXPECT_EQ(Refusal(changes), "the image would have more sectors than 32 bits can count");
    changes.pop_back();
    EXPECT_EQ(Refusal(changes), "not refused");
    // What closes the image counts, too: behind the moved files lie the sectors of the postgap.
    m_description.postgap = test::EPostgap::Counted;
    Build();
    const std::int64_t left = 0xFFFFFFFFLL - (Sectors() - 150) - 2047LL * 2'097'152;
    changes.emplace_back("F2047.BIN", left * 2048);
    EXPECT_EQ(Refusal(changes), "the image would have more sectors than 32 bits can count");
    changes.back().second = (left - 149) * 2048;
    EXPECT_EQ(Refusal(changes), "the image would have more sectors than 32 bits can count");
    changes.back().second = (left - 150) * 2048;
    EXPECT_EQ(Refusal(changes), "the image would have 4294967295 sectors; a CD has at most 333000");
}

TEST_F(EditPlan, FilesThatCannotBeChanged) {
    const std::size_t record = m_built.File("\\A.BIN").recordOffset;
    m_image.m_bytes[record + 1] = 1;
    EXPECT_EQ(Refusal({{"A.BIN", 10}}), "A.BIN: it has an extended attribute record, so it cannot be changed");
    EXPECT_EQ(Refusal({{"B.BIN", 10}}), "not refused");
    m_image.m_bytes[record + 1] = 0;
    m_image.m_bytes[record + 26] = 1;
    EXPECT_EQ(Refusal({{"A.BIN", 10}}), "A.BIN: it is interleaved, so it cannot be changed");
    m_image.m_bytes[record + 26] = 0;
    m_image.m_bytes[record + 27] = 1;
    EXPECT_EQ(Refusal({{"A.BIN", 10}}), "A.BIN: it is interleaved, so it cannot be changed");
    // With any of its names, one of which is that of B.
    const std::size_t second = m_built.File("\\B.BIN").recordOffset;
    test::SetRecord(m_image.m_bytes, second, SectorOf("A.BIN"), 5000);
    EXPECT_EQ(Refusal({{"B.BIN", 10}}), "A.BIN: it is interleaved, so it cannot be changed");
    m_image.m_bytes[record + 27] = 0;
    m_image.m_bytes[second + 27] = 1;
    EXPECT_EQ(Refusal({{"A.BIN", 10}}), "A.BIN: it is interleaved, so it cannot be changed");
}

TEST_F(EditPlan, AFileOfSeveralExtents) {
    const std::size_t first = m_built.File("\\A.BIN").recordOffset;
    const std::size_t second = m_built.File("\\B.BIN").recordOffset;
    m_image.m_bytes[first + 25] = 0x80;
    m_image.m_bytes[second + 33] = 'A';
    EXPECT_EQ(Refusal({{"A.BIN", 10}}), "A.BIN: it is recorded in 2 extents, so it cannot be changed");
    EXPECT_EQ(Plan({{"C.BIN", 10}}).edits[0].to, SectorOf("C.BIN"));
    EXPECT_TRUE(Plan({{"C.BIN", 9000}}).edits[0].IsMoved());
}

/// A boot record in sector 17 and a catalogue in the first sector of B, whose entries name boot images.
class EditPlanOfBootImages : public EditPlan {
protected:
    EditPlanOfBootImages() {
        m_catalogue = std::size_t{SectorOf("B.BIN")} * 2048;
        auto& bytes = m_image.m_bytes;
        std::copy_n(bytes.begin() + 16 * 2048, 7, bytes.begin() + 17 * 2048);
        bytes[17 * 2048] = 0;
        std::copy_n("EL TORITO SPECIFICATION", 24, bytes.begin() + 17 * 2048 + 7);
        test::Write32(bytes, 17 * 2048 + 71, SectorOf("B.BIN"));
        std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(m_catalogue), 3000, std::uint8_t{0});
        bytes[m_catalogue] = 1;
        bytes[m_catalogue + 30] = 0x55;
        bytes[m_catalogue + 31] = 0xAA;
        bytes[m_catalogue + 64] = 0x91;
        bytes[m_catalogue + 66] = 1;
    }

    /// The default entry is number 1, the other one number 3.
    void SetEntry(std::size_t number, std::uint32_t sector, std::uint8_t count) {
        m_image.m_bytes[m_catalogue + number * 32 + 6] = count;
        test::Write32(m_image.m_bytes, m_catalogue + number * 32 + 8, sector);
    }

    /// {count, sector} in the patch of an entry; {} if there is none.
    std::vector<std::uint32_t> Patched(const SEditPlan& plan, std::size_t number) const {
        for (const SSectorPatch& patch : plan.patches) {
            if (patch.position == static_cast<std::int64_t>(m_catalogue + number * 32 + 6)) {
                return {patch.bytes[0] + 256U * patch.bytes[1], test::Read32(patch.bytes, 2)};
            }
        }
        return {};
    }

    /// The count of entry 1 after A, which has 5000 bytes, has changed.
    std::uint32_t CountAfter(std::uint8_t count, std::int64_t size) {
        SetEntry(1, SectorOf("A.BIN"), count);
        return Patched(Plan({{"A.BIN", size}}), 1).at(0);
    }

    std::size_t m_catalogue;
};

TEST_F(EditPlanOfBootImages, EveryEntryFollowsAMovedFile) {
    SetEntry(1, SectorOf("A.BIN"), 4);
    SetEntry(3, SectorOf("A.BIN"), 1);
    const SEditPlan plan = Plan({{"A.BIN", 7000}});
    EXPECT_EQ(Patched(plan, 1), (std::vector<std::uint32_t>{4, plan.edits[0].to}));
    EXPECT_EQ(Patched(plan, 3), (std::vector<std::uint32_t>{1, plan.edits[0].to}));
    SetEntry(3, SectorOf("C.BIN"), 1);
    EXPECT_EQ(Patched(Plan({{"A.BIN", 7000}}), 3), std::vector<std::uint32_t>{});
    EXPECT_TRUE(Plan({{"A.BIN", 5000}}).patches.empty());
}

TEST_F(EditPlanOfBootImages, TheCountOfAWholeFileFollowsItsLength) {
    EXPECT_EQ(CountAfter(10, 5500), 11U);
    EXPECT_EQ(CountAfter(10, 9000), 18U);
    EXPECT_EQ(CountAfter(10, 1), 1U);
    EXPECT_EQ(CountAfter(12, 5500), 12U) << "whole sectors";
    EXPECT_EQ(CountAfter(12, 9000), 20U);
    EXPECT_EQ(CountAfter(12, 1), 4U);
}

TEST_F(EditPlanOfBootImages, AnyOtherCountStaysUnlessItExceedsTheFile) {
    EXPECT_EQ(CountAfter(4, 9000), 4U);
    EXPECT_EQ(CountAfter(4, 1), 4U) << "the rest of the sector is loaded, too";
    EXPECT_EQ(CountAfter(8, 2048), 4U);
    EXPECT_EQ(CountAfter(0, 9000), 0U);
}

TEST_F(EditPlanOfBootImages, ABootImageThatIsTooLarge) {
    SetEntry(1, SectorOf("A.BIN"), 10);
    EXPECT_EQ(Refusal({{"A.BIN", 65535 * 512}}), "not refused");
    EXPECT_EQ(Refusal({{"A.BIN", 65535 * 512 + 1}}),
              "A.BIN: 33553921 bytes are too many for a boot image that is loaded as a whole, which has at most "
              "33553920");
    SetEntry(1, SectorOf("A.BIN"), 4);
    EXPECT_EQ(Refusal({{"A.BIN", 65535 * 512 + 1}}), "not refused");
}

TEST_F(EditPlanOfBootImages, WhatCannotBeChanged) {
    SetEntry(1, SectorOf("A.BIN"), 4);
    EXPECT_EQ(Refusal({{"A.BIN", 0}}), "A.BIN: it is a boot image, so it cannot be emptied");
    EXPECT_EQ(Refusal({{"B.BIN", 3000}}), "B.BIN: it is the boot catalogue of the image, so it cannot be changed");
    SetEntry(1, SectorOf("A.BIN") + 2, 1);
    EXPECT_EQ(Refusal({{"A.BIN", 10}}),
              "A.BIN: it holds a boot image behind its first sector, so it cannot be changed");
    SetEntry(1, SectorOf("A.BIN") + 3, 1);  // the first sector behind A is that of B
    EXPECT_EQ(Refusal({{"A.BIN", 10}, {"C.BIN", 0}}), "not refused");
}

TEST_F(EditPlanOfBootImages, ABootImageThatNoFileNamesIsNoFreeSpace) {
    // Three sectors are free behind B and before C.
    SetEntry(1, SectorOf("C.BIN") - 2, 5);
    EXPECT_FALSE(Plan({{"A.BIN", 10}}).edits[0].IsMoved());
    const SDiscMap map = ReadDiscMap(m_image, EMapRule::Complete);
    EXPECT_TRUE(map.occupied.IsFree(SectorOf("C.BIN") - 3, SectorOf("C.BIN") - 2));
    EXPECT_FALSE(map.occupied.IsFree(SectorOf("C.BIN") - 2, SectorOf("C.BIN") - 1));
    EXPECT_FALSE(map.occupied.IsFree(SectorOf("C.BIN") - 1, SectorOf("C.BIN")));
    SetEntry(1, 0xFFFFFFFF, 255);
    EXPECT_EQ(ReadDiscMap(m_image, EMapRule::Complete).closingSector, Sectors());
}

TEST_F(EditPlanOfBootImages, ACatalogueThatNoFileNamesIsNoFreeSpace) {
    const std::uint32_t sector = SectorOf("C.BIN") - 2;
    auto& bytes = m_image.m_bytes;
    const auto start = bytes.begin() + static_cast<std::ptrdiff_t>(m_catalogue);
    std::copy_n(start, 2048, bytes.begin() + std::ptrdiff_t{sector} * 2048);
    std::fill_n(start, 2048, std::uint8_t{0});
    test::Write32(bytes, 17 * 2048 + 71, sector);
    const SDiscMap map = ReadDiscMap(m_image, EMapRule::Complete);
    EXPECT_TRUE(map.occupied.IsFree(sector - 1, sector));
    EXPECT_FALSE(map.occupied.IsFree(sector, sector + 1));
    EXPECT_FALSE(Plan({{"B.BIN", 3 * 2048}}).edits[0].IsMoved()) << "B is no catalogue any more";
    EXPECT_TRUE(Plan({{"B.BIN", 4 * 2048}}).edits[0].IsMoved());
}

TEST_F(EditPlanOfBootImages, ACatalogueThatIsMissing) {
    m_image.m_bytes[m_catalogue] = 0;
    EXPECT_TRUE(ReadDiscMap(m_image, EMapRule::Complete).warnings.empty());
    const SDiscMap map = ReadDiscMap(m_image, EMapRule::ReachableOnly);
    ASSERT_EQ(map.warnings.size(), 1U);
    EXPECT_EQ(map.warnings[0], "The boot catalogue at sector " + std::to_string(SectorOf("B.BIN")) +
                                   " cannot be read: no computer will boot from the image");
}

}  // namespace
}  // namespace vantrel
