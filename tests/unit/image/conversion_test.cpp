// The comparison of an output with its image before the output gets its name.
#include "image/conversion.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/recording_operation.h"
#include "tests/support/test_folder.h"

namespace vantrel {
namespace {

using test::Bytes;

constexpr std::size_t kChanging = 50'000;  ///< position of the byte that changes

/// An image of which a byte is another one as soon as its end has been read.
class CChangingImage : public CImageSource {
public:
    explicit CChangingImage(bool changes) : m_changes(changes) {}

    EForm Form() const override { return EForm::Iso; }
    std::uint32_t BlockSize() const override { return 1; }
    const char* BlockNoun() const override { return "sector"; }
    const std::string& Fault() const override { return ReadProblem(); }
    std::int64_t Size() const override { return static_cast<std::int64_t>(m_bytes.size()); }

    std::size_t ReadAt(std::int64_t position, std::span<std::uint8_t> buffer) override {
        const auto start = static_cast<std::size_t>(std::min(position, Size()));
        const std::size_t count = std::min(buffer.size(), m_bytes.size() - start);
        std::copy_n(m_bytes.begin() + static_cast<std::ptrdiff_t>(start), count, buffer.begin());
        if (m_changes && start + count == m_bytes.size()) {
            m_bytes[kChanging] = 0xFF;
        }
        return count;
    }

private:
    Bytes m_bytes = Bytes(200 * 2048, 1);
    bool m_changes;
};

class ReadBack : public testing::TestWithParam<EForm> {
protected:
    std::string Failure(bool changes) {
        CChangingImage image(changes);
        test::CRecordingOperation operation;
        SImageConversion conversion = {"game", image, GetParam(), m_folder / "output.bin"};
        conversion.readBack = true;
        return test::FailureOf([&] { ConvertImage(conversion, operation); });
    }

    test::CTestFolder m_folder;
};

TEST_P(ReadBack, AnOutputThatDiffersGetsNoName) {
    EXPECT_EQ(Failure(true), (m_folder / "output.bin") + ": the output reads back differently from byte " +
                                 std::to_string(kChanging) + " on");
    EXPECT_TRUE(m_folder.Names().empty());
    EXPECT_EQ(Failure(false), "did not fail");
    EXPECT_FALSE(m_folder.Names().empty());
}

INSTANTIATE_TEST_SUITE_P(Forms, ReadBack, testing::Values(EForm::Iso, EForm::Bin, EForm::Cso, EForm::Zso, EForm::Dax),
                         [](const auto& form) { return std::string(NameOf(form.param)); });

}  // namespace
}  // namespace vantrel
