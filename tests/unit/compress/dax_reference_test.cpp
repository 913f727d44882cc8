// DAX against a second implementation: the same bytes for every level and length, and each reads the other's files.
#include <gtest/gtest.h>

#include "compress/dax.h"
#include "tests/support/recording_operation.h"
#include "tests/support/shell.h"
#include "tests/unit/compress/cso_support.h"

namespace vantrel {
namespace {

using test::Bytes;
using test::CTestFolder;

constexpr const char* kReference = VANTREL_SOURCE_DIR "/tests/oracle/dax_reference.py";
constexpr std::size_t kFrame = 8192;

/// An image whose frames compress not at all, well and to almost nothing, in turn.
Bytes MixedImage(std::size_t length) {
    Bytes image;
    for (std::uint64_t i = 0; image.size() < length; ++i) {
        const Bytes piece = i % 3 == 0   ? test::RandomBytes(kFrame, i)
                            : i % 3 == 1 ? test::TextLikeBytes(kFrame, i)
                                         : Bytes(kFrame, static_cast<std::uint8_t>(i));
        const auto wanted = std::min(kFrame, length - image.size());
        image.insert(image.end(), piece.begin(), piece.begin() + static_cast<std::ptrdiff_t>(wanted));
    }
    return image;
}

void Reference(const std::vector<std::string>& arguments) {
    std::vector<std::string> words = {"python3", kReference};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::string output;
    ASSERT_EQ(test::RunProgram(words, &output), 0) << output;
}

void CompareBoth(const Bytes& image, int level) {
    SCOPED_TRACE(std::to_string(image.size()) + " bytes at level " + std::to_string(level));
    const CTestFolder folder;
    test::CRecordingOperation operation;
    IsoToDax(test::WithLevel(test::CompressionOf(folder, image, ".dax"), level), operation);
    Reference({"compress", std::to_string(level), folder / "game.iso", folder / "reference.dax"});
    EXPECT_EQ(test::ReadWhole(folder / "game.dax"), test::ReadWhole(folder / "reference.dax"));

    Reference({"expand", folder / "game.dax", folder / "reference.iso"});
    EXPECT_EQ(test::ReadWhole(folder / "reference.iso"), image);
    DaxToIso(WindowDaxExpansion(folder.Path(), "reference.dax"), operation);
    EXPECT_EQ(test::ReadWhole(folder / "new-reference.iso"), image);
}

TEST(DaxReference, EveryLevel) {
    for (int level = 1; level <= 9; ++level) {
        CompareBoth(MixedImage(12 * kFrame + 17), level);
    }
}

TEST(DaxReference, EveryLength) {
    for (const std::size_t length :
         {std::size_t{0}, std::size_t{1}, kFrame - 1, kFrame, kFrame + 1, 5 * kFrame, 40 * kFrame + 2048}) {
        CompareBoth(MixedImage(length), 9);
    }
}

}  // namespace
}  // namespace vantrel
