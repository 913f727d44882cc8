// POSIX systems that lack a call, and say so with different error codes.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "files/native_file.h"
#include "tests/support/test_folder.h"
#include "tests/support/watched_calls.h"

namespace vantrel::test {
namespace {

TEST(LimitedSystem, RenamesWithoutReplacing) {
    for (const int renameError : {EINVAL, ENOSYS}) {
        for (const int linkError : {0, EPERM, EOPNOTSUPP, ENOSYS}) {
            const CTestFolder folder;
            WriteText(folder / "from", "new");
            WriteText(folder / "older", "older");
            SSystem system;
            system.renamesWithoutReplacing = false;
            system.renameError = renameError;
            system.linksFiles = linkError == 0;
            system.linkError = linkError;
            const CWatchedCalls watch(folder.Path(), {}, system);
            EXPECT_FALSE(RenameFile(folder / "from", folder / "older", false));
            EXPECT_EQ(LastFileError(), "File exists");
            EXPECT_EQ(ReadText(folder / "older"), "older");
            EXPECT_TRUE(RenameFile(folder / "from", folder / "to", false)) << LastFileError();
            EXPECT_EQ(folder.Names(), (std::vector<std::string>{"older", "to"}));
            EXPECT_EQ(ReadText(folder / "to"), "new");
        }
    }
}

/// Creates a temporary file on a system that cannot make one without a name, and gives it a name.
void ExpectNamedTemporary(const CTestFolder& folder) {
    const std::string path = folder / ".vantrel-0123abcd.tmp";
    CNativeFile file;
    ASSERT_TRUE(file.OpenTemporary(path, ESharing::Nobody)) << LastFileError();
    EXPECT_TRUE(file.StaysWhenClosed());
    EXPECT_EQ(FileKindOf(path), EFileKind::File);
    EXPECT_TRUE(file.GiveName(path, folder / "game.bin", false)) << LastFileError();
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"game.bin"});
}

TEST(LimitedSystem, GivesTemporaryFilesNames) {
    for (const int error : {EOPNOTSUPP, EISDIR, EINVAL, ENOSYS}) {
        const CTestFolder folder;
        SSystem system;
        system.vanishingFiles = false;
        system.unnamedError = error;
        const CWatchedCalls watch(folder.Path(), {}, system);
        ExpectNamedTemporary(folder);
    }
}

/// A file without a name gets one by its path in /proc.
TEST(LimitedSystem, WithoutProcGivesTemporaryFilesNames) {
    const CTestFolder folder;
    const int next = ::open("/dev/null", O_RDONLY);
    ::close(next);
    const CWatchedCalls watch("/proc/self/fd/", {{ECall::Look, std::to_string(next), false}, 1});
    ExpectNamedTemporary(folder);
    EXPECT_TRUE(watch.HasFailed());
}

TEST(LimitedSystem, MayNotFlushFolders) {
    for (const auto& [error, flushed] : {std::pair(EINVAL, true), {ENOTSUP, true}, {EIO, false}}) {
        const CTestFolder folder;
        SSystem system;
        system.flushesFolders = false;
        system.folderError = error;
        const CWatchedCalls watch(folder.Path(), {}, system);
        EXPECT_EQ(FlushFolder(folder.Path()), flushed) << error;
        EXPECT_EQ(watch.OpenCount(), 0U);
    }
}

}  // namespace
}  // namespace vantrel::test
