// The converter program: arguments, progress, contents, refused images.
#include "raw/converter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "files/native_file.h"
#include "raw/raw_sector.h"
#include "tests/support/raw_sector_check.h"
#include "tests/support/shell.h"
#include "tests/unit/raw/raw_support.h"

namespace vantrel {
namespace {

using test::Bytes;
using test::CTestFolder;
using testing::ElementsAre;
using testing::HasSubstr;

struct SRun {
    EConverterExit status;
    std::string progress;
    std::string errors;
};

SRun Convert(const std::vector<std::string>& arguments) {
    std::ostringstream progress;
    std::ostringstream errors;
    const EConverterExit status = RunConverter(arguments, progress, errors);
    return {status, progress.str(), errors.str()};
}

void ExpectReference(const CTestFolder& folder, const char* mode, const char* postgap) {
    std::string output;
    ASSERT_EQ(test::RunProgram({"python3", VANTREL_SOURCE_DIR "/tests/oracle/raw_reference.py", "expand", mode, postgap,
                                folder / "in.iso", folder / "reference"},
                               &output),
              0)
        << output;
    EXPECT_EQ(test::ReadWhole(folder / "out.bin"), test::ReadWhole(folder / "reference"));
    EXPECT_EQ(test::FaultOfRawImage(test::ReadWhole(folder / "out.bin")), "");
}

TEST(Converter, ConvertsInBothModesWithAndWithoutPostgap) {
    const CTestFolder folder;
    test::WriteWhole(folder / "in.iso", test::RandomBytes(10 * kUserDataSize, 1));
    test::WriteWhole(folder / "out.bin", Bytes(1'000'000, 'o'));  // an older file, which is longer
    EXPECT_EQ(Convert({folder / "in.iso", folder / "out.bin"}).status, EConverterExit::Done);
    ExpectReference(folder, "1", "0");
    EXPECT_EQ(Convert({folder / "in.iso", folder / "out.bin", "/mode2"}).status, EConverterExit::Done);
    ExpectReference(folder, "2", "0");
    EXPECT_EQ(Convert({folder / "in.iso", folder / "out.bin", "/PostGap", "/MODE2"}).status, EConverterExit::Done);
    ExpectReference(folder, "2", "150");
    EXPECT_EQ(Convert({folder / "in.iso", folder / "out.bin", "/POSTGAP"}).status, EConverterExit::Done);
    ExpectReference(folder, "1", "150");
}

TEST(Converter, ConvertsAnyNumberOfPieces) {
    for (const std::size_t sectors : {0, 1, 255, 256, 257, 512, 2049}) {
        const CTestFolder folder;
        test::WriteWhole(folder / "in.iso", test::RandomBytes(sectors * kUserDataSize, sectors));
        EXPECT_EQ(Convert({folder / "in.iso", folder / "out.bin", "/mode2", "/postgap"}).status, EConverterExit::Done);
        const Bytes raw = test::ReadWhole(folder / "out.bin");
        EXPECT_EQ(raw.size(), (sectors + 150) * kRawSectorSize);
        EXPECT_EQ(test::FaultOfRawImage(raw), "") << sectors;
        Bytes data;
        for (std::size_t at = 0; at < sectors * kRawSectorSize; at += kRawSectorSize) {
            const auto begin = raw.begin() + static_cast<std::ptrdiff_t>(at + kForm1DataOffset);
            data.insert(data.end(), begin, begin + kUserDataSize);
        }
        EXPECT_EQ(data, test::ReadWhole(folder / "in.iso")) << sectors;
    }
}

TEST(Converter, PrintsItsProgress) {
    const CTestFolder folder;
    test::WriteWhole(folder / "in.iso", Bytes(4 * 256 * kUserDataSize, 1));
    const SRun run = Convert({folder / "in.iso", folder / "out.bin", "/mode2"});
    EXPECT_EQ(run.progress, "\r 25% completed.\r 50% completed.\r 75% completed.\r 100% completed.\n");
    EXPECT_EQ(run.errors, "");
}

TEST(Converter, PrintsEachPercentageOnce) {
    const CTestFolder folder;
    CNativeFile image;
    ASSERT_TRUE(image.Open(folder / "in.iso", EOpenMode::CreateNew, ESharing::Anyone));
    ASSERT_TRUE(image.Resize(static_cast<std::int64_t>(150 * 256 * kUserDataSize)));
    image.Close();
    const SRun run = Convert({folder / "in.iso", folder / "out.bin", "/mode2"});
    std::string expected;
    for (int percent = 1; percent <= 100; ++percent) {
        expected += "\r " + std::to_string(percent) + "% completed.";
    }
    EXPECT_EQ(run.progress, expected + "\n");
}

TEST(Converter, PrintsItsUsageForWrongArguments) {
    const CTestFolder folder;
    test::WriteWhole(folder / "in.iso", Bytes(kUserDataSize, 1));
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{},
                                                      {folder / "in.iso"},
                                                      {folder / "in.iso", folder / "out.bin", "/mode3"},
                                                      {folder / "in.iso", folder / "out.bin", "/mode2", "more"}}) {
        const SRun run = Convert(arguments);
        EXPECT_EQ(run.status, EConverterExit::Usage);
        EXPECT_THAT(run.errors, HasSubstr("usage: tmpfile INPUT OUTPUT [/MODE2] [/POSTGAP]\n"));
    }
    EXPECT_THAT(folder.Names(), ElementsAre("in.iso"));
}

