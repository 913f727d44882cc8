// Compressing and expanding on several threads: the same bytes, texts and calls as on one, and no files left behind.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "compress/cso.h"
#include "compress/dax.h"
#include "compress/lz4_encoder.h"
#include "compress/work_plan.h"
#include "pipeline/ordered_pipeline.h"
#include "tests/support/recording_operation.h"
#include "tests/unit/compress/cso_support.h"

namespace vantrel {
namespace {

using test::Bytes;
using test::CRecordingOperation;
using test::CTestFolder;
using test::FailureOf;
using testing::ElementsAre;

constexpr std::size_t kBlock = 2048;
constexpr std::size_t kFrame = 8192;
constexpr std::uint32_t kWorkerCounts[] = {0, 1, 2, 3, 5, 8};

/// A container format with its conversions.
struct SForm {
    const char* extension;
    std::size_t block;
    void (*compress)(const SCompressionRequest&, COperation&);
    void (*expand)(const SCompressionRequest&, COperation&);
};

void PrintTo(const SForm& form, std::ostream* out) {
    *out << form.extension + 1;
}

constexpr SForm kCso = {".cso", kBlock, IsoToCso, CsoToIso};
constexpr SForm kDax = {".dax", kFrame, IsoToDax, DaxToIso};

class Jobs : public testing::TestWithParam<SForm> {
protected:
    /// A compression of an image of any length; the mark is in a second file.
    SCompressionRequest Compression(const Bytes& image) const {
        test::WriteWhole(m_folder / "mark.iso", test::WithPspMark({}));
        test::WriteWhole(m_folder / "game.iso", image);
        SCompressionRequest request = WindowRequest("game.iso");
        request.chosenPath = m_folder / "mark.iso";
        return request;
    }

    SCompressionRequest Expansion(const Bytes& container) const {
        test::WriteWhole(m_folder / "container", container);
        return WindowRequest("container");
    }

    /// Runs the conversion and returns what it writes.
    static Bytes Output(void (*conversion)(const SCompressionRequest&, COperation&), const SCompressionRequest& request,
                        CRecordingOperation& operation) {
        conversion(request, operation);
        return test::ReadWhole(request.outputPath);
    }

    static SCompressionRequest Shared(SCompressionRequest request, std::uint32_t workers) {
        request.outputPath += "-shared";
        request.manner = EOutputManner::CommitReplace;
        request.strict = true;
        request.workers = workers;
        return request;
    }

    Bytes Compressed(const Bytes& image) const {
        CRecordingOperation operation;
        return Output(GetParam().compress, Compression(image), operation);
    }

