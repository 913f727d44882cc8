// What is said of paths that cannot be looked at: nothing is taken to be free, or another file, on a guess.
#include <gtest/gtest.h>

#include "files/native_file.h"
#include "tests/support/test_folder.h"
#include "tests/support/watched_calls.h"

namespace vantrel::test {
namespace {

class FailingLooks : public testing::Test {
protected:
    FailingLooks() {
        WriteText(m_folder / "a", "1");
        WriteText(m_folder / "b", "2");
    }

    /// The first look at a file fails.
    SFault LookAt(const char* name) const { return {{ECall::Look, name, false}, 1}; }

    CTestFolder m_folder;
};

TEST_F(FailingLooks, SayNothingOfTheKind) {
    EXPECT_EQ(FileKindOf(m_folder / "a"), EFileKind::File);
    EXPECT_EQ(FileKindOf(m_folder / "c"), EFileKind::Missing);
    const CWatchedCalls watch(m_folder.Path(), LookAt("a"));
    EXPECT_EQ(FileKindOf(m_folder / "a"), EFileKind::Other);
    EXPECT_TRUE(watch.HasFailed());
}

TEST_F(FailingLooks, SayNothingOfTheLength) {
    EXPECT_EQ(FileSizeOf(m_folder / "a"), 1);
    const CWatchedCalls watch(m_folder.Path(), LookAt("a"));
    EXPECT_EQ(FileSizeOf(m_folder / "a"), -1);
    EXPECT_TRUE(watch.HasFailed());
}

TEST_F(FailingLooks, MayHideThatTwoPathsLeadToOneFile) {
    EXPECT_TRUE(IsSameFile(m_folder / "a", m_folder / "a"));
    EXPECT_FALSE(IsSameFile(m_folder / "a", m_folder / "b"));
    EXPECT_FALSE(IsSameFile(m_folder / "a", m_folder / "c"));
    for (const char* name : {"a", "b"}) {
        // On Windows a look is an opening and a question, either of which may fail.
        std::size_t looks = 0;
        {
            const CWatchedCalls watch(m_folder.Path());
            IsSameFile(m_folder / "a", m_folder / "b");
            for (const SCall& call : watch.Calls()) {
                looks += call == LookAt(name).call ? 1 : 0;
            }
        }
        EXPECT_GT(looks, 0U);
        for (std::size_t number = 1; number <= looks; ++number) {
            const CWatchedCalls watch(m_folder.Path(), {LookAt(name).call, number});
            EXPECT_TRUE(IsSameFile(m_folder / "a", m_folder / "b")) << name << ", look " << number;
            EXPECT_EQ(watch.OpenCount(), 0U);
        }
    }
}

TEST_F(FailingLooks, LeaveTheLastErrorAsItWas) {
    const std::string before = SystemText(EFailure::NoSpace);
    const CWatchedCalls watch(m_folder.Path(), LookAt("a"));
    FileKindOf(m_folder / "a");
    EXPECT_EQ(LastFileError(), before);
    FileSizeOf(m_folder / "c");
    EXPECT_EQ(LastFileError(), before);
}

}  // namespace
}  // namespace vantrel::test
