// The postgap commands: kinds, notices, appended sectors and undo.
#include "iso/postgap.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "files/native_file.h"
#include "tests/support/image_builder.h"
#include "tests/support/recording_operation.h"
#include "tests/support/test_folder.h"

namespace vantrel {
namespace {

using test::Bytes;

constexpr std::size_t kSector = 2048;

class Postgap : public testing::Test {
protected:
    Bytes Image(test::EImageKind kind, test::EPostgap postgap) {
        test::SImageDescription description;
        description.kind = kind;
        description.postgap = postgap;
        description.files = {{"SYSTEM.CNF", test::TextLikeBytes(61, 1)}, {"DATA/A.BIN", test::RandomBytes(5000, 2)}};
        Bytes bytes = test::BuildImage(description).bytes;
        test::WriteWhole(m_path, bytes);
        return bytes;
    }

    void Check(EUpdateManner manner = EUpdateManner::InPlace) { CheckPostgap({m_path, manner}, m_operation); }
    bool Add(EUpdateManner manner = EUpdateManner::InPlace, std::optional<int> sectors = 9) {
        return AddSelectivePostgap({m_path, manner, false, sectors}, m_operation);
    }

    /// What a strict check says when it refuses.
    std::string StrictFailure() {
        return test::FailureOf([&] { CheckPostgap({m_path, EUpdateManner::UndoUnlessCommitted, true}, m_operation); });
    }
    void AddStrictly() { AddSelectivePostgap({m_path, EUpdateManner::UndoUnlessCommitted, true, 3}, m_operation); }

    static Bytes WithPostgap(Bytes image) {
        const std::size_t start = image.size();
        image.resize(start + 150 * kSector);
        const std::string word = "postgap";
        std::copy(word.begin(), word.end(), image.begin() + static_cast<std::ptrdiff_t>(start));
        return image;
    }

    static Bytes WithVolumeSize(Bytes image) {
        const auto sectors = static_cast<std::uint32_t>(image.size() / kSector);
        test::Write32(image, 0x8050, sectors);
        for (std::size_t i = 0; i < 4; ++i) {
            image.at(0x8057 - i) = static_cast<std::uint8_t>(sectors >> (8 * i));
        }
        return image;
    }

    /// The first two calls of a command.
    static std::vector<std::string> Start(const std::string& command) {
        return {"pane STATUS checking ISO postgap, please Wait", "begin " + command};
    }

