// The comparison of an output with its image before the output gets its name.
#include "image/conversion.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/recording_operation.h"
#include "tests/support/test_folder.h"

namespace vantrel {
namespace {

using test::Bytes;

constexpr std::size_t kChanging = 50'000;  ///< position of the byte that changes
constexpr std::size_t kCut = 199 * 2048;   ///< length of an image that has lost its end

/// What happens to an image as soon as its end has been read.
enum class EChange { None, Byte, Cut };

class CChangingImage : public CImageSource {
public:
    explicit CChangingImage(EChange change) : m_change(change) {}

    EForm Form() const override { return EForm::Iso; }
    std::uint32_t BlockSize() const override { return 1; }
    const char* BlockNoun() const override { return "sector"; }
    const std::string& Fault() const override { return ReadProblem(); }
    std::int64_t Size() const override { return static_cast<std::int64_t>(m_bytes.size()); }

    std::size_t ReadAt(std::int64_t position, std::span<std::uint8_t> buffer) override {
        const std::size_t start = std::min(static_cast<std::size_t>(position), m_bytes.size());
        const std::size_t count = std::min(buffer.size(), m_bytes.size() - start);
        std::copy_n(m_bytes.begin() + static_cast<std::ptrdiff_t>(start), count, buffer.begin());
        if (m_change == EChange::Byte && start + count == m_bytes.size()) {
            m_bytes[kChanging] = 0xFF;
        }
        if (m_change == EChange::Cut && start + count == m_bytes.size()) {
            m_bytes.resize(kCut);
        }
        return count;
    }

private:
    Bytes m_bytes = Bytes(200 * 2048, 1);
    EChange m_change;
};

class ReadBack : public testing::TestWithParam<EForm> {
protected:
    std::string Failure(EChange change) {
        CChangingImage image(change);
        test::CRecordingOperation operation;
        SImageConversion conversion = {"game", image, GetParam(), m_folder / "output.bin"};
        conversion.readBack = true;
        return test::FailureOf([&] { ConvertImage(conversion, operation); });
    }

    test::CTestFolder m_folder;
};

TEST_P(ReadBack, AnOutputThatDiffersGetsNoName) {
    for (const auto& [change, position] : {std::pair{EChange::Byte, kChanging}, std::pair{EChange::Cut, kCut}}) {
        EXPECT_EQ(Failure(change), (m_folder / "output.bin") + ": the output reads back differently from byte " +
                                       std::to_string(position) + " on");
        EXPECT_TRUE(m_folder.Names().empty());
    }
    EXPECT_EQ(Failure(EChange::None), "did not fail");
    EXPECT_FALSE(m_folder.Names().empty());
}

INSTANTIATE_TEST_SUITE_P(Forms, ReadBack, testing::Values(EForm::Iso, EForm::Bin, EForm::Cso, EForm::Zso, EForm::Dax),
                         [](const auto& form) { return std::string(NameOf(form.param)); });

/// An image that has lost its end since its length was asked for, and names other tracks.
class CCutImage : public CChangingImage {
public:
    CCutImage() : CChangingImage(EChange::None) {}

    std::int64_t Size() const override { return CChangingImage::Size() + 2048; }
    std::vector<std::string> OtherParts() const override { return {"track 2 is left out", "track 3 is left out"}; }
};

TEST(Conversion, AnImageThatEndsEarlyGivesNoOutput) {
    const test::CTestFolder folder;
    CCutImage image;
    test::CRecordingOperation operation;
    const SImageConversion conversion = {"game.iso", image, EForm::Iso, folder / "output.iso"};
    EXPECT_EQ(test::FailureOf([&] { ConvertImage(conversion, operation); }),
              "Cannot read game.iso: unexpected end of file");
    EXPECT_TRUE(folder.Names().empty());
}

TEST(Conversion, EveryPartThatIsLeftOutHasALine) {
    test::CRecordingOperation operation;
    WarnOfOtherParts(CCutImage(), "game.cue", operation);
    EXPECT_THAT(operation.Calls(),
                testing::ElementsAre("notify game.cue: track 2 is left out\ngame.cue: track 3 is left out"));
}

}  // namespace
}  // namespace vantrel