    CTestFolder m_folder;

private:
    SCompressionRequest WindowRequest(const char* input) const {
        SCompressionRequest request =
            DirectConversion(m_folder / input, m_folder / "window", EOutputManner::InPlace, 0, 9);
        request.strict = false;
        return request;
    }
};

/// Pieces that compress well, not at all and to almost nothing, in turn.
Bytes MixedImage(std::size_t length) {
    Bytes image;
    for (std::uint64_t i = 0; image.size() < length; ++i) {
        const Bytes piece = i % 3 == 0   ? test::TextLikeBytes(3000, i)
                            : i % 3 == 1 ? test::RandomBytes(9000, i)
                                         : Bytes(5000, static_cast<std::uint8_t>(i));
        image.insert(image.end(), piece.begin(), piece.end());
    }
    image.resize(length);
    return image;
}

TEST_P(Jobs, CompressToTheBytesOfTheWindowWithTheSameCalls) {
    for (const std::size_t blocks : {0, 1, 15, 16, 17, 63, 64, 65, 99, 100, 101, 250}) {
        for (const std::size_t more : {std::size_t{0}, GetParam().block - 1}) {
            SCompressionRequest request = Compression(MixedImage(blocks * GetParam().block + more));
            request.level = static_cast<int>(blocks % 9 + 1);
            // The window leaves out a partial last block of a CSO.
            request.strict = more != 0 && GetParam().block == kBlock;
            CRecordingOperation window;
            const Bytes expected = Output(GetParam().compress, request, window);
            for (const std::uint32_t workers : kWorkerCounts) {
                CRecordingOperation operation;
                GetParam().compress(Shared(request, workers), operation);
                ASSERT_EQ(test::ReadWhole(m_folder / "window-shared"), expected)
                    << blocks << " blocks and " << more << " bytes, " << workers << " workers";
                EXPECT_EQ(operation.CallsOf("done"), window.CallsOf("done"));
                EXPECT_EQ(operation.CallsOf("yield"), window.CallsOf("yield"));
                EXPECT_EQ(operation.CallsOf("pane PERCENT"), window.CallsOf("pane PERCENT"));
            }
        }
    }
}

TEST_P(Jobs, ExpandToTheSameBytes) {
    for (const std::size_t blocks : {1, 2, 15, 16, 17, 63, 64, 65, 99, 100, 101, 250}) {
        // The window leaves out a partial last block of a CSO.
        const std::size_t more = GetParam().block == kBlock ? 0 : 77;
        const SCompressionRequest request = Expansion(Compressed(MixedImage(blocks * GetParam().block + more)));
        CRecordingOperation window;
        const Bytes expected = Output(GetParam().expand, request, window);
        CRecordingOperation alone;
        GetParam().expand(Shared(request, 0), alone);
        for (const std::uint32_t workers : kWorkerCounts) {
            CRecordingOperation operation;
            GetParam().expand(Shared(request, workers), operation);
            ASSERT_EQ(test::ReadWhole(m_folder / "window-shared"), expected) << blocks << " blocks, " << workers;
            EXPECT_EQ(operation.CallsOf("done"), alone.CallsOf("done"));
            EXPECT_EQ(operation.CallsOf("yield"), alone.CallsOf("yield"));
            EXPECT_EQ(operation.CallsOf("pane PERCENT"), window.CallsOf("pane PERCENT"));
        }
    }
}

TEST_P(Jobs, RestoreAnImageWithAPartialLastBlock) {
    for (const std::size_t blocks : {0, 1, 15, 16, 63, 64, 65, 130}) {
        const Bytes image = MixedImage(blocks * GetParam().block + 77);
        const SCompressionRequest compression = Compression(image);
        for (const std::uint32_t workers : kWorkerCounts) {
            CRecordingOperation operation;
            GetParam().compress(Shared(compression, workers), operation);
            const SCompressionRequest expansion = Expansion(test::ReadWhole(m_folder / "window-shared"));
            GetParam().expand(Shared(expansion, workers), operation);
            ASSERT_EQ(test::ReadWhole(m_folder / "window-shared"), image) << blocks << " blocks, " << workers;
        }
    }
}

TEST_P(Jobs, ReportTheFirstDamagedBlock) {
    const Bytes good = Compressed(MixedImage(300 * GetParam().block));
    std::size_t damaged = 0;
    for (std::size_t at = good.size() / 2; at < good.size(); at += good.size() / 10) {
        Bytes bad = good;
        for (std::size_t i = at; i < good.size(); ++i) {
            bad[i] = static_cast<std::uint8_t>(i);  // up to the end; each block is damaged differently
        }
        const SCompressionRequest request = Expansion(bad);
        CRecordingOperation window;
        const std::string text = FailureOf([&] { GetParam().expand(request, window); });
        damaged += text != "did not fail" ? 1U : 0U;
        for (const std::uint32_t workers : kWorkerCounts) {
            CRecordingOperation operation;
            EXPECT_EQ(FailureOf([&] { GetParam().expand(Shared(request, workers), operation); }), text) << workers;
            EXPECT_EQ(operation.CallsOf("pane PERCENT"), window.CallsOf("pane PERCENT"));
            EXPECT_EQ(FileKindOf(m_folder / "window-shared"), EFileKind::Missing);
        }
    }
    EXPECT_GT(damaged, 3U);
    EXPECT_THAT(m_folder.Names(), ElementsAre("container", "game.iso", "mark.iso", "window"));
}

TEST_P(Jobs, ReportTheSameBlockOfATruncatedFile) {
    Bytes cut = Compressed(MixedImage(300 * GetParam().block));
    cut.resize(cut.size() * 2 / 3);
    const SCompressionRequest request = Expansion(cut);
    CRecordingOperation window;
    const std::string text = FailureOf([&] { GetParam().expand(request, window); });
    EXPECT_NE(text, "did not fail");
    for (const std::uint32_t workers : kWorkerCounts) {
        CRecordingOperation operation;
        EXPECT_EQ(FailureOf([&] { GetParam().expand(Shared(request, workers), operation); }), text) << workers;
    }
    EXPECT_EQ(FileKindOf(m_folder / "window-shared"), EFileKind::Missing);
}

/// Replaces the image after its length was taken and before it is read.
class CResizingOperation : public CRecordingOperation {
public:
    CResizingOperation(std::string path, Bytes image) : m_path(std::move(path)), m_image(std::move(image)) {}