TEST(Converter, ConvertsTheWholeSectors) {
    const CTestFolder folder;
    const Bytes image(2 * kUserDataSize, 1);
    test::WriteWhole(folder / "whole.iso", image);
    ASSERT_EQ(Convert({folder / "whole.iso", folder / "whole.bin", "/mode2"}).status, EConverterExit::Done);
    for (const std::size_t rest : {std::size_t{1}, std::size_t{2047}}) {
        Bytes longer = image;
        longer.resize(image.size() + rest, 7);
        test::WriteWhole(folder / "in.iso", longer);
        EXPECT_EQ(Convert({folder / "in.iso", folder / "out.bin", "/mode2"}).status, EConverterExit::Done);
        EXPECT_EQ(test::ReadWhole(folder / "out.bin"), test::ReadWhole(folder / "whole.bin"));
    }
}

TEST(Converter, KeepsTheOutputIfTheInputIsRefused) {
    const CTestFolder folder;
    test::WriteText(folder / "out.bin", "older");
    SRun run = Convert({folder / "missing.iso", folder / "out.bin"});
    EXPECT_EQ(run.status, EConverterExit::Failed);
    EXPECT_THAT(run.errors, HasSubstr("tmpfile: Cannot open " + (folder / "missing.iso") + ": "));
    test::WriteWhole(folder / "in.iso", Bytes(kUserDataSize, 1));
    CNativeFile large;
    ASSERT_TRUE(large.Open(folder / "in.iso", EOpenMode::ReadWrite, ESharing::Anyone));
    ASSERT_TRUE(large.Resize((std::int64_t{kMostRawSectors} - 149) * 2048));
    run = Convert({folder / "in.iso", folder / "out.bin", "/postgap"});
    EXPECT_EQ(run.status, EConverterExit::Failed);
    EXPECT_THAT(run.errors, HasSubstr("is too long for a CD: addresses end at 99:59:74, after 449850 sectors\n"));
    EXPECT_EQ(test::ReadText(folder / "out.bin"), "older");
}

TEST(Converter, RefusesItsInputAsOutput) {
    const CTestFolder folder;
    test::WriteWhole(folder / "in.iso", Bytes(kUserDataSize, 1));
    const SRun run = Convert({folder / "in.iso", folder / "in.iso"});
    EXPECT_EQ(run.status, EConverterExit::Failed);
    EXPECT_THAT(run.errors, HasSubstr("tmpfile: Input and output are the same file\n"));
    EXPECT_EQ(test::ReadWhole(folder / "in.iso"), Bytes(kUserDataSize, 1));
}

#ifdef __linux__
TEST(Converter, ReportsFailedWrites) {
    const CTestFolder folder;
    test::WriteWhole(folder / "in.iso", Bytes(kUserDataSize, 1));
    SRun run = Convert({folder / "in.iso", "/dev/full"});
    EXPECT_EQ(run.status, EConverterExit::Failed);
    EXPECT_THAT(run.errors, HasSubstr("Cannot write /dev/full: "));
    run = Convert({folder / "in.iso", folder / "no folder/out.bin"});
    EXPECT_EQ(run.status, EConverterExit::Failed);
    EXPECT_THAT(run.errors, HasSubstr("Cannot create " + (folder / "no folder/out.bin") + ": "));
}
#endif

}  // namespace
}  // namespace vantrel
