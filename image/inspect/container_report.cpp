#include "image/inspect/container_report.h"

#include <array>
#include <cmath>

#include "compress/cso_reader.h"
#include "compress/dax_reader.h"
#include "console/open_image.h"
#include "console/refused.h"
#include "files/input_file.h"
#include "operation/text.h"
#include "raw/sector_check.h"

namespace vantrel {

namespace {

constexpr std::uint32_t kUsualHeaderSize = 24;
constexpr std::uint32_t kUsualBlockSize = 2048;

/// Stored bytes in percent of the image's, to one decimal.
double RatioPercent(std::int64_t stored, std::uint64_t image) {
    return image > 0 ? std::round(1000.0 * static_cast<double>(stored) / static_cast<double>(image)) / 10 : 0.0;
}

/// For a file that could be opened a moment ago.
[[noreturn]] void RefuseUnreadable(const std::string& path) {
    throw CRefused(path + ": it cannot be read in full");
}

Report CsoOddities(const CCsoReader& cso, std::int64_t fileSize) {
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
    tell(end != static_cast<std::uint64_t>(fileSize), "the index does not end at the end of the file");
    return oddities;
}

Report ReportOnCso(const std::string& path) {
    CCsoReader cso;
    Report report;
    if (!cso.Open(path) || cso.ReadHeader() != ECsoFault::None || cso.ReadIndex() != ECsoFault::None) {
        RefuseUnreadable(path);
    }
    const std::int64_t fileSize = SizeOrRefuse(path);
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
    report["ratio_percent"] = RatioPercent(fileSize, header.total_bytes);
    report["oddities"] = CsoOddities(cso, fileSize);
    return report;
}

Report DaxOddities(const CDaxReader& dax, std::int64_t fileSize) {
    Report oddities = Report::array();
    const DaxHeader& header = dax.Header();
    bool inOrder = true;
    std::uint64_t end = DaxHeader::kSize + std::uint64_t{dax.FrameCount()} * (kDaxPositionSize + kDaxLengthSize);
    for (std::uint32_t frame = 0; frame < dax.FrameCount(); ++frame) {
        inOrder = inOrder && dax.Position(frame) == end;
        end = std::uint64_t{dax.Position(frame)} + dax.Length(frame);
    }
    if (!inOrder) {
        oddities.push_back("frames do not follow one another without gaps");
    }
    if (end != static_cast<std::uint64_t>(fileSize)) {
        oddities.push_back("the last frame does not end at the end of the file");
    }
    if (header.image_size % kUsualBlockSize != 0) {
        oddities.push_back("the image is not a whole number of sectors");
    }
    return oddities;
}

Report ReportOnDax(const std::string& path) {
    CDaxReader dax;
    Report report;
    if (!dax.Open(path) || dax.ReadHeader() != EDaxFault::None || dax.ReadTables() != EDaxFault::None) {
        RefuseUnreadable(path);
    }
    const std::int64_t fileSize = SizeOrRefuse(path);
    report["image_size"] = dax.Header().image_size;
    report["frames"] = dax.FrameCount();
    report["ratio_percent"] = RatioPercent(fileSize, dax.Header().image_size);
    report["oddities"] = DaxOddities(dax, fileSize);
    return report;
}

/// "02:00:16" is written as it stands in the header: minute, second, frame in BCD.
std::string AddressText(std::span<const std::uint8_t, kRawSectorSize> sector) {
    return Format("%02x:%02x:%02x", sector[kAddressOffset], sector[kAddressOffset + 1], sector[kAddressOffset + 2]);
}

Report ReportOnBin(const std::string& path) {
    CInputFile file;
    Report report;
    if (!file.Open(path)) {
        RefuseUnreadable(path);
    }
    std::array<std::uint32_t, 4> kinds = {};
    std::array<std::uint8_t, kRawSectorSize> sector = {};
    std::uint32_t count = 0;
    for (; file.Read(sector) == sector.size(); ++count) {
        if (count == 0) {
            report["first_address"] = AddressText(sector);
        }
        ++kinds[static_cast<std::size_t>(KindOfSector(sector))];
    }
    if (file.HasFailed()) {
        RefuseUnreadable(path);
    }
    report["sectors"] = count;
    report["mode_1"] = kinds[static_cast<std::size_t>(ESectorKind::Mode1)];
    report["mode_2_form_1"] = kinds[static_cast<std::size_t>(ESectorKind::Mode2Form1)];
    report["mode_2_form_2"] = kinds[static_cast<std::size_t>(ESectorKind::Mode2Form2)];
    report["other"] = kinds[static_cast<std::size_t>(ESectorKind::Other)];
    return report;
}

}  // namespace

Report ReportOnContainer(const std::string& path, EForm form) {
    switch (form) {
        case EForm::Cso:
            return ReportOnCso(path);
        case EForm::Dax:
            return ReportOnDax(path);
        case EForm::Bin:
            return ReportOnBin(path);
        case EForm::Iso:
        case EForm::Iml:
        case EForm::Cue:
        case EForm::Unknown:
            break;
    }
    return Report::object();
}

std::vector<std::string> ContainerProblems(const std::string& path, EForm form) {
    if (form != EForm::Cso) {
        return {};
    }
    CCsoReader cso;
    if (!cso.Open(path) || cso.ReadHeader() != ECsoFault::None) {
        RefuseUnreadable(path);
    }
    const std::uint64_t left = cso.Header().total_bytes % cso.Header().block_size;
    if (left == 0) {
        return {};
    }
    return {Format("the last %llu bytes of the image are no whole block and are not stored",
                   static_cast<unsigned long long>(left))};
}

}  // namespace vantrel
