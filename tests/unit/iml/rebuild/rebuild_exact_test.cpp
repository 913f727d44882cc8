// The exact rebuild: placement and refusals.
#include "iml/layout/gap_file.h"
#include "tests/unit/iml/rebuild/rebuild_fixture.h"

namespace vantrel {
namespace {

using test::Bytes;

class RebuildExact : public RebuildTest {
protected:
    RebuildExact() { m_prefix = ""; }

    SRebuildRequest Exact() const {
        SRebuildRequest request = Strict();
        request.manner = EOutputManner::CommitReplace;
        request.exact = true;
        request.gapsPath = m_folder / "game.gaps";
        return request;
    }

    Bytes RebuiltExactly() {
        RebuildImage(Exact(), m_operation);
        return test::ReadWhole(m_folder / "game.iso");
    }

    /// Writes the layout for an image of `sectors` sectors; the volume size is that.
    void WriteLayoutOf(std::uint32_t sectors) {
        WriteLayout();
        test::Write32(m_leading, 0x8050, sectors);
        test::WriteWhole(m_folder / "game.ims", m_leading);
    }

    /// A gap file for an image of `length` bytes with one area.
    void WriteGaps(std::uint64_t length, std::uint64_t position, const Bytes& data) {
        Bytes file = {'I', 'M', 'L', 'G', 'A', 'P', 'S', '1'};
        file.resize(40);
        test::Write64(file, 8, length);
        test::Write32(file, 16, 1);
        test::Write64(file, 24, position);
        test::Write64(file, 32, data.size());
        file.insert(file.end(), data.begin(), data.end());
        test::WriteWhole(m_folder / "game.gaps", file);
    }
};

TEST_F(RebuildExact, FilesAtTheirSectorsAndZerosElsewhere) {
    Add(20, 21, "A", test::RandomBytes(3000, 1));
    Add(22, 22, "EMPTY", {});
    Add(22, 22, "B", test::RandomBytes(5, 2));
    WriteLayoutOf(40);
    Bytes expected = m_leading;
    Put(expected, 20, test::RandomBytes(3000, 1));
    Put(expected, 22, test::RandomBytes(5, 2));
    expected.resize(40 * kSector);
    EXPECT_EQ(RebuiltExactly(), expected);
    EXPECT_EQ(m_operation.CallsOf("complete "), std::vector<std::string>{"complete Rebuilding [cd] ISO done!"});
}

TEST_F(RebuildExact, DvdFilesAtTheirSectorsToo) {
    m_layout.media = test::ELayoutMedia::Dvd;
    Add(20, 25, "A", test::RandomBytes(100, 1));
    Add(26, 26, "B", test::RandomBytes(2048, 2));
    m_layout.volumeLast = 29;
    WriteLayoutOf(30);
    Bytes expected(m_leading.begin(), m_leading.end() - kSector);
    Put(expected, 20, test::RandomBytes(100, 1));
    Put(expected, 26, test::RandomBytes(2048, 2));
    Put(expected, 29, {m_leading.end() - kSector, m_leading.end()});
    EXPECT_EQ(RebuiltExactly(), expected);
    EXPECT_EQ(m_operation.CallsOf("complete "), std::vector<std::string>{"complete Rebuilding [dvd] ISO done!"});
}

TEST_F(RebuildExact, FilesOverwriteStoredGaps) {
    Add(20, 21, "A", test::RandomBytes(3000, 1));
    WriteLayoutOf(40);
    const Bytes gap = test::RandomBytes(5000, 3);
    WriteGaps(30 * kSector + 77, 20 * kSector + 2900, gap);
    Bytes expected = m_leading;
    expected.resize(30 * kSector + 77);
    std::copy(gap.begin(), gap.end(), expected.begin() + 20 * kSector + 2900);
    const Bytes file = test::RandomBytes(3000, 1);
    std::copy(file.begin(), file.end(), expected.begin() + 20 * kSector);
    EXPECT_EQ(RebuiltExactly(), expected);
}

TEST_F(RebuildExact, AnImageThatEndsWithinItsLeadingStructures) {
    WriteLayoutOf(18);
    const Bytes stored = test::RandomBytes(10, 3);
    WriteGaps(17 * kSector + 77, 17 * kSector + 50, stored);
    Bytes expected(m_leading.begin(), m_leading.begin() + 17 * kSector + 77);
    std::copy(stored.begin(), stored.end(), expected.begin() + 17 * kSector + 50);
    EXPECT_EQ(RebuiltExactly(), expected);
}

TEST_F(RebuildExact, StoredGapsReplaceTheTrailingSector) {
    m_layout.media = test::ELayoutMedia::Dvd;
    Add(20, 20, "A", test::RandomBytes(10, 1));
    m_layout.volumeLast = 29;
    WriteLayoutOf(30);
    const Bytes anchor = test::RandomBytes(kSector, 4);
    WriteGaps(30 * kSector, 29 * kSector, anchor);
    Bytes expected(m_leading.begin(), m_leading.end() - kSector);
    Put(expected, 20, test::RandomBytes(10, 1));
    Put(expected, 29, anchor);
    EXPECT_EQ(RebuiltExactly(), expected);
}

TEST_F(RebuildExact, FileThatDoesNotFitIsRefused) {
    Add(20, 21, "A", test::RandomBytes(4097, 1));
    WriteLayoutOf(40);
    EXPECT_EQ(Failure(Exact()), "A has 4097 bytes, but its sectors in the image hold only 4096");
    EXPECT_EQ(m_folder.Names(), (std::vector<std::string>{"A", "game.iml", "game.ims"}));
}

TEST_F(RebuildExact, FilesThatShareTheirSectors) {
    // For the second and third file at the same sectors, a layout records the last sector only.
    Add(20, 22, "A", test::RandomBytes(5000, 1));
    Add(22, 22, "B", test::RandomBytes(5000, 1));
    Add(22, 22, "C", test::RandomBytes(5000, 1));
    WriteLayoutOf(30);
    Bytes expected = m_leading;
    Put(expected, 20, test::RandomBytes(5000, 1));
    expected.resize(30 * kSector);
    EXPECT_EQ(RebuiltExactly(), expected);
    test::WriteWhole(m_folder / "C", test::RandomBytes(3000, 1));
    EXPECT_EQ(Failure(Exact()), "C has 3000 bytes, but its sectors in the image hold only 2048");
}

TEST_F(RebuildExact, LeadingStructuresBehindAFileStay) {
    Add(17, 17, "A", test::RandomBytes(10, 1));
    WriteLayoutOf(18);
    Bytes expected = m_leading;
    const Bytes file = test::RandomBytes(10, 1);
    std::copy(file.begin(), file.end(), expected.begin() + 17 * kSector);
    EXPECT_EQ(RebuiltExactly(), expected);
}

TEST_F(RebuildExact, ImagesLargerThanAnyDiscAreRefused) {
    Add(20, 20, "A", test::RandomBytes(10, 1));
    WriteLayoutOf(1U << 24U);
    EXPECT_EQ(Failure(Exact()), (m_folder / "game.ims") + " describes an image larger than any disc");
    WriteGaps(1ULL << 36U, 0, {1});
    EXPECT_EQ(Failure(Exact()), (m_folder / "game.gaps") + " describes an image larger than any disc");
    test::WriteText(m_folder / "game.gaps", "something else");
    EXPECT_EQ(Failure(Exact()), (m_folder / "game.gaps") + ": not a gap file");
}

}  // namespace
}  // namespace vantrel
