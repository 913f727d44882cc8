// The CD rebuild: placement, padding, gaps, postgap, volume size and sequence of calls.
#include "tests/unit/iml/rebuild/rebuild_fixture.h"

namespace vantrel {
namespace {

using test::Bytes;

class RebuildCd : public RebuildTest {};

TEST_F(RebuildCd, PlacesPadsAndEndsInAPostgap) {
    Add(20, 21, "A.BIN", test::RandomBytes(2043 + 2048, 1));
    Add(22, 22, "B.BIN", test::RandomBytes(2048, 2));
    Add(26, 26, "C.BIN", {});
    Add(27, 27, "D.BIN", test::RandomBytes(1, 3));
    const Bytes image = Rebuilt();
    EXPECT_EQ(image, CdWith({{20, test::RandomBytes(2043 + 2048, 1)},
                             {22, test::RandomBytes(2048, 2)},
                             {26, {}},
                             {27, test::RandomBytes(1, 3)}}));
    EXPECT_EQ((Bytes{image.begin() + 22 * kSector - 5, image.begin() + 22 * kSector}),
              (Bytes{0x0B, 0x02, 0x13, 0x06, 0x01}));
}

TEST_F(RebuildCd, EverySizeInEveryPosition) {
    const std::vector<std::size_t> sizes = {0, 1, 2038, 2043, 2047, 2048, 2049};
    for (std::size_t shift = 0; shift < sizes.size(); ++shift) {
        m_layout.entries.clear();
        std::size_t sector = 18;
        Bytes expected = test::LeadingBytes(m_layout);
        for (std::size_t i = 0; i < sizes.size(); ++i) {
            const Bytes content = test::RandomBytes(sizes[(i + shift) % sizes.size()], i);
            const Bytes padded = Padded(content);
            const std::size_t next = sector + padded.size() / kSector;
            Add(static_cast<std::int64_t>(sector), static_cast<std::int64_t>(next) - 1, "F" + std::to_string(i),
                content);
            Put(expected, sector, padded);
            sector = next;
        }
        PutPostgap(expected);
        PutVolumeSize(expected);
        EXPECT_EQ(Rebuilt(), expected) << shift;
    }
}

/// An export names the ".ims" file like the layout, the rebuild like its base name.
TEST_F(RebuildCd, TheLeadingFileThatTheLayoutNames) {
    Add(20, 20, "A.BIN", test::RandomBytes(100, 1));
    WriteLayout();
    const std::string text = test::ReadText(m_folder / "game.iml");
    std::string named = text;
    named.replace(named.find("game.ims"), 8, "slus_200.62.ims");
    test::WriteText(m_folder / "slus_200.62.iml", named);
    test::WriteWhole(m_folder / "slus_200.62.ims", m_leading);
    const SRebuildRequest request = WindowRebuild(m_folder.Path(), "slus_200.62.iml");
    EXPECT_EQ(request.leadingPath, m_folder / "slus_200.62.ims");
    EXPECT_EQ(request.outputPath, m_folder / "slus_200.iso");
    RebuildImage(request, m_operation);
    RebuildImage(InPlace(), m_operation);
    EXPECT_EQ(test::ReadWhole(m_folder / "slus_200.iso"), test::ReadWhole(m_folder / "game.iso"));
    // The base name's file comes first.
    test::WriteWhole(m_folder / "slus_200.ims", m_leading);
    EXPECT_EQ(WindowRebuild(m_folder.Path(), "slus_200.62.iml").leadingPath, m_folder / "slus_200.ims");
    // A name with folders, and one that does not exist, are not followed.
    RemoveFile(m_folder / "slus_200.ims");
    for (const char* other : {"..\\..\\slus_200.62.ims", "slus_999.ims"}) {
        named = text;
        named.replace(named.find("game.ims"), 8, other);
        test::WriteText(m_folder / "slus_200.62.iml", named);
        EXPECT_EQ(WindowRebuild(m_folder.Path(), "slus_200.62.iml").leadingPath, m_folder / "slus_200.ims");
    }
}

TEST_F(RebuildCd, ShortFileLeavesTheNextAtItsSector) {
    Add(18, 22, "SHORT", test::RandomBytes(100, 1));
    Add(23, 23, "NEXT", test::RandomBytes(50, 2));
    const Bytes image = Rebuilt();
    EXPECT_EQ(image, CdWith({{18, test::RandomBytes(100, 1)}, {23, test::RandomBytes(50, 2)}}));
}

TEST_F(RebuildCd, LongFileIsCutByTheNext) {
    Add(18, 18, "LONG", test::RandomBytes(5000, 1));
    Add(19, 19, "NEXT", test::RandomBytes(50, 2));
    const Bytes image = Rebuilt();
    EXPECT_EQ(image, CdWith({{18, test::RandomBytes(5000, 1)}, {19, test::RandomBytes(50, 2)}}));
}

TEST_F(RebuildCd, PercentageMayExceedAHundred) {
    Add(18, 18, "LONG", test::RandomBytes(400 * kSector, 1));
    const Bytes image = Rebuilt();
    EXPECT_EQ(image, CdWith({{18, test::RandomBytes(400 * kSector, 1)}}));
    const std::vector<std::string> percents = m_operation.CallsOf("pane PERCENT");
    // 18 leading sectors, 400 of the file and 150 of the postgap; the layout promises 19 and the postgap.
    EXPECT_EQ(percents.at(percents.size() - 2), "pane PERCENT " + std::to_string(568 * 100 / 169) + "%");
    EXPECT_EQ(percents.back(), "pane PERCENT 100%");
    EXPECT_EQ(m_operation.CallsOf("total"), std::vector<std::string>{"total 169"});
    EXPECT_EQ(m_operation.CallsOf("done").back(), "done 169");
}

/// As in an image that records an empty file at the sector of the next one.
TEST_F(RebuildCd, LaterFilesOverwriteThoseOfTheSameSector) {
    const Bytes content = test::RandomBytes(3000, 1);
    Add(18, 18, "EMPTY", {});
    Add(18, 19, "B", content);
    Bytes image = Rebuilt();
    EXPECT_EQ(image, CdWith({{18, content}}));
    std::swap(m_layout.entries[0], m_layout.entries[1]);
    image = Rebuilt();
    EXPECT_EQ(image, CdWith({{18, content}, {18, {}}}));
}

TEST_F(RebuildCd, FileAmongTheLeadingStructuresReplacesThem) {
    Add(17, 17, "A", test::RandomBytes(10, 1));
    Bytes image = Rebuilt();
    EXPECT_EQ(image, CdWith({{17, test::RandomBytes(10, 1)}}));
}

TEST_F(RebuildCd, FirstSectorWrapsAtFourGigabytes) {
    Add(0x200000 + 19, 0x200000 + 19, "A", test::RandomBytes(10, 1));
    m_layout.entries.insert(m_layout.entries.begin(), {18, 0x200000 + 18, m_prefix + "B"});
    test::WriteWhole(m_folder / "B", test::RandomBytes(2048, 2));
    const Bytes image = Rebuilt();
    EXPECT_EQ(image, CdWith({{18, test::RandomBytes(2048, 2)}, {19, test::RandomBytes(10, 1)}}));
}

TEST_F(RebuildCd, OnlyAPlaystationCdGetsAPostgap) {
    m_layout.media = test::ELayoutMedia::Umd;
    Add(18, 18, "A", test::RandomBytes(2000, 1));
    const Bytes image = Rebuilt();
    Bytes expected = m_leading;
    Put(expected, 18, Padded(test::RandomBytes(2000, 1)));
    PutVolumeSize(expected);
    EXPECT_EQ(image, expected);
    EXPECT_EQ(m_operation.PaneText(EPane::Status), "Rebuilding [cd] ISO done added postgap!");
    EXPECT_EQ(m_operation.CallsOf("complete "),
              std::vector<std::string>{"complete Rebuilding [cd] ISO done added postgap!"});
}

TEST_F(RebuildCd, WithoutTheMarkThereIsNoPostgap) {
    Add(18, 18, "A", test::RandomBytes(2000, 1));
    WriteLayout();
    m_leading.at(0x8400) = 0;
    test::WriteWhole(m_folder / "game.ims", m_leading);
    RebuildImage(InPlace(), m_operation);
    EXPECT_EQ(test::ReadWhole(m_folder / "game.iso").size(), 19 * kSector);
}

TEST_F(RebuildCd, SequenceOfCalls) {
    Add(19, 20, "A.BIN", test::RandomBytes(2049, 1));
    Add(22, 22, "B", {});
    Rebuilt();
    std::vector<std::string> expected;
    const auto call = [&expected](const std::string& text) { expected.push_back(text); };
    int position = 18;
    const auto block = [&] {
        ++position;
        call("pane PERCENT " + std::to_string(position * 100 / (23 + 150)) + "%");
        call("done " + std::to_string(position));
        call("yield");
    };
    call("begin iml2iso");
    call("pane STATUS Rebuilding ISO, please Wait");
    call("begin iml2iso cd");
    call("yield");
    call("yield");
    for (int i = 0; i < 18; ++i) {
        call("yield");
    }
    call("total 173");
    call("pane BYTES " + std::to_string(18 * kSector) + " bytes");
    block();  // the gap before the first file
    call("pane FILE \\..\\A.BIN");
    call("pane BYTES " + std::to_string(18 * kSector + 2049) + " bytes");
    block();
    block();
    block();  // the gap behind it
    call("pane FILE \\..\\B");
    call("pane BYTES " + std::to_string(18 * kSector + 4096) + " bytes");
    for (int i = 0; i < 150; ++i) {
        block();
    }
    call("pane PERCENT 100%");
    call("pane STATUS Rebuilding [cd] ISO done added postgap!");
    call("pane FILE " + (m_folder / "game.iso"));
    call("complete Rebuilding [cd] ISO done added postgap!");
    call("completed");
    EXPECT_EQ(m_operation.Calls(), expected);
}

TEST_F(RebuildCd, SideFilesExistUntilTheCompletion) {
    Add(18, 19, "A.BIN", test::RandomBytes(3000, 1));
    Add(25, 25, "B", {});
    int seen = 0;
    m_operation.m_onYield = [&](int yield) {
        if (yield == 10) {  // while the leading structures are copied, when both files are complete
            EXPECT_EQ(test::ReadText(m_folder / "game.txt"),
                      "00000012|00000013|" + m_prefix + "A.BIN\r\n00000019|00000019|" + m_prefix + "B\r\n");
            const Bytes bounds = test::ReadWhole(m_folder / "game.vlt");
            ASSERT_EQ(bounds.size(), 24U);
            const std::vector<std::uint32_t> values = {18, 19, 25, 25, 26, 27};
            for (std::size_t i = 0; i < values.size(); ++i) {
                EXPECT_EQ(test::Read32(bounds, 4 * i), values[i]);
            }
            ++seen;
        }
    };
    Rebuilt();
    EXPECT_EQ(seen, 1);
    EXPECT_EQ(m_folder.Names(), (std::vector<std::string>{"A.BIN", "B", "game.iml", "game.ims", "game.iso"}));
}

TEST_F(RebuildCd, SideFilesStayIfTheCompletionEndsEarly) {
    Add(18, 18, "A", test::RandomBytes(3, 1));
    m_operation.m_completes = false;
    Rebuilt();
    EXPECT_EQ(m_folder.Names(),
              (std::vector<std::string>{"A", "game.iml", "game.ims", "game.iso", "game.txt", "game.vlt"}));
}

TEST_F(RebuildCd, BaseNameEndsAtTheFirstDotAndAtThirtyCharacters) {
    const SRebuildRequest request = WindowRebuild("C:\\X\\", "game.v1.iml");
    EXPECT_EQ(request.layoutPath, "C:\\X\\game.v1.iml");
    EXPECT_EQ(request.outputPath, "C:\\X\\game.iso");
    EXPECT_EQ(request.leadingPath, "C:\\X\\game.ims");
    EXPECT_EQ(request.sideFiles->entryList, "C:\\X\\game.txt");
    EXPECT_EQ(request.sideFiles->bounds, "C:\\X\\game.vlt");
    EXPECT_EQ(WindowRebuild("F/", "a23456789012345678901234567890xyz").outputPath,
              "F/a23456789012345678901234567890.iso");
    EXPECT_EQ(WindowRebuild("F/", ".iml").sideFiles->bounds, "F/.vlt");
}

TEST_F(RebuildCd, ManyEntriesOfDifferentLengths) {
    std::size_t sector = 18;
    Bytes expected = test::LeadingBytes(m_layout);
    for (std::size_t i = 0; i < 300; ++i, ++sector) {
        Add(static_cast<std::int64_t>(sector), static_cast<std::int64_t>(sector),
            std::string(i % 50 + 1, 'N') + std::to_string(i), test::RandomBytes(i * 7 % 2048 + 1, i));
        Put(expected, sector, Padded(test::RandomBytes(i * 7 % 2048 + 1, i)));
    }
    PutPostgap(expected);
    PutVolumeSize(expected);
    EXPECT_EQ(Rebuilt(), expected);
}

}  // namespace
}  // namespace vantrel
