// Conversion of raw images to plain ones: order of calls, texts, partial sectors, refused images.
#include "raw/bin_to_iso.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "raw/sector.h"
#include "tests/support/recording_operation.h"
#include "tests/support/test_folder.h"

namespace vantrel {
namespace {

using test::Bytes;
using test::CRecordingOperation;
using test::CTestFolder;
using test::FailureOf;
using testing::ElementsAre;
using testing::IsEmpty;

/// A raw sector with sync field and mode; everything else is noise.
Bytes RawSector(std::uint8_t mode, std::uint64_t seed) {
    Bytes sector = test::RandomBytes(2352, seed);
    std::fill(sector.begin(), sector.begin() + 12, std::uint8_t{0xFF});
    sector[0] = sector[11] = 0;
    sector[15] = mode;
    return sector;
}

/// Correct Mode 2 Form 1 sectors with random user data.
Bytes RawSectors(std::size_t count) {
    Bytes raw(count * kRawSectorSize);
    for (std::size_t i = 0; i < count; ++i) {
        const Bytes data = test::RandomBytes(kUserDataSize, i);
        EncodeSector(ESectorMode::Mode2Form1, static_cast<std::uint32_t>(i),
                     std::span<const std::uint8_t, kUserDataSize>(data),
                     std::span(raw).subspan(i * kRawSectorSize).first<kRawSectorSize>());
    }
    return raw;
}

/// The 2048 bytes at offset 24 of each whole sector.
Bytes DataOf(const Bytes& raw) {
    Bytes data;
    for (std::size_t at = 0; at + 2352 <= raw.size(); at += 2352) {
        const auto begin = raw.begin() + static_cast<std::ptrdiff_t>(at + 24);
        data.insert(data.end(), begin, begin + 2048);
    }
    return data;
}

/// "game.bin" into "out.iso".
SBinToIsoRequest RequestFor(const CTestFolder& folder, bool strict) {
    return {folder / "game.bin", folder / "out.iso", strict ? EOutputManner::CommitNew : EOutputManner::InPlace,
            strict};
}

TEST(BinToIso, CallsComeInOrder) {
    const CTestFolder folder;
    test::WriteWhole(folder / "game.bin", RawSectors(2));
    CRecordingOperation operation;
    BinToIso(WindowBinToIso(folder.Path(), "game.bin"), operation);
    EXPECT_THAT(operation.Calls(),
                ElementsAre("begin bin2iso", "pane FILE " + (folder / "game.bin"),
                            "pane STATUS Converting bin2iso, please Wait", "total 2",         //
                            "pane PERCENT 50%", "done 1", "pane BYTES 2048 bytes", "yield",   //
                            "pane PERCENT 100%", "done 2", "pane BYTES 4096 bytes", "yield",  //
                            "pane FILE " + (folder / "new-game.iso"), "pane STATUS Converted bin2iso done !",
                            "complete Conversion bin2iso Done !", "completed"));
    EXPECT_EQ(test::ReadWhole(folder / "new-game.iso"), DataOf(RawSectors(2)));
}

TEST(BinToIso, ConvertsAnyNumberOfPieces) {
    for (const std::size_t sectors : {1, 255, 256, 257, 512, 2500}) {
        for (const bool strict : {false, true}) {
            const CTestFolder folder;
            const Bytes raw = RawSectors(sectors);
            test::WriteWhole(folder / "game.bin", raw);
            CRecordingOperation operation;
            BinToIso(RequestFor(folder, strict), operation);
            EXPECT_EQ(test::ReadWhole(folder / "out.iso"), DataOf(raw)) << sectors;
            EXPECT_EQ(operation.CallsOf("total"), std::vector{"total " + std::to_string(sectors)});
            EXPECT_EQ(operation.CallsOf("yield").size(), strict ? (sectors + 255) / 256 : sectors)
                << "the window shows every sector, the console program every piece";
            EXPECT_EQ(operation.CallsOf("done").back(), "done " + std::to_string(sectors));
            EXPECT_EQ(operation.PaneText(EPane::Percent), "100%");
        }
    }
}

TEST(BinToIso, IgnoresAPartialLastSector) {
    for (const std::size_t rest : {1, 24, 2000, 2351}) {
        const CTestFolder folder;
        Bytes raw = RawSectors(3);
        raw.resize(raw.size() + rest, 7);
        test::WriteWhole(folder / "my.game.bin", raw);
        CRecordingOperation operation;
        BinToIso(WindowBinToIso(folder.Path(), "my.game.bin"), operation);
        EXPECT_EQ(test::ReadWhole(folder / "new-my.iso"), DataOf(RawSectors(3)));
        EXPECT_THAT(operation.CallsOf("notify"), IsEmpty()) << "only a strict conversion reports it";
        SBinToIsoRequest request = {folder / "my.game.bin", folder / "out.iso", EOutputManner::CommitNew, true};
        const std::string problem = (folder / "my.game.bin") +
                                    ": not whole sectors of 2352 bytes: " + std::to_string(rest) +
                                    " bytes are left over";
        EXPECT_EQ(FailureOf([&] { BinToIso(request, operation); }), problem);
        EXPECT_THAT(folder.Names(), ElementsAre("my.game.bin", "new-my.iso"));
        request.ignoreErrors = true;
        BinToIso(request, operation);
        EXPECT_EQ(test::ReadWhole(folder / "out.iso"), DataOf(RawSectors(3)));
        EXPECT_THAT(operation.CallsOf("notify"), ElementsAre("notify " + problem));
    }
}

TEST(BinToIso, AStrictConversionNamesDamagedSectorsOfAllPieces) {
    const CTestFolder folder;
    Bytes raw = RawSectors(700);
    for (const std::size_t sector : {0, 255, 256, 257, 699}) {
        raw[sector * kRawSectorSize + 1000] ^= 1;
    }
    test::WriteWhole(folder / "game.bin", raw);
    CRecordingOperation operation;
    const std::string path = folder / "game.bin";
    EXPECT_EQ(FailureOf([&] { BinToIso(RequestFor(folder, true), operation); }),
              path + ": sector 0: wrong EDC\n" + path + ": sectors 255 to 257: wrong EDC\n" + path +
                  ": sector 699: wrong EDC");
    EXPECT_THAT(folder.Names(), ElementsAre("game.bin"));
    BinToIso(RequestFor(folder, false), operation);
    EXPECT_EQ(test::ReadWhole(folder / "out.iso"), DataOf(raw)) << "the window does not check";
}

TEST(BinToIso, ChecksTheFirstSectorOnly) {
    const CTestFolder folder;
    Bytes raw = RawSector(2, 1);
    const Bytes second = RawSector(1, 2);
    raw.insert(raw.end(), second.begin(), second.end());
    raw.insert(raw.end(), 2352, 0x55);
    test::WriteWhole(folder / "game.bin", raw);
    test::WriteText(folder / "new-game.iso", "an older, longer file" + std::string(10'000, '!'));
    CRecordingOperation operation;
    BinToIso(WindowBinToIso(folder.Path(), "game.bin"), operation);
    EXPECT_EQ(test::ReadWhole(folder / "new-game.iso"), DataOf(raw));
}

TEST(BinToIso, RefusesOtherImages) {
    const Bytes good = RawSector(2, 1);
    std::vector<Bytes> refused = {
        {}, Bytes(good.begin(), good.begin() + 15), RawSector(1, 1), RawSector(0, 1), RawSector(3, 1)};
    for (std::size_t i = 0; i < 12; ++i) {
        refused.push_back(good);
        refused.back()[i] ^= 1;
    }
    for (const Bytes& raw : refused) {
        const CTestFolder folder;
        test::WriteWhole(folder / "game.bin", raw);
        CRecordingOperation operation;
        EXPECT_EQ(FailureOf([&] { BinToIso(WindowBinToIso(folder.Path(), "game.bin"), operation); }),
                  "Error bin image => MODE 2 only !");
        EXPECT_EQ(test::ReadWhole(folder / "new-game.iso"), Bytes{}) << "the empty output remains";
        RemoveFile(folder / "new-game.iso");
        EXPECT_EQ(FailureOf([&] {
                      BinToIso({folder / "game.bin", folder / "new-game.iso", EOutputManner::CommitNew}, operation);
                  }),
                  "Error bin image => MODE 2 only !");
        EXPECT_THAT(folder.Names(), ElementsAre("game.bin"));
    }
}

TEST(BinToIso, NamesTheFileThatCannotBeOpened) {
    const CTestFolder folder;
    CRecordingOperation operation;
    EXPECT_EQ(FailureOf([&] { BinToIso(WindowBinToIso(folder.Path(), "a.bin"), operation); }),
              "Code 2011 - Error Opening " + (folder / "a.bin"));
    test::WriteWhole(folder / "a.bin", RawSectors(1));
    ASSERT_TRUE(MakeFolder(folder / "new-a.iso"));
    EXPECT_EQ(FailureOf([&] { BinToIso(WindowBinToIso(folder.Path(), "a.bin"), operation); }),
              "Code 2021 - Error Opening " + (folder / "new-a.iso"));
}

TEST(BinToIso, FailsIfTheInputShrinksOrWritesZerosIfNotStrict) {
    for (const bool strict : {false, true}) {
        const CTestFolder folder;
        test::WriteWhole(folder / "game.bin", RawSectors(4000));
        CRecordingOperation operation;
        operation.m_onYield = [&](int yields) {
            if (yields == 1) {
                test::WriteWhole(folder / "game.bin", Bytes(5, 1));
            }
        };
        const std::string text = FailureOf([&] { BinToIso(RequestFor(folder, strict), operation); });
        if (!strict) {
            EXPECT_EQ(text, "did not fail");
            const Bytes iso = test::ReadWhole(folder / "out.iso");
            EXPECT_EQ(iso.size(), 4000U * 2048U);
            EXPECT_EQ(Bytes(iso.end() - 2048, iso.end()), Bytes(2048, 0));
        } else {
            EXPECT_EQ(text, "Cannot read " + (folder / "game.bin") + ": unexpected end of file");
            EXPECT_THAT(folder.Names(), ElementsAre("game.bin"));
        }
    }
}

#ifdef __linux__
TEST(BinToIso, ReportsAFullDiskOnlyIfStrict) {
    const CTestFolder folder;
    test::WriteWhole(folder / "game.bin", RawSectors(3));
    CRecordingOperation operation;
    const auto failure = [&](bool strict) {
        return FailureOf([&] {
            BinToIso({folder / "game.bin", "/dev/full", EOutputManner::InPlace, strict}, operation);
        });
    };
    EXPECT_EQ(failure(false), "did not fail");
    EXPECT_EQ(failure(true), "Cannot write /dev/full: No space left on device");
}
#endif

}  // namespace
}  // namespace vantrel
