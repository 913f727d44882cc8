// Paths that cannot be examined: they count neither as missing nor as a different file.
#include <gtest/gtest.h>

#include "files/native_file.h"
#include "tests/support/test_folder.h"
#include "tests/support/watched_calls.h"

namespace vantrel::test {
namespace {

class FailingLook : public testing::Test {
protected:
    FailingLook() {
        WriteText(m_folder / "a", "1");
        WriteText(m_folder / "b", "2");
    }

    /// The fault of the first call that examines a file.
    SFault LookAt(const char* name) const { return {{ECall::Look, name, false}, 1}; }

    CTestFolder m_folder;
};

TEST_F(FailingLook, LeavesTheKindUnknown) {
    EXPECT_EQ(FileKindOf(m_folder / "a"), EFileKind::File);
    EXPECT_EQ(FileKindOf(m_folder / "c"), EFileKind::Missing);
    const CWatchedCalls watch(m_folder.Path(), LookAt("a"));
    EXPECT_EQ(FileKindOf(m_folder / "a"), EFileKind::Other);
    EXPECT_TRUE(watch.HasFailed());
}

TEST_F(FailingLook, LeavesTheLengthUnknown) {
    EXPECT_EQ(FileSizeOf(m_folder / "a"), 1);
    const CWatchedCalls watch(m_folder.Path(), LookAt("a"));
    EXPECT_EQ(FileSizeOf(m_folder / "a"), -1);
    EXPECT_TRUE(watch.HasFailed());
}

TEST_F(FailingLook, MakesTwoPathsCountAsOneFile) {
    EXPECT_TRUE(IsSameFile(m_folder / "a", m_folder / "a"));
    EXPECT_FALSE(IsSameFile(m_folder / "a", m_folder / "b"));
    EXPECT_FALSE(IsSameFile(m_folder / "a", m_folder / "c"));
    for (const char* name : {"a", "b"}) {
        // On Windows, examining a file takes several calls.
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

TEST_F(FailingLook, DoesNotChangeTheLastError) {
    const std::string before = SystemText(EFailure::NoSpace);
    const CWatchedCalls watch(m_folder.Path(), LookAt("a"));
    FileKindOf(m_folder / "a");
    EXPECT_EQ(LastFileError(), before);
    FileSizeOf(m_folder / "c");
    EXPECT_EQ(LastFileError(), before);
}

}  // namespace
}  // namespace vantrel::test
