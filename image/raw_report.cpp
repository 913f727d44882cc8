#include "image/raw_report.h"

#include <array>

#include "files/input_file.h"
#include "files/refused.h"
#include "operation/text.h"

namespace vantrel {

namespace {

/// Numbers of sectors, in the order of ESectorKind.
using KindCounts = std::array<std::int64_t, 5>;

/// "00:02:16", as the header holds it in BCD.
std::string AddressText(const std::uint8_t* address) {
    return Format("%02x:%02x:%02x", address[0], address[1], address[2]);
}

/// Counts the sectors of a track by kind, and adds the address of the first one to the report.
KindCounts CountKinds(const STrack& track, CReport& report) {
    CInputFile file;
    if (!file.Open(track.path)) {
        throw CRefused(track.path + ": " + LastFileError());
    }
    file.Seek(track.position);
    KindCounts counts = {};
    std::vector<std::uint8_t> sector(SectorSizeOf(track.mode));
    for (std::int64_t i = 0; i < track.sectors && file.Read(sector) == sector.size(); ++i) {
        const std::uint8_t* const address = StoredAddress(track.mode, sector);
        if (i == 0 && address) {
            report.Add("first_address", AddressText(address));
        }
        ++counts[static_cast<std::size_t>(KindOf(track.mode, sector))];
    }
    if (file.HasFailed()) {
        throw CRefused(track.path + ": cannot read the whole file");
    }
    return counts;
}

}  // namespace

CReport ReportOnRawImage(const SRawDisc& disc) {
    CReport report;
    if (disc.hasSheet) {
        report.Add("tracks", ReportOnTracks(disc));
    }
    const KindCounts counts = CountKinds(disc.DataTrack(), report);
    const auto countOf = [&counts](ESectorKind kind) { return counts[static_cast<std::size_t>(kind)]; };
    report.Add("sectors", disc.DataTrack().sectors);
    report.Add("mode_1", countOf(ESectorKind::Mode1));
    report.Add("mode_2_form_1", countOf(ESectorKind::Mode2Form1));
    report.Add("mode_2_form_2", countOf(ESectorKind::Mode2Form2));
    report.Add("other", countOf(ESectorKind::Other));
    report.Add("audio", countOf(ESectorKind::Audio));
    return report;
}

CReport::List ReportOnTracks(const SRawDisc& disc) {
    CReport::List tracks;
    for (const STrack& track : disc.tracks) {
        tracks.push_back({{"number", track.number},
                          {"mode", NameOf(track.mode)},
                          {"sectors", track.sectors < 0 ? CReport() : CReport(track.sectors)},
                          {"file", track.path}});
    }
    return tracks;
}

}  // namespace vantrel