    test::CTestFolder m_folder;
    std::string m_path = m_folder / "game.iso";
    test::CRecordingOperation m_operation;
};

TEST_F(Postgap, NoticesOfImagesThatNeedNone) {
    struct SCase {
        test::EImageKind kind;
        test::EPostgap postgap;
        std::string text;
    };
    const std::vector<SCase> cases = {
        {test::EImageKind::Dvd, test::EPostgap::None,
         "This is PS2 DVD iso  image file ,doesn't needed to Write a postgap "},
        {test::EImageKind::Umd, test::EPostgap::None,
         "This is PSP UMD iso image file ,doesn't needed to Write a postgap "},
        {test::EImageKind::Cd, test::EPostgap::Counted,
         "This is PS2 CD/DVDRIP iso image file ,already Write a postgap "},
        {test::EImageKind::Cd, test::EPostgap::None, "This is PS2 CD/DVDRIP iso image file ,already Write a postgap "},
    };
    for (const SCase& one : cases) {
        const Bytes before = Image(one.kind, one.postgap);
        m_operation = {};
        Check();
        std::vector<std::string> expected = Start("check-postgap");
        expected.insert(expected.end(), {"total 150", "notify " + one.text + m_path});
        EXPECT_EQ(m_operation.Calls(), expected);
        EXPECT_EQ(test::ReadWhole(m_path), before);
    }
}

TEST_F(Postgap, AppendsAMissingPostgapOnce) {
    const Bytes before = Image(test::EImageKind::Cd, test::EPostgap::Missing);
    Check();
    const Bytes after = test::ReadWhole(m_path);
    EXPECT_EQ(after, WithPostgap(before));
    EXPECT_EQ(test::Read32(after, 0x8050), after.size() / kSector);
    std::vector<std::string> expected = Start("check-postgap");
    expected.emplace_back("total 150");
    for (int i = 1; i <= 150; ++i) {
        expected.insert(expected.end(),
                        {"pane PERCENT " + std::to_string(i * 100 / 150) + "%", "done " + std::to_string(i), "yield"});
    }
    expected.insert(expected.end(), {"pane STATUS checking [cd] ISO done added postgap!", "pane FILE " + m_path,
                                     "complete checking [cd] ISO done added postgap!", "completed"});
    EXPECT_EQ(m_operation.Calls(), expected);
    m_operation = {};
    Check();
    EXPECT_EQ(
        m_operation.CallsOf("notify"),
        std::vector<std::string>{"notify This is PS2 CD/DVDRIP iso image file ,already Write a postgap " + m_path});
    EXPECT_EQ(test::ReadWhole(m_path), after);
}

TEST_F(Postgap, AppendsAPostgapToAnImageLongerThanItsVolume) {
    const Bytes before = Image(test::EImageKind::Cd, test::EPostgap::Uncounted);
    Check();
    EXPECT_EQ(test::ReadWhole(m_path), WithPostgap(before));
}

/// The length is a signed 32-bit number here, which wraps.
TEST_F(Postgap, LengthsOfTwoGibibytesAndMoreWrap) {
    const Bytes image = Image(test::EImageKind::Cd, test::EPostgap::Counted);
    const auto setLengths = [&](std::int64_t length, std::uint32_t volumeSectors) {
        Bytes start = image;
        test::Write32(start, 0x8050, volumeSectors);
        test::WriteWhole(m_path, start);
        CNativeFile file;
        ASSERT_TRUE(file.Open(m_path, EOpenMode::ReadWrite, ESharing::Anyone));
        ASSERT_TRUE(file.Resize(length));
    };
    constexpr std::int64_t kTwoGibibytes = std::int64_t{1} << 31;
    setLengths(kTwoGibibytes, 1U << 20U);
    Check();
    EXPECT_EQ(FileSizeOf(m_path), kTwoGibibytes + 150 * std::int64_t{kSector}) << "never as long as its volume";
    setLengths(2 * kTwoGibibytes + 5 * std::int64_t{kSector}, 5);
    Check();
    EXPECT_EQ(FileSizeOf(m_path), 2 * kTwoGibibytes + 5 * std::int64_t{kSector});
    EXPECT_EQ(m_operation.CallsOf("notify This is PS2 CD/DVDRIP iso image file ,already").size(), 1U);
}

TEST_F(Postgap, OtherImagesCountAsDvds) {
    // Every image that is neither CD nor UMD counts as a DVD, however short.
    for (const Bytes& image : {Bytes(), Bytes(100, 1), Bytes(0x8400, 'L'), Bytes(40'000, 'X'), Bytes(40'000, 'L')}) {
        test::WriteWhole(m_path, image);
        m_operation = {};
        Check();
        EXPECT_EQ(m_operation.CallsOf("notify This is PS2 DVD").size(), 1U);
        EXPECT_EQ(test::ReadWhole(m_path), image);
    }
}

TEST_F(Postgap, StrictRefusesWhatIsNoImage) {
    Bytes unmarked = Image(test::EImageKind::Cd, test::EPostgap::Missing);
    unmarked.at(32769) = 'X';
    Bytes foreign = Image(test::EImageKind::Dvd, test::EPostgap::None);
    foreign.at(32777) = 'X';
    const std::string problem = m_path + " is no image of a PlayStation 2 CD or DVD or of a PSP UMD";
    for (const Bytes& image : {Bytes(), Bytes(100, 1), Bytes(40'960, 'L'), unmarked, foreign}) {
        test::WriteWhole(m_path, image);
        EXPECT_EQ(StrictFailure(), problem);
        EXPECT_EQ(test::FailureOf([&] { AddStrictly(); }), problem);
        EXPECT_EQ(test::ReadWhole(m_path), image);
    }
}

TEST_F(Postgap, StrictRefusesOtherLengths) {
    Bytes image = Image(test::EImageKind::Cd, test::EPostgap::Missing);
    image.resize(image.size() - 1);
    test::WriteWhole(m_path, image);
    EXPECT_EQ(StrictFailure(), m_path + " is no whole number of sectors long");
    image.resize(image.size() + 1 + kSector);
    test::WriteWhole(m_path, image);
    EXPECT_EQ(StrictFailure(), m_path + " has " + std::to_string(image.size() / kSector) + " sectors, but its volume " +
                                   std::to_string(image.size() / kSector + 149) +
                                   ": that is neither a complete image nor one without its postgap");
    EXPECT_EQ(test::ReadWhole(m_path), image);
}

TEST_F(Postgap, StrictAppendsOnce) {
    const Bytes before = Image(test::EImageKind::Cd, test::EPostgap::Missing);
    EXPECT_EQ(StrictFailure(), "did not fail");
    EXPECT_EQ(StrictFailure(), "did not fail");
    EXPECT_EQ(test::ReadWhole(m_path), WithPostgap(before));
    EXPECT_EQ(m_operation.CallsOf("complete ").size(), 1U);
}

TEST_F(Postgap, StrictSelectiveReportsWhatItDid) {
    const Bytes cd = Image(test::EImageKind::Cd, test::EPostgap::Missing);
    AddStrictly();
    EXPECT_EQ(m_operation.CallsOf("complete "),
              std::vector<std::string>{"complete 0 sectors appended, volume size set to " +
                                       std::to_string(cd.size() / kSector) + " sectors"});
    m_operation = {};
    const Bytes umd = Image(test::EImageKind::Umd, test::EPostgap::None);
    AddStrictly();
    EXPECT_EQ(m_operation.CallsOf("complete "),
              std::vector<std::string>{"complete 3 sectors appended, volume size set to " +
                                       std::to_string(umd.size() / kSector + 3) + " sectors"});
    const Bytes dvd = Image(test::EImageKind::Dvd, test::EPostgap::None);
    EXPECT_EQ(test::FailureOf([&] { AddStrictly(); }), m_path + " is a DVD image; no sectors are appended to one");
    EXPECT_EQ(test::ReadWhole(m_path), dvd);
}

TEST_F(Postgap, MissingImage) {
    EXPECT_EQ(test::FailureOf([&] { Check(); }), "Code 401 - Error Opening " + m_path);
    EXPECT_EQ(test::FailureOf([&] { Add(); }), "Code 401 - Error Opening " + m_path);
    EXPECT_TRUE(m_folder.Names().empty());
}

TEST_F(Postgap, ReadOnlyReports) {
    const Bytes before = Image(test::EImageKind::Cd, test::EPostgap::Missing);
    Check(EUpdateManner::ReadOnly);
    EXPECT_EQ(m_operation.CallsOf("notify"),
              std::vector<std::string>{"notify This is PS2 CD iso image file ,without its postgap " + m_path});
    EXPECT_EQ(test::ReadWhole(m_path), before);
}

class CStopped : public std::runtime_error {
public:
    CStopped() : std::runtime_error("stopped") {}
};

TEST_F(Postgap, AnInterruptedCheckIsUndoneUnlessInPlace) {
    const Bytes before = Image(test::EImageKind::Cd, test::EPostgap::Missing);
    m_operation.m_onYield = [](int yield) {
        if (yield == 70) {
            throw CStopped();
        }
    };
    EXPECT_THROW(Check(EUpdateManner::UndoUnlessCommitted), CStopped);
    EXPECT_EQ(test::ReadWhole(m_path), before);
    m_operation = {};
    m_operation.m_onYield = [](int yield) {
        if (yield == 70) {
            throw CStopped();
        }
    };
    EXPECT_THROW(Check(EUpdateManner::InPlace), CStopped);
    EXPECT_EQ(test::ReadWhole(m_path).size(), before.size() + 70 * kSector);
}

TEST_F(Postgap, SelectiveLengthensAUmdByTheChosenCount) {
    for (const EUpdateManner manner : {EUpdateManner::InPlace, EUpdateManner::UndoUnlessCommitted}) {
        const Bytes before = Image(test::EImageKind::Umd, test::EPostgap::None);
        m_operation = {};
        EXPECT_TRUE(Add(manner, 2));
        Bytes expected = before;
        expected.resize(before.size() + 2 * kSector);
        EXPECT_EQ(test::ReadWhole(m_path), WithVolumeSize(expected));
        std::vector<std::string> calls = Start("add-postgap");
        calls.insert(calls.end(), {"total 2", "pane PERCENT 50%", "done 1", "yield", "pane PERCENT 100%", "done 2",
                                   "yield", "pane STATUS checking [cd] ISO done added postgap!", "pane FILE " + m_path,
                                   "complete checking [cd] ISO done added postgap!", "completed"});
        EXPECT_EQ(m_operation.Calls(), calls);
    }
}

TEST_F(Postgap, SelectiveOnlyCorrectsTheVolumeSizeOfACd) {
    const Bytes before = Image(test::EImageKind::Cd, test::EPostgap::Missing);
    Add();
    EXPECT_EQ(test::ReadWhole(m_path), WithVolumeSize(before));
    EXPECT_EQ(m_operation.CallsOf("done").size(), 0U);
    EXPECT_EQ(m_operation.CallsOf("complete ").size(), 1U);
}

TEST_F(Postgap, SelectiveDoesNotChangeADvd) {
    const Bytes before = Image(test::EImageKind::Dvd, test::EPostgap::None);
    Add();
    EXPECT_EQ(test::ReadWhole(m_path), before);
    std::vector<std::string> calls = Start("add-postgap");
    calls.insert(calls.end(),
                 {"total 9", "notify This is PS2 DVD iso  image file ,doesn't needed to Write a postgap " + m_path});
    EXPECT_EQ(m_operation.Calls(), calls);
}

TEST_F(Postgap, SelectiveWithoutASelectionDoesNothing) {
    const Bytes before = Image(test::EImageKind::Umd, test::EPostgap::None);
    EXPECT_FALSE(Add(EUpdateManner::InPlace, std::nullopt));
    EXPECT_EQ(m_operation.Calls(), Start("add-postgap"));
    EXPECT_EQ(test::ReadWhole(m_path), before);
}

TEST_F(Postgap, SelectiveReportsAVanishedImage) {
    Image(test::EImageKind::Umd, test::EPostgap::None);
    m_operation.m_onYield = [&](int yield) {
        if (yield == 9) {
            EXPECT_TRUE(RemoveFile(m_path));
        }
    };
    EXPECT_EQ(test::FailureOf([&] { Add(); }), "Code 13000 - Error Opening " + m_path);
}

TEST_F(Postgap, AnInterruptedSelectivePostgapIsUndone) {
    const Bytes before = Image(test::EImageKind::Umd, test::EPostgap::None);
    m_operation.m_onYield = [](int yield) {
        if (yield == 4) {
            throw CStopped();
        }
    };
    EXPECT_THROW(Add(EUpdateManner::UndoUnlessCommitted), CStopped);
    EXPECT_EQ(test::ReadWhole(m_path), before);
}

}  // namespace
}  // namespace vantrel
