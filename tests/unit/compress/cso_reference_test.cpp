// CSO against a second implementation: the same bytes for every level and length, and each reads the other's files.
#include <gtest/gtest.h>

#include "compress/cso.h"
#include "tests/support/recording_operation.h"
#include "tests/support/shell.h"
#include "tests/unit/compress/cso_support.h"

namespace vantrel {
namespace {

using test::Bytes;
using test::CTestFolder;

constexpr const char* kReference = VANTREL_SOURCE_DIR "/tests/oracle/cso_reference.py";

/// An image whose blocks compress well, not at all and to almost nothing, in turn.
Bytes MixedImage(std::size_t length) {
    Bytes image;
    for (std::uint64_t i = 0; image.size() < length; ++i) {
        const Bytes piece = i % 3 == 0   ? test::TextLikeBytes(2048, i)
                            : i % 3 == 1 ? test::RandomBytes(2048, i)
                                         : Bytes(2048, static_cast<std::uint8_t>(i));
        image.insert(image.end(), piece.begin(), piece.end());
    }
    image.resize(length);
    return image;
}

void Reference(const std::vector<std::string>& arguments) {
    std::vector<std::string> words = {"python3", kReference};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::string output;
    ASSERT_EQ(test::RunProgram(words, &output), 0) << output;
}

SCompressionRequest Strict(const std::string& input, const std::string& output, int level) {
    return DirectConversion(input, output, EOutputManner::CommitReplace, 2, level);
}

/// The same for strict conversions, which keep a partial last block.
void CompareStrict(const CTestFolder& folder, const Bytes& image, int level) {
    test::CRecordingOperation operation;
    SCompressionRequest request = Strict(folder / "game.iso", folder / "strict.cso", level);
    request.chosenPath = folder / "game.mark.iso";
    IsoToCso(request, operation);
    Reference({"compress", std::to_string(level), "padded", folder / "game.iso", folder / "reference.cso"});
    EXPECT_EQ(test::ReadWhole(folder / "strict.cso"), test::ReadWhole(folder / "reference.cso"));

    Reference({"expand", folder / "strict.cso", folder / "reference.iso"});
    EXPECT_EQ(test::ReadWhole(folder / "reference.iso"), image);
    Reference({"compress", std::to_string(level), "rest", folder / "game.iso", folder / "reference.cso"});
    for (const char* name : {"strict.cso", "reference.cso"}) {
        CsoToIso(Strict(folder / name, folder / "strict.iso", level), operation);
        EXPECT_EQ(test::ReadWhole(folder / "strict.iso"), image) << name;
    }
}

void CompareBoth(const Bytes& image, int level) {
    SCOPED_TRACE(std::to_string(image.size()) + " bytes at level " + std::to_string(level));
    const CTestFolder folder;
    test::CRecordingOperation operation;
    IsoToCso(test::WithLevel(test::CompressionOf(folder, image, ".cso"), level), operation);
    Reference({"compress", std::to_string(level), "dropped", folder / "game.iso", folder / "reference.cso"});
    EXPECT_EQ(test::ReadWhole(folder / "game.cso"), test::ReadWhole(folder / "reference.cso"));

    const Bytes whole(image.begin(), image.begin() + static_cast<std::ptrdiff_t>(image.size() / 2048 * 2048));
    Reference({"expand", folder / "game.cso", folder / "reference.iso"});
    EXPECT_EQ(test::ReadWhole(folder / "reference.iso"), whole);
    if (!image.empty()) {
        CsoToIso(test::WithLevel(WindowExpansion(folder.Path(), "reference.cso")), operation);
        EXPECT_EQ(test::ReadWhole(folder / "new-reference.iso"), whole);
        CompareStrict(folder, image, level);
    }
}

TEST(CsoReference, EveryLevel) {
    for (int level = 1; level <= 9; ++level) {
        CompareBoth(MixedImage(2048 * 40 + 17), level);
    }
}

TEST(CsoReference, EveryLength) {
    for (const std::size_t blocks : {0, 1, 2, 3, 99, 100, 101, 250}) {
        CompareBoth(MixedImage(blocks * 2048), 9);
        CompareBoth(MixedImage(blocks * 2048 + 1), 9);
        CompareBoth(MixedImage(blocks * 2048 + 2047), 9);
    }
}

}  // namespace
}  // namespace vantrel
