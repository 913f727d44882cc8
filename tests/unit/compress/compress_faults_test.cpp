// The texts for failures of zlib and of memory allocation. The linker routes the calls of zlib through the functions
// below, which fail on demand.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <zlib.h>

#include <optional>

#include "compress/cso.h"
#include "compress/dax.h"
#include "files/native_file.h"
#include "tests/support/failing_allocations.h"
#include "tests/support/memory_source.h"
#include "tests/support/recording_operation.h"
#include "tests/unit/compress/cso_support.h"

namespace vantrel {
namespace {

using test::Bytes;
using test::CRecordingOperation;
using test::CTestFolder;
using test::FailureOf;

enum class EFault { None, DeflateInit, Deflate, DeflateEnd, InflateInit, InflateEnd };

/// Result of a fake deflate, which fills the whole output and does nothing else.
constexpr int kFillsOutput = 1000;

/// Which call of zlib fails next, with a result and a message.
struct SFaults {
    EFault call = EFault::None;
    int result = Z_OK;
    const char* message = nullptr;
} g_faults;

std::optional<int> FaultIn(EFault call, z_streamp stream) {
    if (g_faults.call != call) {
        return std::nullopt;
    }
    stream->msg = const_cast<char*>(g_faults.message);
    return g_faults.result;
}

}  // namespace
}  // namespace vantrel

using vantrel::EFault;
using vantrel::FaultIn;
using vantrel::g_faults;
using vantrel::kFillsOutput;

// GCC reports the names that the linker option prescribes.
#pragma GCC diagnostic ignored "-Wpedantic"

extern "C" {

int __real_deflateInit2_(z_streamp, int, int, int, int, int, const char*, int);
int __real_deflate(z_streamp, int);
int __real_deflateEnd(z_streamp);
int __real_inflateInit2_(z_streamp, int, const char*, int);
int __real_inflateEnd(z_streamp);

int __wrap_deflateInit2_(z_streamp stream, int level, int method, int windowBits, int memoryLevel, int strategy,
                         const char* version, int size) {
    const std::optional<int> fault = FaultIn(EFault::DeflateInit, stream);
    return fault ? *fault
                 : __real_deflateInit2_(stream, level, method, windowBits, memoryLevel, strategy, version, size);
}

int __wrap_deflate(z_streamp stream, int flush) {
    const std::optional<int> fault = FaultIn(EFault::Deflate, stream);
    if (fault == kFillsOutput) {
        stream->next_out += stream->avail_out;
        stream->total_out += stream->avail_out;
        stream->avail_out = 0;
        return Z_STREAM_END;
    }
    return fault ? *fault : __real_deflate(stream, flush);
}

int __wrap_deflateEnd(z_streamp stream) {
    const int result = __real_deflateEnd(stream);
    return FaultIn(EFault::DeflateEnd, stream).value_or(result);
}

int __wrap_inflateInit2_(z_streamp stream, int windowBits, const char* version, int size) {
    const std::optional<int> fault = FaultIn(EFault::InflateInit, stream);
    return fault ? *fault : __real_inflateInit2_(stream, windowBits, version, size);
}

int __wrap_inflateEnd(z_streamp stream) {
    const int result = __real_inflateEnd(stream);
    return FaultIn(EFault::InflateEnd, stream).value_or(result);
}

}  // extern "C"

namespace vantrel {
namespace {

class CompressFaults : public testing::Test {
protected:
    ~CompressFaults() override {
        g_faults = {};
        test::g_allocationsLeft = -1;
    }

