// The raw-sector converter while system calls fail: it prints a message and returns its failure status. It writes in
// place, so incomplete outputs stay.
#include <gtest/gtest.h>

#include <sstream>

#include "raw/converter.h"
#include "tests/unit/faults/fault_sweep.h"
#include "tests/unit/faults/game_files.h"

namespace vantrel::test {
namespace {

TEST(ConverterFaults, AreReported) {
    const CTestFolder folder;
    WriteCdWithoutPostgap(folder);
    const std::string image = ReadText(folder / "game.iso");
    EConverterExit status = EConverterExit::Usage;
    std::string message;
    std::string whole;
    SweepFaults(
        folder, {},
        [&] {
            std::ostringstream progress;
            std::ostringstream errors;
            status = RunConverter({folder / "game.iso", folder / "game.bin", "/mode2", "/postgap"}, progress, errors);
            message = errors.str();
        },
        [&](const SFault& fault) {
            EXPECT_EQ(ReadText(folder / "game.iso"), image);
            if (fault.number == 0) {
                whole = ReadText(folder / "game.bin");
            }
            const bool isHarmless = fault.call.kind == ECall::ReadEnd || fault.call.kind == ECall::Look ||
                                    (fault.call.kind == ECall::Close && !fault.call.written);
            if (fault.number == 0 || (isHarmless && status == EConverterExit::Done)) {
                EXPECT_EQ(status, EConverterExit::Done) << message;
                EXPECT_TRUE(ReadText(folder / "game.bin") == whole);
            } else {
                EXPECT_EQ(status, EConverterExit::Failed);
                EXPECT_TRUE(message.starts_with("tmpfile: ")) << message;
            }
        });
}

}  // namespace
}  // namespace vantrel::test
