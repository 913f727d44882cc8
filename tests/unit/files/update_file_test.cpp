// Changing a file in place, with and without undo.
#include "files/update_file.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "files/checksum.h"
#include "files/refused.h"
#include "tests/support/test_folder.h"

namespace vantrel {
namespace {

using test::Bytes;

class UpdateFile : public testing::Test {
protected:
    UpdateFile() { test::WriteWhole(m_path, m_before); }

    /// Overwrites the same bytes twice, writes across the end, and appends.
    static void Change(CUpdateFile& file) {
        EXPECT_TRUE(file.Seek(2) && file.Write(Bytes{21, 22, 23}));
        EXPECT_TRUE(file.Seek(1) && file.Write(Bytes{31, 32}));
        EXPECT_TRUE(file.Seek(8) && file.Write(Bytes{41, 42, 43, 44}));
        EXPECT_TRUE(file.Write(Bytes{51}));
    }

    test::CTestFolder m_folder;
    std::string m_path = m_folder / "a.bin";
    Bytes m_before = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9};
    Bytes m_after = {0, 31, 32, 22, 23, 5, 6, 7, 41, 42, 43, 44, 51};
};

TEST_F(UpdateFile, InPlaceKeepsEveryChange) {
    {
        CUpdateFile file;
        ASSERT_TRUE(file.Open(m_path, EUpdateManner::InPlace));
        Change(file);
    }
    EXPECT_EQ(test::ReadWhole(m_path), m_after);
}

TEST_F(UpdateFile, UncommittedChangeIsUndone) {
    {
        CUpdateFile file;
        ASSERT_TRUE(file.Open(m_path, EUpdateManner::UndoUnlessCommitted));
        Change(file);
        Bytes content(m_after.size());
        EXPECT_EQ(file.ReadAt(0, content), m_after.size());
        EXPECT_EQ(content, m_after);
        EXPECT_EQ(test::ReadWhole(m_path), m_after);
    }
    EXPECT_EQ(test::ReadWhole(m_path), m_before);
    EXPECT_EQ(m_folder.Names(), std::vector<std::string>{"a.bin"});
}

TEST_F(UpdateFile, ManyOverwrittenBytesAreKeptInTheJournal) {
    const Bytes before = test::RandomBytes(40 << 20U, 1);
    for (const bool commits : {false, true}) {
        test::WriteWhole(m_path, before);
        Bytes after = before;
        {
            CUpdateFile file;
            ASSERT_TRUE(file.Open(m_path, EUpdateManner::UndoUnlessCommitted));
            for (std::size_t start = 0; start < before.size(); start += 4 << 20U) {
                const Bytes piece = test::RandomBytes(5 << 20U, start);  // overlaps the next one
                ASSERT_TRUE(file.Seek(static_cast<std::int64_t>(start)) && file.Write(piece));
                after.resize(std::max(after.size(), start + piece.size()));
                std::copy(piece.begin(), piece.end(), after.begin() + static_cast<std::ptrdiff_t>(start));
            }
            EXPECT_EQ(m_folder.Names().size(), 2U);
            EXPECT_TRUE(!commits || file.Commit());
        }
        EXPECT_TRUE(test::ReadWhole(m_path) == (commits ? after : before));
        EXPECT_EQ(m_folder.Names().size(), 1U);
    }
}

TEST_F(UpdateFile, CommittedChangeStays) {
    CUpdateFile file;
    ASSERT_TRUE(file.Open(m_path, EUpdateManner::UndoUnlessCommitted));
    Change(file);
    EXPECT_TRUE(file.Commit());
    EXPECT_EQ(test::ReadWhole(m_path), m_after);
}

TEST_F(UpdateFile, ReopenContinuesAtTheStartAndKeepsUndo) {
    for (const EUpdateManner manner : {EUpdateManner::UndoUnlessCommitted, EUpdateManner::InPlace}) {
        {
            CUpdateFile file;
            ASSERT_TRUE(file.Open(m_path, manner));
            EXPECT_TRUE(file.Seek(10) && file.Write(Bytes{1, 1}));
            ASSERT_TRUE(file.Reopen());
            EXPECT_EQ(file.Size(), 12);
            EXPECT_TRUE(file.Write(Bytes{99}));
        }
        Bytes expected = m_before;
        if (manner == EUpdateManner::InPlace) {
            expected[0] = 99;
            expected.insert(expected.end(), {1, 1});
        }
        EXPECT_EQ(test::ReadWhole(m_path), expected);
    }
}

TEST_F(UpdateFile, ReadsByPosition) {
    CUpdateFile file;
    ASSERT_TRUE(file.Open(m_path, EUpdateManner::ReadOnly));
    Bytes piece(4);
    EXPECT_EQ(file.ReadAt(3, piece), 4U);
    EXPECT_EQ(piece, (Bytes{3, 4, 5, 6}));
    EXPECT_EQ(file.ReadAt(8, piece), 2U);
    EXPECT_EQ(file.ReadAt(-1, piece), 0U);
    EXPECT_FALSE(file.Seek(-1));
}

TEST_F(UpdateFile, ReadOnlyRefusesToWrite) {
    CUpdateFile file;
    ASSERT_TRUE(file.Open(m_path, EUpdateManner::ReadOnly));
    EXPECT_FALSE(file.Write(Bytes{1}));
    EXPECT_NE(file.Problem().find(m_path), std::string::npos);
    EXPECT_FALSE(file.Commit());
    EXPECT_EQ(test::ReadWhole(m_path), m_before);
}

TEST_F(UpdateFile, MissingFileIsNotCreated) {
    CUpdateFile file;
    EXPECT_FALSE(file.Open(m_folder / "b.bin", EUpdateManner::UndoUnlessCommitted));
    EXPECT_EQ(m_folder.Names(), std::vector<std::string>{"a.bin"});
}

/// The states that a kill may leave: copies of the folder while a change is not committed.
class InterruptedUpdate : public UpdateFile {
protected:
    /// Interrupts a change whose bytes have been written.
    void Interrupt() {
        CUpdateFile file;
        ASSERT_TRUE(file.Open(m_path, EUpdateManner::UndoUnlessCommitted));
        Change(file);
        Bytes byte(1);
        file.ReadAt(0, byte);
        std::filesystem::copy(m_folder.Path(), m_killed.Path(), std::filesystem::copy_options::recursive);
    }

