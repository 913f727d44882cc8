// The raw-sector converter on a system on which any call may fail: it says so and ends with a status of its own. It
// writes in place, so that what it wrote so far stays.
#include <gtest/gtest.h>

#include <sstream>

#include "raw/converter.h"
#include "tests/unit/faults/fault_sweep.h"
#include "tests/unit/faults/game_files.h"

namespace vantrel::test {
namespace {

TEST(ConverterFaults, AreTold) {
    const CTestFolder folder;
    WriteCdWithoutPostgap(folder);
    const std::string image = ReadText(folder / "game.iso");
    EConverterExit status = EConverterExit::Usage;
    std::string told;
    std::string whole;
    SweepFaults(
        folder, {},
        [&] {
            std::ostringstream progress;
            std::ostringstream errors;
            status = RunConverter({folder / "game.iso", folder / "game.bin", "/mode2", "/postgap"}, progress, errors);
            told = errors.str();
        },
        [&](const SFault& fault) {
            EXPECT_EQ(ReadText(folder / "game.iso"), image);
            if (fault.number == 0) {
                whole = ReadText(folder / "game.bin");
            }
            const bool isHarmless = fault.call.kind == ECall::ReadEnd || fault.call.kind == ECall::Look ||
                                    (fault.call.kind == ECall::Close && !fault.call.written);
            if (fault.number == 0 || (isHarmless && status == EConverterExit::Done)) {
                EXPECT_EQ(status, EConverterExit::Done) << told;
                EXPECT_TRUE(ReadText(folder / "game.bin") == whole);
            } else {
                EXPECT_EQ(status, EConverterExit::Failed);
                EXPECT_TRUE(told.starts_with("tmpfile: ")) << told;
            }
        });
}

}  // namespace
}  // namespace vantrel::test
