// Raw images and CUE sheets: conversion to a plain image, verification, reports; and encoded sectors, in which the
// check must notice every changed byte. A sheet may name itself as its raw image.
#include "files/refused.h"
#include "fuzz/input_parts.h"
#include "fuzz/invariants.h"
#include "image/image_source.h"
#include "image/inspect/verify.h"
#include "raw/bin_to_iso.h"
#include "raw/raw_disc.h"
#include "raw/sector.h"
#include "raw/sector_check.h"
#include "tests/support/raw_sector_check.h"

namespace vantrel::fuzz {

namespace {

constexpr std::int64_t kCapacity = 4 << 20U;
const std::string kFile = std::string(kFolder) + "game.bin";
const std::string kOutput = std::string(kFolder) + "new-game.iso";

/// The window takes every sector for one of Mode 2.
bool HasMode1(std::span<const std::uint8_t> file) {
    for (std::size_t at = kModeOffset; at < file.size(); at += kRawSectorSize) {
        if (file[at] == kMode1) {
            return true;
        }
    }
    return false;
}

void Convert(std::span<const std::uint8_t> file) {
    ClearDisk(kCapacity);
    PutFile(kFile, file);
    CSilentOperation operation;
    const bool completed = CompletesOrLeavesNothing([&] {
        BinToIso({kFile, kOutput, EOutputManner::CommitNew, true}, operation);
    });
    if (!completed) {
        return;
    }
    const Bytes strict = ContentOf(kOutput);
    const SRawDisc disc = ReadRawDisc(kFile);
    Expect(strict.size() == static_cast<std::size_t>(disc.DataTrack().sectors) * kUserDataSize,
           "the image is the user data of every sector");
    if (disc.hasSheet || file[kModeOffset] != kMode2) {
        return;
    }
    Expect(!EndingOf([&] {
        BinToIso({kFile, kOutput, EOutputManner::InPlace}, operation);
    }),
           "the window converts what the console program converts");
    Expect(ContentOf(kOutput) == strict || HasMode1(file), "both write the same image");
}

void Report() {
    CSilentOperation operation;
    try {
        OpenImage(kFile)->Facts();
        VerifyFile(kFile, operation);
    } catch (const CRefused&) {
        // another form
    }
}

void EncodeAndSpoil(std::span<const std::uint8_t> input) {
    CInputParts parts(input);
    const auto mode = parts.Byte() % 2 == 0 ? ESectorMode::Mode1 : ESectorMode::Mode2Form1;
    const std::uint32_t number = (parts.Number() << 4U) % kMostRawSectors;
    const std::size_t offset = parts.Number() % kRawSectorSize;
    const std::uint8_t change = parts.Byte();
    std::array<std::uint8_t, kUserDataSize> data = {};
    const std::span<const std::uint8_t> given = parts.Take(data.size());
    std::copy(given.begin(), given.end(), data.begin());
    std::array<std::uint8_t, kRawSectorSize> sector = {};
    EncodeSector(mode, number, data, sector);
    Expect(NumberOfSector(sector) == number, "a sector's address is that of its number");
    Expect(!CheckSector(sector, number).Any(), "an encoded sector has no faults");
    Expect(test::FaultOfRawSector(sector, number).empty(), "an encoded sector obeys the polynomials");
    sector[offset] ^= change;
    Expect(CheckSector(sector, number).Any() == (change != 0), "a changed byte is noticed");
}

}  // namespace

}  // namespace vantrel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vantrel::fuzz;
    Convert({data, size});
    Report();
    if (size < 4096) {
        EncodeAndSpoil({data, size});
    }
    return 0;
}
