#include "tests/unit/faults/game_files.h"

namespace vantrel::test {

namespace {

void WritePlayStationImage(const CTestFolder& folder, EImageKind kind, EPostgap postgap) {
    SImageDescription description;
    description.kind = kind;
    description.files = {{"SYSTEM.CNF", TextLikeBytes(61, 1)}, {"DATA/LEVEL1.BIN", RandomBytes(5000, 2), 3}};
    description.holeFill = 7;
    description.postgap = postgap;
    WriteWhole(folder / "game.iso", BuildImage(description).bytes);
}

}  // namespace

void WriteUmd(const CTestFolder& folder) {
    SImageDescription description;
    description.kind = EImageKind::Umd;
    description.files = {{"UMD_DATA.BIN", TextLikeBytes(48, 1)}, {"PSP_GAME/DATA.BIN", RandomBytes(300'000, 2)}};
    WriteWhole(folder / "game.iso", BuildImage(description).bytes);
}

void WriteCd(const CTestFolder& folder) {
    WritePlayStationImage(folder, EImageKind::Cd, EPostgap::None);
}

void WriteCdWithoutPostgap(const CTestFolder& folder) {
    WritePlayStationImage(folder, EImageKind::Cd, EPostgap::Missing);
}

void WriteDvd(const CTestFolder& folder) {
    WritePlayStationImage(folder, EImageKind::Dvd, EPostgap::None);
}

}  // namespace vantrel::test