    test::CTestFolder m_killed;
    std::string m_image = m_killed / "a.bin";
    std::string m_journal = m_killed / ".a.bin.vantrel-undo";
};

TEST_F(InterruptedUpdate, IsUndoneByTheNextOne) {
    Interrupt();
    EXPECT_EQ(test::ReadWhole(m_image), m_after);
    CUpdateFile file;
    ASSERT_TRUE(file.Open(m_image, EUpdateManner::UndoUnlessCommitted));
    EXPECT_TRUE(file.WasRestored());
    EXPECT_EQ(file.Size(), 10);
    EXPECT_EQ(test::ReadWhole(m_image), m_before);
    EXPECT_EQ(m_killed.Names(), std::vector<std::string>{"a.bin"});
}

TEST_F(InterruptedUpdate, JournalCutAnywhereIsEnoughForWhatItCovers) {
    Interrupt();
    const Bytes journal = test::ReadWhole(m_journal);
    for (std::size_t length = 0; length < journal.size(); ++length) {
        // Bytes are changed only after the whole part is on the disk.
        test::WriteWhole(m_journal, Bytes(journal.begin(), journal.begin() + static_cast<std::ptrdiff_t>(length)));
        test::WriteWhole(m_image, m_before);
        CUpdateFile file;
        ASSERT_TRUE(file.Open(m_image, EUpdateManner::UndoUnlessCommitted)) << length;
        EXPECT_EQ(test::ReadWhole(m_image), m_before);
    }
}

/// What is appended may have reached the disk in part.
TEST_F(InterruptedUpdate, IsUndoneIfTheFileHasNotReachedItsNewLength) {
    Interrupt();
    const Bytes journal = test::ReadWhole(m_journal);
    for (std::size_t length = m_before.size(); length <= m_after.size(); ++length) {
        test::WriteWhole(m_journal, journal);
        test::WriteWhole(m_image, Bytes(m_after.begin(), m_after.begin() + static_cast<std::ptrdiff_t>(length)));
        CUpdateFile file;
        ASSERT_NO_THROW(file.Open(m_image, EUpdateManner::UndoUnlessCommitted)) << length;
        EXPECT_EQ(test::ReadWhole(m_image), m_before) << length;
    }
}

/// Parts with right checksums whose contents no change has written.
TEST_F(InterruptedUpdate, JournalOfAnotherKindChangesNothing) {
    const auto number = [](std::uint64_t value, std::size_t size) {
        Bytes bytes;
        for (std::size_t i = 0; i < size; ++i) {
            bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
        }
        return bytes;
    };
    const auto part = [&number](const std::vector<Bytes>& pieces) {
        Bytes content;
        for (const Bytes& piece : pieces) {
            content.insert(content.end(), piece.begin(), piece.end());
        }
        SChecksum sum;
        sum.Add(content);
        Bytes whole = number(content.size(), 4);
        for (const Bytes& piece : {content, number(sum.crc32, 4)}) {
            whole.insert(whole.end(), piece.begin(), piece.end());
        }
        return whole;
    };
    Interrupt();
    for (const Bytes& change : {
             part({Bytes(5, 0)}),                                          // too short for a position
             part({number(0, 8)}),                                         // for a length
             part({number(0, 8), number(13, 8), Bytes(7, 0)}),             // for the checksums
             part({number(0, 8), number(~0ULL, 8), Bytes(100, 0)}),        // an impossible length
             part({number(~0ULL, 8), number(4, 8), Bytes(100, 0)}),        // an impossible position
             part({number(~0ULL >> 1U, 8), number(4, 8), Bytes(100, 0)}),  // one whose end is no number
         }) {
        Bytes journal = part({number(10, 8)});
        journal.insert(journal.end(), change.begin(), change.end());
        test::WriteWhole(m_journal, journal);
        CUpdateFile file;
        EXPECT_THROW(file.Open(m_image, EUpdateManner::UndoUnlessCommitted), CRefused) << change.size();
        EXPECT_EQ(test::ReadWhole(m_image), m_after);
        EXPECT_EQ(test::ReadWhole(m_journal), journal);
    }
}

/// Without the old length, or with a first part that is too long, no change can have begun.
TEST_F(InterruptedUpdate, JournalWithoutTheOldLengthIsRemoved) {
    for (const Bytes& journal : {Bytes{1, 0, 0, 0, 0, 0x8D, 0xEF, 0x02, 0xD2}, Bytes{0, 0, 0, 0x80, 1, 2, 3}}) {
        test::WriteWhole(m_image, m_before);
        test::WriteWhole(m_journal, journal);
        CUpdateFile file;
        ASSERT_TRUE(file.Open(m_image, EUpdateManner::UndoUnlessCommitted));
        EXPECT_EQ(test::ReadWhole(m_image), m_before);
        EXPECT_EQ(m_killed.Names(), std::vector<std::string>{"a.bin"});
    }
}

TEST_F(InterruptedUpdate, IsReportedByARunThatChangesNothing) {
    Interrupt();
    CUpdateFile file;
    EXPECT_THROW(file.Open(m_image, EUpdateManner::ReadOnly), CRefused);
    EXPECT_EQ(test::ReadWhole(m_image), m_after);
}

TEST_F(InterruptedUpdate, JournalOfAnotherFileIsRefused) {
    Interrupt();
    for (const Bytes& other : {Bytes(10, 77), Bytes(2000, 0), Bytes(3, 0)}) {
        test::WriteWhole(m_image, other);
        CUpdateFile file;
        EXPECT_THROW(file.Open(m_image, EUpdateManner::UndoUnlessCommitted), CRefused) << other.size();
        EXPECT_EQ(test::ReadWhole(m_image), other);
        EXPECT_NE(FileKindOf(m_journal), EFileKind::Missing);
    }
}

TEST_F(UpdateFile, ChangeAfterAFailureIsUndone) {
    CUpdateFile file;
    ASSERT_TRUE(file.Open(m_path, EUpdateManner::UndoUnlessCommitted));
    Change(file);
    EXPECT_FALSE(file.Seek(-1));
    EXPECT_FALSE(file.Commit()) << "something is missing";
    EXPECT_EQ(test::ReadWhole(m_path), m_before);
    EXPECT_EQ(m_folder.Names(), std::vector<std::string>{"a.bin"});
}

TEST_F(UpdateFile, OneProcessAtATimeChangesAFile) {
    CUpdateFile first;
    ASSERT_TRUE(first.Open(m_path, EUpdateManner::UndoUnlessCommitted));
    bool refused = false;
    try {
        CUpdateFile second;
        refused = !second.Open(m_path, EUpdateManner::UndoUnlessCommitted);
    } catch (const CRefused&) {
        refused = true;
    }
    EXPECT_TRUE(refused);
}

TEST_F(UpdateFile, LargeChangesAreWrittenInPieces) {
    const Bytes large = test::RandomBytes(20 << 20U, 1);
    for (const bool commits : {false, true}) {
        CUpdateFile file;
        ASSERT_TRUE(file.Open(m_path, EUpdateManner::UndoUnlessCommitted));
        ASSERT_TRUE(file.Seek(5));
        for (std::size_t i = 0; i < large.size(); i += 1 << 20U) {
            ASSERT_TRUE(file.Write(std::span(large).subspan(i, 1 << 20U))) << file.Problem();
        }
        EXPECT_EQ(file.Size(), 5 + static_cast<std::int64_t>(large.size()));
        EXPECT_GT(test::ReadWhole(m_path).size(), 8U << 20U);
        if (commits) {
            EXPECT_TRUE(file.Commit());
        }
    }
    Bytes expected(m_before.begin(), m_before.begin() + 5);
    expected.insert(expected.end(), large.begin(), large.end());
    EXPECT_TRUE(test::ReadWhole(m_path) == expected);
    EXPECT_EQ(m_folder.Names(), std::vector<std::string>{"a.bin"});
}

}  // namespace
}  // namespace vantrel
