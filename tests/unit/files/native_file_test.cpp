// The file layer of POSIX systems: paths that lead nowhere, leftovers without permissions, terminals.
#include "files/native_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "files/leftovers.h"
#include "files/native_console.h"
#include "files/path.h"
#include "files/temporary_folder.h"
#include "tests/support/ordinary_user.h"
#include "tests/support/test_folder.h"

namespace vantrel {
namespace {

namespace fs = std::filesystem;

constexpr const char* kTemporary = ".vantrel-0123abcd.tmp";

TEST(NativeFile, PathsThatLeadNowhereAreMissing) {
    const test::CTestFolder folder;
    test::WriteText(folder / "file", "");
    fs::create_symlink("loop", folder / "loop");
    fs::create_symlink("none", folder / "dangling");
    for (const std::string& name : {std::string("none"), std::string("file/sub"), std::string("loop"),
                                    std::string("dangling"), std::string(300, 'a')}) {
        const std::string path = folder / name;
        EXPECT_EQ(FileKindOf(path), EFileKind::Missing) << name;
        EXPECT_EQ(FileSizeOf(path), -1) << name;
        EXPECT_EQ(ResolveLink(path), path) << name;
        EXPECT_FALSE(IsSameFile(path, folder / "file")) << name;
        EXPECT_FALSE(IsSameFile(folder / "file", path)) << name;
    }
}

TEST(NativeFile, WhatMayNotBeAccessedIsMissing) {
    const test::CTestFolder folder;
    fs::create_directory(folder / "closed");
    test::WriteText(folder / "closed/file", "");
    fs::permissions(folder / "closed", fs::perms::none);
    {
        const test::CAsOrdinaryUser user(folder);
        EXPECT_EQ(FileKindOf(folder / "closed/file"), EFileKind::Missing);
    }
    fs::permissions(folder / "closed", fs::perms::owner_all);
    EXPECT_EQ(FileKindOf(folder / "closed/file"), EFileKind::File);
}

/// The leftover of an output that was to replace a file without permissions.
TEST(NativeFile, LeftoversThatMayNotBeWrittenAreRemoved) {
    for (const bool isReadable : {true, false}) {
        const test::CTestFolder folder;
        const test::CAsOrdinaryUser user(folder);
        test::WriteText(folder / kTemporary, "unfinished");
        fs::permissions(folder / kTemporary, isReadable ? fs::perms::owner_read : fs::perms::none);
        RemoveLeftovers(folder.Path());
        EXPECT_EQ(folder.Names().empty(), isReadable) << "what cannot be locked stays";
    }
}

TEST(NativeFile, FoldersThatCannotBeFlushedCountAsFlushed) {
    const test::CTestFolder folder;
    EXPECT_TRUE(FlushFolder(folder.Path()));
    EXPECT_FALSE(FlushFolder(folder / "none/"));
    EXPECT_EQ(LastFileError(), "No such file or directory");
}

TEST(TemporaryFolder, ExistsAsLongAsItsObject) {
    const test::CTestFolder folder;
    {
        CTemporaryFolder temporary;
        ASSERT_TRUE(temporary.MakeIn(folder.Path()));
        EXPECT_EQ(FileKindOf(temporary.Path()), EFileKind::Folder);
        EXPECT_EQ(folder.Names().size(), 1U);
        CTemporaryFolder missing;
        EXPECT_FALSE(missing.MakeIn(folder / "none/"));
        EXPECT_EQ(missing.Path(), "");
    }
    EXPECT_TRUE(folder.Names().empty());
}

/// While it exists, another file is the standard error.
class CErrorsTo {
public:
    explicit CErrorsTo(int descriptor) : m_before(::dup(STDERR_FILENO)) { ::dup2(descriptor, STDERR_FILENO); }
    CErrorsTo(const CErrorsTo&) = delete;
    CErrorsTo& operator=(const CErrorsTo&) = delete;
    ~CErrorsTo() {
        ::dup2(m_before, STDERR_FILENO);
        ::close(m_before);
    }

private:
    int m_before;
};

TEST(Terminal, HasTheUsualColumnsIfItDoesNotTell) {
    const int file = ::open("/dev/null", O_WRONLY);
    const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_GE(file, 0);
    ASSERT_GE(terminal, 0);
    {
        const CErrorsTo errors(file);
        EXPECT_EQ(TerminalColumns(), 80);
    }
    for (const std::uint16_t columns : {std::uint16_t{0}, std::uint16_t{132}}) {
        struct winsize size = {};
        size.ws_col = columns;
        ASSERT_EQ(::ioctl(terminal, TIOCSWINSZ, &size), 0);
        const CErrorsTo errors(terminal);
        EXPECT_EQ(TerminalColumns(), columns == 0 ? 80 : 132);
    }
    ::close(terminal);
    ::close(file);
}

}  // namespace
}  // namespace vantrel
