// The texts for allocations that fail.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "compress/cso.h"
#include "compress/dax.h"
#include "files/refused.h"
#include "image/conversion.h"
#include "tests/support/failing_allocations.h"
#include "tests/support/image_builder.h"
#include "tests/support/recording_operation.h"

namespace vantrel {
namespace {

using test::Bytes;
using test::g_allocationsLeft;
using testing::ThrowsMessage;

class ImageMemory : public testing::Test {
protected:
    ImageMemory() {
        test::SImageDescription description;
        description.kind = test::EImageKind::Umd;
        description.files = {{"A.BIN", test::TextLikeBytes(9'000, 1)}};
        test::WriteWhole(m_folder / "game.iso", test::BuildImage(description).bytes);
        IsoToCso(Request("game.cso"), m_operation);
        IsoToDax(Request("game.dax"), m_operation);
    }
    ~ImageMemory() override { g_allocationsLeft = -1; }

    SCompressionRequest Request(const char* output) const {
        return DirectConversion(m_folder / "game.iso", m_folder / output, EOutputManner::CommitNew, 0, 9);
    }

    void ExpectNoTable(const char* name, int allocations, const std::string& text) {
        g_allocationsLeft = allocations;
        EXPECT_THAT([&] { OpenImage(m_folder / name); }, ThrowsMessage<CRefused>((m_folder / name) + ": " + text));
        g_allocationsLeft = -1;
    }

    test::CTestFolder m_folder;
    test::CRecordingOperation m_operation;
};

TEST_F(ImageMemory, ATableThatDoesNotFitIsReported) {
    ExpectNoTable("game.cso", 0, "there is not enough memory for the index");
    ExpectNoTable("game.dax", 0, "there is not enough memory for the tables");
    ExpectNoTable("game.dax", 1, "there is not enough memory for the tables");
}

TEST_F(ImageMemory, ABlockThatDoesNotFitIsReported) {
    for (const auto& [name, block] : {std::pair{"game.cso", "block"}, std::pair{"game.dax", "frame"}}) {
        const auto image = OpenImage(m_folder / name);
        Bytes buffer(10);
        g_allocationsLeft = 0;
        EXPECT_THAT([&] { image->ReadAt(0, buffer); },
                    ThrowsMessage<CRefused>((m_folder / name) + ": not enough memory for a " + block));
        g_allocationsLeft = -1;
        EXPECT_EQ(image->ReadAt(0, buffer), buffer.size());
    }
}

TEST_F(ImageMemory, AConversionThatDoesNotFitLeavesNothing) {
    const auto image = OpenImage(m_folder / "game.cso");
    const std::string input = m_folder / "game.cso";
    const SImageConversion conversion = {input, *image, EForm::Iso, m_folder / "output.iso"};
    const std::vector<std::string> before = m_folder.Names();
    int failures = 0;
    for (int allocations = 0; failures == allocations; ++allocations) {
        g_allocationsLeft = allocations;
        const std::string failure = test::FailureOf([&] { ConvertImage(conversion, m_operation); });
        g_allocationsLeft = -1;
        if (failure != "did not fail") {
            ++failures;
            EXPECT_EQ(failure, "Not enough memory to read " + input);
            EXPECT_EQ(m_folder.Names(), before);
        }
    }
    EXPECT_EQ(failures, 2) << "the part of the image, and what is stored of it";
    EXPECT_EQ(test::ReadWhole(m_folder / "output.iso"), test::ReadWhole(m_folder / "game.iso"));
}

}  // namespace
}  // namespace vantrel
