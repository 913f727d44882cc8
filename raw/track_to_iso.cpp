#include "raw/track_to_iso.h"

#include <algorithm>
#include <span>
#include <vector>

#include "files/checked_file.h"
#include "files/refused.h"
#include "operation/progress.h"
#include "operation/text.h"
#include "pipeline/ordered_pipeline.h"
#include "raw/fault_ranges.h"
#include "raw/raw_disc.h"

namespace vantrel {

namespace {

/// Sectors that are read at once.
constexpr std::int64_t kPieceSectors = 256;
/// One worker is enough, because most of the time goes into reading.
constexpr std::uint32_t kWorkers = 1;
constexpr std::size_t kSlots = 6;
/// More ranges of damaged sectors are counted, but not listed.
constexpr std::size_t kMostListedRanges = 20;

/// Consecutive sectors of a track.
class CTrackPiece {
public:
    explicit CTrackPiece(ETrackMode mode)
        : m_mode(mode), m_bytes(static_cast<std::size_t>(kPieceSectors) * SectorSizeOf(mode)) {}

    /// Reads sectors at the current position of the file.
    void Read(CInputFile& file, std::int64_t sectors) {
        m_sectors = static_cast<std::size_t>(sectors);
        const auto wanted = std::span(m_bytes).first(m_sectors * SectorSizeOf(m_mode));
        m_complete = file.Read(wanted) == wanted.size();
    }

    /// Checks the sectors, and moves their user data to the beginning of the buffer.
    void CheckAndKeepUserData() {
        m_faults.clear();
        for (std::size_t i = 0; m_complete && i < m_sectors; ++i) {
            const auto stored = std::span(m_bytes).subspan(i * SectorSizeOf(m_mode), SectorSizeOf(m_mode));
            if (const SSectorFaults faults = CheckUserData(m_mode, stored); faults.Any()) {
                m_faults.emplace_back(i, faults);
            }
            const auto data = UserDataOf(m_mode, stored);
            std::copy(data.begin(), data.end(), m_bytes.begin() + static_cast<std::ptrdiff_t>(i * kUserDataSize));
        }
    }

    bool IsComplete() const { return m_complete; }
    std::size_t Sectors() const { return m_sectors; }
    std::span<const std::uint8_t> Data() const { return std::span(m_bytes).first(m_sectors * kUserDataSize); }
    /// Sectors of the piece, from 0, and their faults.
    const std::vector<std::pair<std::size_t, SSectorFaults>>& Faults() const { return m_faults; }

private:
    ETrackMode m_mode;
    std::vector<std::uint8_t> m_bytes;
    std::size_t m_sectors = 0;
    bool m_complete = false;
    std::vector<std::pair<std::size_t, SSectorFaults>> m_faults;
};

/// Copies the user data of all sectors, and collects their faults. Returns false if they cannot be read; only then is
/// no other thread using the file any more.
bool CopyUserData(CInputFile& file, const STrack& track, CCheckedOutput& output, CFaultRanges& faults,
                  COperation& operation) {
    CProgress progress(operation, track.sectors);
    file.Seek(track.position);
    COrderedPipeline<CTrackPiece> pieces(
        static_cast<std::uint64_t>((track.sectors + kPieceSectors - 1) / kPieceSectors), kWorkers,
        std::vector<CTrackPiece>(kSlots, CTrackPiece(track.mode)),
        [&](CTrackPiece& piece, std::uint64_t number) {
            const std::int64_t first = static_cast<std::int64_t>(number) * kPieceSectors;
            piece.Read(file, std::min(kPieceSectors, track.sectors - first));
        },
        [](CTrackPiece& piece, std::uint64_t, std::uint32_t) { piece.CheckAndKeepUserData(); });
    std::uint64_t done = 0;
    while (const CTrackPiece* piece = pieces.Next()) {
        if (!piece->IsComplete()) {
            return false;
        }
        for (const auto& [sector, found] : piece->Faults()) {
            faults.Add(done + sector, TextOf(found));
        }
        output.WriteOrFail(piece->Data());
        done += piece->Sectors();
        progress.Advance(static_cast<std::int64_t>(piece->Sectors()));
    }
    return true;
}

/// What the user data of the track's sectors does not hold or not correctly.
std::vector<std::string> ProblemsOf(const STrack& track, const CFaultRanges& faults) {
    std::vector<std::string> problems = faults.Lines();
    if (problems.size() > kMostListedRanges) {
        const std::size_t others = problems.size() - kMostListedRanges;
        problems.resize(kMostListedRanges);
        problems.push_back(Format("%zu more ranges of damaged sectors", others));
    }
    if (track.leftOver != 0) {
        problems.push_back(Format("not whole sectors of %zu bytes: %d bytes are left over", SectorSizeOf(track.mode),
                                  static_cast<int>(track.leftOver)));
    }
    return problems;
}

/// Reads what the input contains, and opens the file of its data track.
SRawDisc OpenDataTrack(const std::string& path, CCheckedInput& file, COperation& operation) {
    try {
        SRawDisc disc = ReadRawDisc(path);
        file.OpenOrFail(disc.DataTrack().path, "Code 2011 - Error Opening %s");
        RequireDataSectors(disc.DataTrack(), file);
        return disc;
    } catch (const CRefused& refused) {
        operation.Fail(refused.what());
    }
}

/// Each problem in a line of its own, behind the file that has it.
void AddLines(std::string& text, const std::string& path, const std::vector<std::string>& problems) {
    for (const std::string& problem : problems) {
        text.append(text.empty() ? "" : "\n").append(path).append(": ").append(problem);
    }
}

}  // namespace

void ConvertDataTrack(const SBinToIsoRequest& request, COperation& operation) {
    CCheckedInput file(operation);
    CCheckedOutput output(operation);
    const SRawDisc disc = OpenDataTrack(request.inputPath, file, operation);
    const STrack& track = disc.DataTrack();
    output.OpenOrFail(request.outputPath, request.manner, "Code 2021 - Error Opening %s");
    CFaultRanges faults("sector");
    if (!CopyUserData(file, track, output, faults, operation)) {
        file.FailIncomplete();
    }
    std::string problems;
    AddLines(problems, track.path, ProblemsOf(track, faults));
    if (!problems.empty() && !request.ignoreErrors) {
        operation.Fail(problems);
    }
    output.CommitOrFail();
    for (const STrack& other : disc.OtherTracks()) {
        AddLines(problems, request.inputPath, {TextOfLeftOut(other)});
    }
    if (!problems.empty()) {
        operation.Warn(problems);
    }
}

}  // namespace vantrel