    void SetUp() override {
        test::WriteWhole(m_folder / "game.iso", test::WithPspMark(test::TextLikeBytes(40'000, 1)));
        IsoToCso(Request("game.iso", "game.cso"), m_operation);
        IsoToDax(Request("game.iso", "game.dax"), m_operation);
    }

    /// Runs a conversion in which `faults` happen. It must leave nothing behind.
    std::string FailureWith(const SFaults& faults, void (*conversion)(const SCompressionRequest&, COperation&),
                            const char* input) {
        g_faults = faults;
        std::string text = FailureOf([&] { conversion(Request(input, "output"), m_operation); });
        g_faults = {};
        EXPECT_EQ(text == "did not fail", RemoveFile(m_folder / "output"));
        return text;
    }

    /// The failures of all allocations of a conversion, one after the other.
    std::vector<std::string> AllocationFailures(void (*conversion)(const SCompressionRequest&, COperation&),
                                                const char* input) {
        std::vector<std::string> texts;
        for (int successes = 0; successes < 20; ++successes) {
            test::g_allocationsLeft = successes;
            texts.push_back(FailureWith({}, conversion, input));
            test::g_allocationsLeft = -1;
            if (texts.back() == "did not fail") {
                texts.pop_back();
                break;
            }
        }
        return texts;
    }

    std::string Path(const char* name) const { return m_folder / name; }

private:
    SCompressionRequest Request(const char* input, const char* output) const {
        return DirectConversion(m_folder / input, m_folder / output, EOutputManner::CommitNew, 0, 9);
    }

    CTestFolder m_folder;
    CRecordingOperation m_operation;
};

TEST_F(CompressFaults, IsoToCsoShowsTheFailedCall) {
    EXPECT_EQ(FailureWith({EFault::DeflateInit, Z_MEM_ERROR, nullptr}, IsoToCso, "game.iso"),
              "Code 1005-deflateIniterror\n");
    EXPECT_EQ(FailureWith({EFault::Deflate, Z_STREAM_ERROR, "broken state"}, IsoToCso, "game.iso"),
              "Code 1008-block 0:deflate : broken state[-2]\n");
    EXPECT_EQ(FailureWith({EFault::DeflateEnd, Z_DATA_ERROR, "discarded"}, IsoToCso, "game.iso"),
              "Code 1010-deflateEnd : discarded\n");
}

TEST_F(CompressFaults, CsoToIsoShowsTheFailedCall) {
    EXPECT_EQ(FailureWith({EFault::InflateInit, Z_MEM_ERROR, nullptr}, CsoToIso, "game.cso"),
              "Code 1106-deflateIniterror\n");
    EXPECT_EQ(FailureWith({EFault::InflateEnd, Z_STREAM_ERROR, nullptr}, CsoToIso, "game.cso"),
              "Code 1111-inflateEnd: error\n");
    Bytes damaged = test::ReadWhole(Path("game.cso"));
    damaged[test::Read32(damaged, 24)] = 0xFF;
    test::WriteWhole(Path("damaged.cso"), damaged);
    const std::string damage = FailureWith({}, CsoToIso, "damaged.cso");
    EXPECT_TRUE(damage.starts_with("Code 1108-inflate : ")) << damage;
    EXPECT_EQ(FailureWith({EFault::InflateEnd, Z_STREAM_ERROR, "later"}, CsoToIso, "damaged.cso"), damage);
}

TEST_F(CompressFaults, DaxConversionsShowTheFailedCall) {
    EXPECT_EQ(FailureWith({EFault::DeflateInit, Z_MEM_ERROR, nullptr}, IsoToDax, "game.iso"),
              "Memory error while compressing.");
    EXPECT_EQ(FailureWith({EFault::Deflate, Z_STREAM_ERROR, nullptr}, IsoToDax, "game.iso"),
              "Memory error while compressing.");
    EXPECT_EQ(FailureWith({EFault::Deflate, Z_OK, nullptr}, IsoToDax, "game.iso"),
              "Not enough memory in compressed buffer!\n");
    EXPECT_EQ(FailureWith({EFault::Deflate, Z_BUF_ERROR, nullptr}, IsoToDax, "game.iso"),
              "Not enough memory in compressed buffer!\n");
    EXPECT_EQ(FailureWith({EFault::DeflateEnd, Z_DATA_ERROR, nullptr}, IsoToDax, "game.iso"), "did not fail");
    EXPECT_EQ(FailureWith({EFault::InflateInit, Z_MEM_ERROR, nullptr}, DaxToIso, "game.dax"),
              "Error while decompressing (corrupt input?)\n");
}

TEST_F(CompressFaults, IsoToDaxEndsBeforeAPositionThatItsTableCannotHold) {
    constexpr std::int64_t kStoredFrame = 9216;
    constexpr std::int64_t kFrames = (std::int64_t{1} << 32) / kStoredFrame + 2;
    CNativeFile file;
    ASSERT_TRUE(file.Open(Path("large.iso"), EOpenMode::CreateNew, ESharing::Anyone));
    ASSERT_TRUE(file.Resize(kFrames * 8192));
    COperation operation;
    g_faults = {EFault::Deflate, kFillsOutput, nullptr};
    const SCompressionRequest request = DirectConversion(Path("large.iso"), "/dev/null", EOutputManner::InPlace, 0, 1);
    EXPECT_EQ(FailureOf([&] { ImageToDax(request, operation); }), "I/O write error.\n");
}

/// One frame, which is stored as it is.
Bytes DaxWithAPlainArea() {
    constexpr std::uint32_t kFrame = 8192;
    constexpr std::uint32_t kPosition = 32 + 4 + 2 + 8;  // behind the header, its tables and one area
    Bytes dax(kPosition + kFrame, 'x');
    const std::pair<std::size_t, std::uint32_t> numbers[] = {{0, 0x00584144}, {4, kFrame},  {8, 1},  {12, 1},
                                                             {32, kPosition}, {36, kFrame}, {38, 0}, {42, 1}};
    for (const auto& [position, number] : numbers) {
        test::Write32(dax, position, number);
    }
    return dax;
}

/// At least three failures, all with this text.
auto AllAre(const std::string& text) {
    return testing::AllOf(testing::SizeIs(testing::Ge(3U)), testing::Each(text));
}

TEST_F(CompressFaults, EveryFailedAllocationIsReported) {
    EXPECT_THAT(AllocationFailures(IsoToCso, "game.iso"),
                AllAre("Code 1004-Can't allocate memory " + Path("game.iso") + "\n"));
    EXPECT_THAT(AllocationFailures(CsoToIso, "game.cso"),
                AllAre("Code 1104-Can't allocate memory " + Path("game.cso") + "\n"));
    EXPECT_THAT(AllocationFailures(IsoToDax, "game.iso"), AllAre("Not enough memory for the frame tables!\n"));
    EXPECT_THAT(AllocationFailures(DaxToIso, "game.dax"), AllAre("Not enough memory for the frame tables!\n"));
    test::WriteWhole(Path("areas.dax"), DaxWithAPlainArea());
    EXPECT_THAT(AllocationFailures(DaxToIso, "areas.dax"), AllAre("Not enough memory for the frame tables!\n"));
}

TEST_F(CompressFaults, NoMemoryToExpandAContainerIsReported) {
    test::CSourceWithoutMemory image(test::WithPspMark(test::TextLikeBytes(40'000, 1)));
    SCompressionRequest request = DirectConversion(Path("game.bin"), Path("output"), EOutputManner::CommitNew, 0, 9);
    request.image = &image;
    COperation operation;
    EXPECT_EQ(FailureOf([&] { ImageToCso(request, operation); }),
              "Code 1004-Can't allocate memory " + Path("game.bin") + "\n");
    EXPECT_EQ(FailureOf([&] { ImageToDax(request, operation); }), "Not enough memory for the frame tables!\n");
}

}  // namespace
}  // namespace vantrel
