// Folders that are made for outputs.
#include "files/new_folders.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>

#include "files/native_file.h"
#include "files/path.h"
#include "tests/support/test_folder.h"

namespace vantrel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(NewFolders, MakesMissingParentsAndRemovesWhatStaysEmpty) {
    const test::CTestFolder folder;
    const std::string deep = WithSeparator(WithSeparator(folder / "a") + "b") + "c";
    std::optional<CNewFolders> folders(std::in_place);
    EXPECT_TRUE(folders->Make(WithSeparator(deep)));
    EXPECT_EQ(FileKindOf(deep), EFileKind::Folder);
    EXPECT_TRUE(folders->Make(deep)) << "it exists now";
    folders.reset();
    EXPECT_THAT(folder.Names(), IsEmpty());
}

TEST(NewFolders, KeepsFoldersWithFilesAndOlderFolders) {
    const test::CTestFolder folder;
    const std::string older = folder / "older";
    ASSERT_TRUE(MakeFolder(older));
    {
        CNewFolders folders;
        EXPECT_TRUE(folders.Make(older));
        EXPECT_TRUE(folders.Make(folder / "new"));
        test::WriteText(WithSeparator(folder / "new") + "file", "");
    }
    EXPECT_THAT(folder.Names(), ElementsAre("new", "older"));
}

TEST(NewFolders, AFileInTheWayIsAProblem) {
    const test::CTestFolder folder;
    test::WriteText(folder / "file", "");
    CNewFolders folders;
    EXPECT_FALSE(folders.Make(WithSeparator(folder / "file") + "sub"));
    EXPECT_THAT(folders.Problem(), testing::StartsWith("Cannot create the folder " + (folder / "file") + ": "));
}

}  // namespace
}  // namespace vantrel