    void SetTotal(std::int64_t units) override {
        test::WriteWhole(m_path, m_image);
        CRecordingOperation::SetTotal(units);
    }

private:
    std::string m_path;
    Bytes m_image;
};

TEST_P(Jobs, ReportTheSameBlockOfAnImageThatShrinks) {
    const Bytes image = MixedImage(300 * GetParam().block);
    const Bytes shorter(image.begin(), image.begin() + static_cast<std::ptrdiff_t>(150 * GetParam().block + 5));
    std::vector<std::string> texts;
    for (const std::uint32_t workers : kWorkerCounts) {
        const SCompressionRequest request = Shared(Compression(image), workers);
        CResizingOperation operation(m_folder / "game.iso", shorter);
        texts.push_back(FailureOf([&] { GetParam().compress(request, operation); }));
        EXPECT_EQ(operation.CallsOf("done").size(), 151U) << workers;
        EXPECT_THAT(m_folder.Names(), ElementsAre("game.iso", "mark.iso"));
    }
    const std::string expected = GetParam().block == kBlock ? "Code 1007-block 150 : read error\n"
                                                            : "I/O error reading " + (m_folder / "game.iso") + "\n";
    EXPECT_THAT(texts, testing::Each(expected));
}

TEST_P(Jobs, EndAllThreadsAfterAnInterruptAndLeaveNothing) {
    const SCompressionRequest compression = Compression(MixedImage(1500 * GetParam().block));
    const SCompressionRequest expansion = Expansion(Compressed(MixedImage(1500 * GetParam().block)));
    const auto interrupt = [](int yield) {
        if (yield == 700) {
            throw std::runtime_error("interrupted");
        }
    };
    test::WriteWhole(m_folder / "window", {});
    for (const std::uint32_t workers : kWorkerCounts) {
        CRecordingOperation operation;
        operation.m_onYield = interrupt;
        EXPECT_THROW(GetParam().compress(Shared(compression, workers), operation), std::runtime_error);
        CRecordingOperation other;
        other.m_onYield = interrupt;
        EXPECT_THROW(GetParam().expand(Shared(expansion, workers), other), std::runtime_error);
        EXPECT_THAT(m_folder.Names(), ElementsAre("container", "game.iso", "mark.iso", "window"));
    }
}

INSTANTIATE_TEST_SUITE_P(Forms, Jobs, testing::Values(kCso, kDax),
                         [](const auto& form) { return std::string(form.param.extension + 1); });

TEST(JobsOfCso, ReportEveryFaultOfABlockAsOneThreadDoes) {
    std::vector<Bytes> blocks;
    for (std::uint64_t i = 0; i < 200; ++i) {
        blocks.push_back(test::TextLikeBytes(i == 150 ? 2000 : kBlock, i));
    }
    const CTestFolder folder;
    test::SHandMadeCso cso = test::CsoOf(blocks, 0);
    cso.totalBytes = 200 * kBlock;
    const auto failures = [&] {
        test::WriteWhole(folder / "game.cso", cso.Encode());
        std::vector<std::string> texts;
        for (const std::uint32_t workers : kWorkerCounts) {
            CRecordingOperation operation;
            texts.push_back(FailureOf([&] {
                CsoToIso(DirectConversion(folder / "game.cso", folder / "x.iso", EOutputManner::CommitNew, workers, 9),
                         operation);
            }));
        }
        EXPECT_THAT(folder.Names(), ElementsAre("game.cso"));
        return texts;
    };
    EXPECT_THAT(failures(), testing::Each("Code 1109-block 150 : block size error 2000 != 2048\n"));
    cso.data[cso.index[140] - cso.index[0]] = 0xFF;
    EXPECT_THAT(failures(), testing::Each("Code 1108-inflate : invalid block type\n"));
    cso.index[130] += 0x00FFFFFF;
    EXPECT_THAT(failures(), testing::Each("Code 1107-block 129 : read error\n"));
}

TEST(JobsOfCso, ExpandLargeBlocks) {
    constexpr std::uint32_t kLargest = 1U << 20U;
    const CTestFolder folder;
    std::vector<Bytes> blocks;
    Bytes image;
    for (std::uint64_t i = 0; i < 20; ++i) {
        blocks.push_back(Bytes(kLargest, static_cast<std::uint8_t>(i)));
        image.insert(image.end(), blocks.back().begin(), blocks.back().end());
    }
    test::SHandMadeCso cso = test::CsoOf(blocks, 0);
    cso.blockSize = kLargest;
    test::WriteWhole(folder / "game.cso", cso.Encode());
    CRecordingOperation operation;
    CsoToIso(DirectConversion(folder / "game.cso", folder / "x.iso", EOutputManner::CommitNew, 64, 9), operation);
    EXPECT_EQ(test::ReadWhole(folder / "x.iso"), image);
}

TEST(JobsOfDax, RefuseAnImageThatGrows) {
    const CTestFolder folder;
    for (const std::size_t frames : {15, 16, 17, 100}) {
        for (const std::uint32_t workers : kWorkerCounts) {
            test::WriteWhole(folder / "game.iso", test::WithPspMark(Bytes(frames * kFrame, 1)));
            CResizingOperation operation(folder / "game.iso", Bytes(frames * kFrame + 1, 1));
            EXPECT_EQ(FailureOf([&] {
                          IsoToDax(DirectConversion(folder / "game.iso", folder / "game.dax", EOutputManner::CommitNew,
                                                    workers, 9),
                                   operation);
                      }),
                      "Error getting file size.\n");
            EXPECT_THAT(folder.Names(), ElementsAre("game.iso"));
        }
    }
}

TEST(WorkPlan, BoundsTheMemoryForAnyNumberOfWorkersAndBlockSize) {
    constexpr std::uint64_t kBlocks = 1U << 20U;
    for (const std::uint32_t block : {1U, 512U, 2048U, 8192U, 65536U, 1U << 20U}) {
        for (const std::uint32_t coder : {268U << 10U, kLz4EncoderMemory}) {
            const SBlockSizes sizes = {block, 2 * block, false, coder};
            for (const std::uint32_t workers : {1U, 2U, 64U, 256U}) {
                const SWorkPlan plan = PlanWork(workers, sizes, kBlocks);
                EXPECT_GE(plan.workers, std::min(workers, 7U)) << block;
                EXPECT_LE(plan.workers, workers);
                EXPECT_EQ(plan.SlotCount(), SlotsFor(plan.workers));
                EXPECT_LE(plan.SlotCount() * plan.blocksPerSlot * std::uint64_t{3} * block +
                              std::uint64_t{plan.workers} * coder,
                          50U << 20U)
                    << "block size " << block << ", " << workers << " workers";
            }
        }
    }
}

TEST(WorkPlan, CountsTheMemoryOfADeflateStream) {
    constexpr std::uint32_t kWindowAndMatches = (1U << 17U) + (1U << 17U);  // as zlib's manual gives it
    EXPECT_GT(SBlockSizes().coder, kWindowAndMatches);
    EXPECT_LT(SBlockSizes().coder, 2 * kWindowAndMatches);
}

TEST(WorkPlan, WithoutWorkersTakesBlockByBlockWithAFreshStream) {
    const SWorkPlan plan = PlanWork(0, {2048, 4096}, 1000);
    EXPECT_EQ(plan.workers, 0U);
    EXPECT_EQ(plan.blocksPerSlot, 1U);
    EXPECT_EQ(plan.SlotCount(), 1U);
    EXPECT_EQ(plan.streams, EStreamUse::Fresh);
    EXPECT_EQ(PlanWork(1, {2048, 4096}, 1000).streams, EStreamUse::Reused);
}

}  // namespace
}  // namespace vantrel
