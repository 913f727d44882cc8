// Forms are determined from content.
#include "image/form.h"

#include <gtest/gtest.h>

#include "files/input_file.h"
#include "tests/support/image_builder.h"
#include "tests/support/test_folder.h"

namespace vantrel {
namespace {

EForm FormOfBytes(std::string_view content) {
    const test::CTestFolder folder;
    test::WriteText(folder / "file.iso", content);
    CInputFile file;
    EXPECT_TRUE(file.Open(folder / "file.iso"));
    return FormOf(file);
}

TEST(Form, IsDeterminedFromContent) {
    using namespace std::string_view_literals;
    EXPECT_EQ(FormOfBytes("CISO...."), EForm::Cso);
    EXPECT_EQ(FormOfBytes("ZISO...."), EForm::Zso);
    EXPECT_EQ(FormOfBytes("DAX\0...."sv), EForm::Dax);
    EXPECT_EQ(FormOfBytes("DAX 1...."), EForm::Unknown);
    EXPECT_EQ(FormOfBytes("\0\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\0..."sv), EForm::Bin);
    EXPECT_EQ(FormOfBytes("[SYS]\r\n"), EForm::Iml);
    EXPECT_EQ(FormOfBytes("FILE \"game.bin\" BINARY"), EForm::Cue);
    EXPECT_EQ(FormOfBytes("REM COMMENT\r\nCATALOG 1\r\nfile game.bin BINARY"), EForm::Cue);
    EXPECT_EQ(FormOfBytes("REM COMMENT\r\necho FILE"), EForm::Unknown);
    EXPECT_EQ(FormOfBytes(""), EForm::Unknown);
    EXPECT_EQ(FormOfBytes("C"), EForm::Unknown);
    const test::SBuiltImage image = test::BuildImage({});
    EXPECT_EQ(FormOfBytes({reinterpret_cast<const char*>(image.bytes.data()), image.bytes.size()}), EForm::Iso);
    EXPECT_STREQ(NameOf(EForm::Cso), "CSO");
    EXPECT_STREQ(NameOf(EForm::Zso), "ZSO");
}

}  // namespace
}  // namespace vantrel
