#include "console/container_report.h"

#include <cmath>

#include "compress/cso_reader.h"

namespace vantrel {

namespace {

constexpr std::uint32_t kUsualHeaderSize = 24;
constexpr std::uint32_t kUsualBlockSize = 2048;

/// Stored bytes in percent of the image's, to one decimal.
double RatioPercent(std::int64_t stored, std::uint64_t image) {
    return image > 0 ? std::round(1000.0 * static_cast<double>(stored) / static_cast<double>(image)) / 10 : 0.0;
}

Report CsoOddities(const CCsoReader& cso) {
    const CsoHeader& header = cso.Header();
    Report oddities = Report::array();
    const auto tell = [&oddities](bool odd, const std::string& text) {
        if (odd) {
            oddities.push_back(text);
        }
    };
    tell(header.header_size != 0 && header.header_size != kUsualHeaderSize, "the header size is neither 0 nor 24");
    tell(header.block_size != kUsualBlockSize, "blocks are not 2048 bytes");
    tell(header.version > 1, "the version is above 1");
    tell(header.align != 0, "positions are shifted");
    tell(header.reserved[0] != 0 || header.reserved[1] != 0, "reserved bytes are not zero");
    tell(header.total_bytes % header.block_size != 0, "the image's partial last block is not stored");
    const std::uint64_t end = std::uint64_t{cso.Entry(cso.BlockCount()) & ~kCsoPlainBlock} << (header.align & 31U);
    tell(end != static_cast<std::uint64_t>(cso.FileSize()), "the index does not end at the end of the file");
    return oddities;
}

Report ReportOnCso(const std::string& path) {
    CCsoReader cso;
    Report report;
    if (!cso.Open(path) || cso.ReadHeader() != ECsoFault::None || cso.ReadIndex() != ECsoFault::None) {
        return report;
    }
    std::uint64_t plain = 0;
    for (std::uint64_t block = 0; block < cso.BlockCount(); ++block) {
        plain += cso.IsPlain(block) ? 1 : 0;
    }
    const CsoHeader& header = cso.Header();
    report["header_size"] = header.header_size;
    report["total_bytes"] = header.total_bytes;
    report["block_size"] = header.block_size;
    report["version"] = header.version;
    report["align"] = header.align;
    report["blocks"] = cso.BlockCount();
    report["plain_blocks"] = plain;
    report["ratio_percent"] = RatioPercent(cso.FileSize(), header.total_bytes);
    report["oddities"] = CsoOddities(cso);
    return report;
}

}  // namespace

Report ReportOnContainer(const std::string& path, EForm form) {
    switch (form) {
        case EForm::Cso:
            return ReportOnCso(path);
        case EForm::Dax:
        case EForm::Bin:
        case EForm::Iso:
        case EForm::Iml:
        case EForm::Cue:
        case EForm::Unknown:
            break;
    }
    return Report::object();
}

}  // namespace vantrel
