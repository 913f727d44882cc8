// What is reported about an image.
#include "image/inspect/image_report.h"

#include <gtest/gtest.h>

#include "tests/support/image_builder.h"
#include "tests/support/memory_source.h"

namespace vantrel {
namespace {

using test::Bytes;
using test::EImageKind;

CReport ReportOn(const Bytes& bytes) {
    test::CMemorySource image(bytes);
    return ReportOnImage(image);
}

TEST(ImageReport, NamesTheKindOfDisc) {
    test::SImageDescription description;
    for (const auto& [kind, name] :
         {std::pair{EImageKind::Cd, "PlayStation 2 CD"}, std::pair{EImageKind::Dvd, "PlayStation 2 DVD"},
          std::pair{EImageKind::Umd, "PSP UMD"}}) {
        description.kind = kind;
        EXPECT_EQ(ReportOn(test::BuildImage(description).bytes)["kind"], name);
    }
}

TEST(ImageReport, TextFieldsHaveNoControlCharacters) {
    test::SImageDescription description;
    description.volumeName = "A\x1B[2J\x7F\tB";
    EXPECT_EQ(ReportOn(test::BuildImage(description).bytes)["volume_identifier"], "A?[2J??B");
}

/// An image whose SYSTEM.CNF has so many bytes.
Bytes WithSettings(std::size_t size) {
    const std::string text = "BOOT2 = cdrom0:\\SLUS_200.62;1\n";
    Bytes content(text.begin(), text.end());
    content.resize(size, ' ');
    test::SImageDescription description;
    description.files = {{"SYSTEM.CNF", content}};
    return test::BuildImage(description).bytes;
}

TEST(ImageReport, TheDiscNumberIsThatOfAFileOfUsualLength) {
    EXPECT_EQ(ReportOn(WithSettings(65'536))["disc_id"], "SLUS-20062");
    EXPECT_EQ(ReportOn(WithSettings(65'537)).Find("disc_id"), nullptr);
}

TEST(ImageReport, AFileThatTheImageDoesNotHoldTellsNoDiscNumber) {
    Bytes cut = WithSettings(5000);
    ASSERT_EQ(ReportOn(cut)["disc_id"], "SLUS-20062");
    cut.resize(cut.size() - 2048);
    EXPECT_EQ(ReportOn(cut).Find("disc_id"), nullptr);
}

}  // namespace
}  // namespace vantrel
