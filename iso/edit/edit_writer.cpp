#include "iso/edit/edit_writer.h"

#include <algorithm>
#include <vector>

#include "operation/progress.h"
#include "operation/text.h"
#include "pipeline/ordered_pipeline.h"

namespace vantrel {

namespace {

constexpr std::int64_t kPieceSize = 1 << 20;

/// Pieces that are read ahead, and the length of a run for which that is worth a thread.
constexpr std::size_t kPieces = 4;
constexpr std::int64_t kShortRun = 8 * kPieceSize;

/// A piece of the base.
struct SPiece {
    std::vector<std::uint8_t> bytes;
    std::size_t size;
    bool complete;
};

/// A run of bytes in the new image.
struct SRun {
    std::int64_t position;
    std::int64_t length;
    const SFileEdit* edit;  ///< the new content; null for zeros
};

/// New contents and zeros, by ascending position.
std::vector<SRun> RunsOf(const SEditPlan& plan) {
    std::vector<SRun> runs;
    for (const SImageArea& area : plan.zeros) {
        runs.push_back({area.position, area.length, nullptr});
    }
    for (const SFileEdit& edit : plan.edits) {
        if (edit.newSize > 0) {
            runs.push_back({edit.to * kSectorSize, edit.newSize, &edit});
        }
    }
    std::sort(runs.begin(), runs.end(), [](const SRun& a, const SRun& b) { return a.position < b.position; });
    return runs;
}

/// Opens the file with the new content of an edit, which must have kept its length since the plan was made.
void OpenSource(const SFileEdit& edit, CCheckedInput& file, COperation& operation) {
    file.OpenOrFail(edit.source, "Cannot open %s");
    if (file.SizeOrFail() != edit.newSize) {
        operation.Fail(Format("%s changed while the image was made", edit.source.c_str()));
    }
}

class CEditWriter {
public:
    CEditWriter(const SEditBase& base, const SEditPlan& plan, CCheckedOutput& output, COperation& operation)
        : m_base(base),
          m_plan(plan),
          m_output(output),
          m_operation(operation),
          m_progress(operation, SectorsFor(plan.newLength)),
          m_buffer(static_cast<std::size_t>(kPieceSize)) {}

    void Run() {
        std::int64_t position = 0;
        for (const SRun& run : RunsOf(m_plan)) {
            CopyBase(position, run.position);
            if (run.edit != nullptr) {
                CopyContent(*run.edit);
            } else {
                WriteZeros(run.length);
            }
            position = run.position + run.length;
        }
        CopyBase(position, m_plan.newLength);
        m_base.throwIfDamaged();
        for (const SSectorPatch& patch : m_plan.patches) {
            m_output.SeekOrFail(patch.position);
            m_output.WriteOrFail(patch.bytes);
        }
    }

private:
    /// Copies bytes of the base, and zeros behind its end.
    void CopyBase(std::int64_t start, std::int64_t end) {
        const std::int64_t copied = std::clamp(m_plan.oldLength, start, end);
        const bool isWorthAThread = m_base.image.PlainFile() == nullptr && copied - start > kShortRun;
        const bool complete = isWorthAThread ? CopyAhead(start, copied) : Copy(m_base.image, start, copied - start);
        if (!complete) {
            m_base.throwIfDamaged();
            m_operation.Fail(Format("Cannot read all of %s", m_base.name.c_str()));
        }
        WriteZeros(end - copied);
    }

    /// Copies bytes of the base, which a thread reads ahead. Returns false if the base ends early.
    bool CopyAhead(std::int64_t start, std::int64_t end) {
        const auto pieces = static_cast<std::uint64_t>((end - start + kPieceSize - 1) / kPieceSize);
        COrderedPipeline<SPiece> pipeline(
            pieces, 1, std::vector<SPiece>(kPieces, {std::vector<std::uint8_t>(m_buffer.size()), 0, false}),
            [this, start, end](SPiece& piece, std::uint64_t number) {
                const std::int64_t position = start + static_cast<std::int64_t>(number) * kPieceSize;
                piece.size = static_cast<std::size_t>(std::min(end - position, kPieceSize));
                piece.complete = m_base.image.ReadAt(position, std::span(piece.bytes).first(piece.size)) == piece.size;
            },
            [](SPiece&, std::uint64_t, std::uint32_t) {});
        while (const SPiece* piece = pipeline.Next()) {
            if (!piece->complete) {
                return false;
            }
            m_output.WriteOrFail(std::span(piece->bytes).first(piece->size));
            Advance(static_cast<std::int64_t>(piece->size));
        }
        return true;
    }

    void CopyContent(const SFileEdit& edit) {
        CCheckedInput file(m_operation);
        OpenSource(edit, file, m_operation);
        m_operation.SetPane(EPane::File, edit.source);
        if (!Copy(file, 0, edit.newSize)) {
            file.FailIncomplete();
        }
    }

    /// Returns false if the source ends early.
    bool Copy(CByteSource& source, std::int64_t position, std::int64_t length) {
        for (std::int64_t done = 0; done < length; done += kPieceSize) {
            const std::int64_t size = std::min(length - done, kPieceSize);
            const auto piece = std::span(m_buffer).first(static_cast<std::size_t>(size));
            const std::size_t count = m_output.Copy(source, position + done, piece);
            m_output.FailIfUnwritten();
            if (count != piece.size()) {
                return false;
            }
            Advance(size);
        }
        return true;
    }

    void WriteZeros(std::int64_t length) {
        if (length > 0) {
            m_output.WriteZerosOrFail(length);
            Advance(length);
        }
    }

    void Advance(std::int64_t bytes) {
        const std::int64_t before = SectorsFor(m_done);
        m_done += bytes;
        m_progress.Advance(SectorsFor(m_done) - before);
    }

    const SEditBase& m_base;
    const SEditPlan& m_plan;
    CCheckedOutput& m_output;
    COperation& m_operation;
    CProgress m_progress;
    std::vector<std::uint8_t> m_buffer;
    std::int64_t m_done = 0;  ///< bytes
};

}  // namespace

void WriteEdited(const SEditBase& base, const SEditPlan& plan, CCheckedOutput& output, COperation& operation) {
    CEditWriter(base, plan, output, operation).Run();
}

void ApplyEdit(const SEditPlan& plan, CCheckedUpdate& image, COperation& operation) {
    const std::vector<SRun> runs = RunsOf(plan);
    std::int64_t total = 0;
    for (const SRun& run : runs) {
        total += run.length;
    }
    CProgress progress(operation, total);
    std::vector<std::uint8_t> buffer(static_cast<std::size_t>(kPieceSize));
    for (const SRun& run : runs) {
        CCheckedInput file(operation);
        if (run.edit != nullptr) {
            OpenSource(*run.edit, file, operation);
        } else {
            std::fill(buffer.begin(), buffer.end(), std::uint8_t{0});
        }
        image.SeekOrFail(run.position);
        for (std::int64_t done = 0; done < run.length; done += kPieceSize) {
            const auto piece =
                std::span(buffer).first(static_cast<std::size_t>(std::min(run.length - done, kPieceSize)));
            if (run.edit != nullptr && file.ReadAt(done, piece) != piece.size()) {
                file.FailIncomplete();
            }
            image.WriteOrFail(piece);
            progress.Advance(static_cast<std::int64_t>(piece.size()));
        }
    }
    for (const SSectorPatch& patch : plan.patches) {
        image.SeekOrFail(patch.position);
        image.WriteOrFail(patch.bytes);
    }
}

}  // namespace vantrel
