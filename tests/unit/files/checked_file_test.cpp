// Files of a conversion: which text ends the conversion when a call fails, and that it goes on otherwise.
#include "files/checked_file.h"

#include <gtest/gtest.h>

#include "tests/support/recording_operation.h"
#include "tests/support/test_folder.h"

namespace vantrel {
namespace {

using test::Bytes;
using test::FailureOf;

constexpr const char* kPattern = "Code 101e - Error Opening %s";

class CheckedFile : public testing::Test {
protected:
    CheckedFile() {
        test::WriteText(m_folder / "a", "0123456789");
        EXPECT_TRUE(MakeFolder(m_folder / "folder"));
    }

    test::CTestFolder m_folder;
    std::string m_path = m_folder / "a";
    std::string m_missing = m_folder / "none";
    test::CRecordingOperation m_operation;
    CCheckedInput m_input{m_operation};
    CCheckedOutput m_output{m_operation};
    CCheckedUpdate m_update{m_operation};
};

using CheckedInput = CheckedFile;
using CheckedOutput = CheckedFile;
using CheckedUpdate = CheckedFile;

TEST_F(CheckedInput, OpensAndMeasures) {
    m_input.OpenOrFail(m_path, kPattern);
    EXPECT_EQ(m_input.SizeOrFail(), 10);
    Bytes whole(20);
    EXPECT_EQ(m_input.Read(whole), 10U);
    m_input.FailIfUnread();
    EXPECT_TRUE(m_operation.Calls().empty());
}

TEST_F(CheckedInput, MissingFileFailsWithItsPath) {
    EXPECT_EQ(FailureOf([&] { m_input.OpenOrFail(m_missing, kPattern); }), "Code 101e - Error Opening " + m_missing);
    EXPECT_EQ(m_operation.Calls(), std::vector<std::string>{"fail Code 101e - Error Opening " + m_missing});
}

TEST_F(CheckedInput, MissingFileFailsWithTheShownPath) {
    EXPECT_EQ(FailureOf([&] { m_input.OpenOrFail(m_missing, kPattern, "shown.iso"); }),
              "Code 101e - Error Opening shown.iso");
}

TEST_F(CheckedInput, UnknownSizeFailsWithTheCause) {
    EXPECT_EQ(m_input.Size(), -1);
    const std::string cause = LastFileError();
    EXPECT_EQ(FailureOf([&] { m_input.SizeOrFail(); }), "Cannot read : " + cause) << "no file is open";
}

TEST_F(CheckedOutput, WritesAndCommits) {
    const std::string path = m_folder / "new";
    m_output.OpenOrFail(path, EOutputManner::CommitNew, kPattern);
    m_output.WriteOrFail(Bytes{1, 2, 3});
    m_output.WriteZerosOrFail(2);
    m_output.SeekOrFail(1);
    m_output.WriteOrFail(Bytes{9});
    m_output.FailIfUnwritten();
    m_output.ReopenOrFail(kPattern);
    m_output.WriteOrFail(Bytes{8});
    m_output.FinishOrFail();
    EXPECT_EQ(FileKindOf(path), EFileKind::Missing);
    m_output.CommitOrFail();
    EXPECT_EQ(test::ReadWhole(path), (Bytes{8, 9, 3, 0, 0}));
    EXPECT_TRUE(m_operation.Calls().empty());
}

TEST_F(CheckedOutput, FileThatCannotBeCreatedFailsWithItsPath) {
    const std::string path = m_missing + "/a";
    EXPECT_EQ(FailureOf([&] { m_output.OpenOrFail(path, EOutputManner::InPlace, kPattern); }),
              "Code 101e - Error Opening " + path);
    EXPECT_EQ(
        FailureOf([&] { m_output.OpenOrFail(path, EOutputManner::InPlace, kPattern, "shown.iso", ESharing::Readers); }),
        "Code 101e - Error Opening shown.iso");
}

TEST_F(CheckedOutput, FailureToReopenNamesTheTarget) {
    m_output.OpenOrFail(m_path, EOutputManner::InPlace, kPattern);
    ASSERT_TRUE(RemoveFile(m_path));
    EXPECT_EQ(FailureOf([&] { m_output.ReopenOrFail("Code 3041 - Error %s"); }), "Code 3041 - Error " + m_path);
}

TEST_F(CheckedOutput, FailureToCommitNamesTargetAndCause) {
    const std::string path = m_folder / "new";
    m_output.OpenOrFail(path, EOutputManner::CommitNew, kPattern);
    test::WriteText(path, "appeared meanwhile");
    EXPECT_EQ(FailureOf([&] { m_output.CommitOrFail(); }), "Cannot write " + path + ": File exists");
    EXPECT_EQ(test::ReadText(path), "appeared meanwhile");
}

TEST_F(CheckedUpdate, ChangesAndCommits) {
    m_update.OpenOrFail(m_path, EUpdateManner::UndoUnlessCommitted, kPattern);
    EXPECT_EQ(m_update.SizeOrFail(), 10);
    m_update.SeekOrFail(8);
    m_update.WriteOrFail(Bytes{'x', 'y', 'z'});
    Bytes piece(4);
    EXPECT_EQ(m_update.ReadAt(9, piece), 2U);
    m_update.FailIfUnread();
    m_update.ReopenOrFail(kPattern);
    m_update.WriteOrFail(Bytes{'w'});
    m_update.CommitOrFail();
    EXPECT_EQ(test::ReadText(m_path), "w1234567xyz");
    EXPECT_TRUE(m_operation.Calls().empty());
}

TEST_F(CheckedUpdate, MissingFileFailsWithItsPath) {
    EXPECT_EQ(FailureOf([&] { m_update.OpenOrFail(m_missing, EUpdateManner::InPlace, kPattern); }),
              "Code 101e - Error Opening " + m_missing);
}

TEST_F(CheckedUpdate, FailureToReopenNamesTheFile) {
    m_update.OpenOrFail(m_path, EUpdateManner::InPlace, kPattern);
    ASSERT_TRUE(RemoveFile(m_path));
    EXPECT_EQ(FailureOf([&] { m_update.ReopenOrFail("Code 3041 - Error %s"); }), "Code 3041 - Error " + m_path);
}

TEST_F(CheckedUpdate, UnknownSizeFailsWithTheCause) {
    EXPECT_EQ(m_update.Size(), -1);
    const std::string cause = LastFileError();
    EXPECT_EQ(FailureOf([&] { m_update.SizeOrFail(); }), "Cannot read : " + cause) << "no file is open";
}

TEST_F(CheckedUpdate, FailedReadIsReportedOnRequest) {
    m_update.OpenOrFail(m_path, EUpdateManner::ReadOnly, kPattern);
    Bytes piece(4);
    EXPECT_EQ(m_update.ReadAt(-1, piece), 0U);
    const std::string failure = FailureOf([&] { m_update.FailIfUnread(); });
    EXPECT_TRUE(failure.starts_with("Cannot read " + m_path + ": ")) << failure;
}

TEST_F(CheckedUpdate, SeekBeforeTheStartFails) {
    m_update.OpenOrFail(m_path, EUpdateManner::InPlace, kPattern);
    const std::string failure = FailureOf([&] { m_update.SeekOrFail(-1); });
    EXPECT_TRUE(failure.starts_with("Cannot write " + m_path + ": ")) << failure;
}

TEST_F(CheckedUpdate, ChangeOfAFileOpenedForReadingFails) {
    m_update.OpenOrFail(m_path, EUpdateManner::ReadOnly, kPattern);
    const std::string text = "Cannot write " + m_path + ": Bad file descriptor";
    EXPECT_EQ(FailureOf([&] { m_update.WriteOrFail(Bytes{1}); }), text);
    EXPECT_EQ(FailureOf([&] { m_update.CommitOrFail(); }), text) << "the first failure counts";
}

TEST_F(CheckedFile, CreationProblemNamesPathAndLastError) {
    EXPECT_FALSE(m_input.Open(m_missing));
    EXPECT_EQ(CreationProblem("new.iso"), "Cannot create new.iso: No such file or directory");
}

#ifdef __linux__
TEST_F(CheckedOutput, FullDiskFailsEveryCallThatWrites) {
    const std::string text = "Cannot write /dev/full: No space left on device";
    const auto failsWith = [&](const std::function<void()>& write) {
        m_output.OpenOrFail("/dev/full", EOutputManner::InPlace, kPattern);
        EXPECT_EQ(FailureOf(write), text);
        EXPECT_EQ(FailureOf([&] { m_output.FailIfUnwritten(); }), text);
        EXPECT_EQ(FailureOf([&] { m_output.FinishOrFail(); }), text);
        EXPECT_EQ(FailureOf([&] { m_output.CommitOrFail(); }), text);
    };
    failsWith([&] { m_output.WriteOrFail(Bytes{1}); });
    failsWith([&] { m_output.WriteZerosOrFail(1); });
    failsWith([&] { m_output.WriteZerosOrFail(5000); });
}

TEST_F(CheckedOutput, SeekReportsWhatCouldNotBeWrittenBefore) {
    m_output.OpenOrFail(m_path, EOutputManner::InPlace, kPattern);
    EXPECT_EQ(FailureOf([&] { m_output.SeekOrFail(-1); }), "Cannot write " + m_path + ": Invalid argument");
}

TEST_F(CheckedInput, UnreadableFileFailsOnRequest) {
    // Reading the memory of a process at address 0 fails on every system.
    m_input.OpenOrFail("/proc/self/mem", kPattern);
    Bytes piece(4);
    EXPECT_EQ(m_input.Read(piece), 0U);
    EXPECT_EQ(FailureOf([&] { m_input.FailIfUnread(); }), "Cannot read /proc/self/mem: Input/output error");
}
#endif

}  // namespace
}  // namespace vantrel
