// Images of every form, and disc databases, whose file cannot be read: each failure is reported, and damage is named.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "compress/cso_header.h"
#include "compress/dax_header.h"
#include "files/refused.h"
#include "image/conversion.h"
#include "image/image_chunks.h"
#include "image/inspect/dat_file.h"
#include "tests/support/recording_operation.h"
#include "tests/unit/faults/fault_sweep.h"
#include "tests/unit/faults/game_files.h"

namespace vantrel::test {
namespace {

using testing::Contains;
using testing::Each;
using testing::Not;

class ImageFaults : public testing::Test {
protected:
    /// The problems that `read` returns or throws, one for each failing call. Closing a file that is only read, reading
    /// at its end and examining its path may fail without a problem.
    std::vector<std::string> Problems(const std::function<std::string()>& read) {
        std::string problem;
        std::vector<std::string> problems;
        const auto run = [&] {
            try {
                problem = read();
            } catch (const CRefused& refused) {
                problem = refused.what();
            }
        };
        SweepFaults(m_folder, {}, run, [&](const SFault& fault) {
            const ECall kind = fault.call.kind;
            if (fault.number == 0) {
                EXPECT_EQ(problem, "");
            } else if (kind != ECall::Close && kind != ECall::ReadEnd && kind != ECall::Look) {
                problems.push_back(problem);
            }
        });
        EXPECT_THAT(problems, Each(Not("")));
        return problems;
    }

    /// What opening a file that is larger than the buffers of the file layer reports.
    std::vector<std::string> ProblemsOfOpening(const char* name, std::span<const std::uint8_t> header) {
        Bytes file(header.begin(), header.end());
        file.resize(500'000);
        WriteWhole(m_folder / name, file);
        return Problems([&] { return OpenImage(m_folder / name)->ReadProblem(); });
    }

    /// Writes game.bin, and returns the image in it.
    Bytes WriteRaw() {
        WriteUmd(m_folder);
        CRecordingOperation operation;
        const auto image = OpenImage(m_folder / "game.iso");
        ConvertImage({m_folder / "game.iso", *image, EForm::Bin, m_folder / "game.bin"}, operation);
        return ReadWhole(m_folder / "game.iso");
    }

    CTestFolder m_folder;
};

TEST_F(ImageFaults, TablesThatCannotBeReadAreReported) {
    CsoHeader cso;
    cso.total_bytes = 70'000 * 2048;
    EXPECT_THAT(ProblemsOfOpening("a.cso", cso.Encode()),
                Contains((m_folder / "a.cso") + ": the index cannot be read"));
    DaxHeader dax;
    dax.image_size = 70'000 * 8192;
    EXPECT_THAT(ProblemsOfOpening("a.dax", dax.Encode()),
                Contains((m_folder / "a.dax") + ": the tables cannot be read"));
}

TEST_F(ImageFaults, DatabasesThatCannotBeReadAreReported) {
    WriteText(m_folder / "a.dat", "<datafile/>");
    EXPECT_THAT(Problems([&] { return CDatFile(m_folder / "a.dat").Find({}) == nullptr ? "" : "found"; }),
                Contains("Cannot read " + (m_folder / "a.dat") + ": " + SystemText(EFailure::Device)));
}

/// The sector that lies behind the buffer of the file layer, which is filled by one call.
constexpr std::size_t kUnbuffered = 262'144 / 2352;

TEST_F(ImageFaults, ARawSectorThatCannotBeReadIsNamed) {
    const Bytes image = WriteRaw();
    const std::vector<std::string> problems = Problems([&] {
        const auto raw = OpenImage(m_folder / "game.bin");
        Bytes bytes(image.size());
        bytes.resize(raw->ReadAt(0, bytes));
        EXPECT_TRUE(std::equal(bytes.begin(), bytes.end(), image.begin()));
        EXPECT_EQ(bytes.size() == image.size(), raw->ReadProblem().empty());
        return raw->ReadProblem();
    });
    EXPECT_THAT(problems, Contains((m_folder / "game.bin") + ": damaged sector " + std::to_string(kUnbuffered) +
                                   ": it cannot be read"));
}

TEST_F(ImageFaults, VerifyingARawFileGoesOnBehindASectorThatCannotBeRead) {
    Bytes image = WriteRaw();
    bool wasUnreadable = false;
    Problems([&]() -> std::string {
        const auto chunks = OpenImage(m_folder / "game.bin")->Chunks();
        SImageChunk chunk;
        chunk.buffer.resize(chunks->BufferSize());
        chunks->Read(chunk, 0);
        EXPECT_EQ(chunks->Count(), 1U);
        Bytes expected = image;
        if (chunk.unreadable.empty()) {
            EXPECT_TRUE(std::ranges::equal(chunk.Bytes(), expected));
            return {};
        }
        wasUnreadable = true;
        EXPECT_EQ(chunk.unreadable.size(), 1U);
        EXPECT_EQ(chunk.unreadable[0].number, kUnbuffered);
        EXPECT_EQ(chunk.unreadable[0].text, "it cannot be read");
        EXPECT_TRUE(chunk.wrong.empty());
        const auto start = expected.begin() + static_cast<std::ptrdiff_t>(kUnbuffered * 2048);
        expected.erase(start, start + 2048);
        EXPECT_TRUE(std::ranges::equal(chunk.Bytes(), expected));
        return chunk.unreadable[0].text;
    });
    EXPECT_TRUE(wasUnreadable);
}

}  // namespace
}  // namespace vantrel::test
