#include "image/inspect/container_report.h"

#include <cmath>

#include "compress/cso_reader.h"
#include "compress/dax_reader.h"
#include "files/refused.h"
#include "image/inspect/raw_report.h"
#include "operation/text.h"

namespace vantrel {

namespace {

constexpr std::uint32_t kUsualHeaderSize = 24;
constexpr std::uint32_t kUsualBlockSize = 2048;

/// Stored bytes as a percentage of the image's bytes, with one decimal.
double RatioPercent(std::int64_t stored, std::uint64_t image) {
    return image > 0 ? std::round(1000.0 * static_cast<double>(stored) / static_cast<double>(image)) / 10 : 0.0;
}

[[noreturn]] void RefuseUnreadable(const std::string& path) {
    throw CRefused(path + ": cannot read the whole file");
}

std::int64_t SizeOrRefuse(const std::string& path) {
    const std::int64_t size = FileSizeOf(path);
    if (size < 0) {
        RefuseUnreadable(path);
    }
    return size;
}

void OpenCso(CCsoReader& cso, const std::string& path) {
    if (!cso.Open(path) || cso.ReadHeader() != ECsoFault::None || cso.ReadIndex() != ECsoFault::None) {
        RefuseUnreadable(path);
    }
}

std::vector<std::string> CsoOddities(const CCsoReader& cso, std::int64_t fileSize) {
    const CsoHeader& header = cso.Header();
    std::vector<std::string> oddities;
    const auto addIf = [&oddities](bool odd, const char* text) {
        if (odd) {
            oddities.emplace_back(text);
        }
    };
    addIf(header.header_size != 0 && header.header_size != kUsualHeaderSize, "the header size is neither 0 nor 24");
    addIf(header.block_size != kUsualBlockSize, "blocks are not 2048 bytes");
    addIf(header.align != 0, "positions are shifted");
    addIf(header.reserved[0] != 0 || header.reserved[1] != 0, "reserved bytes are not zero");
    addIf(header.total_bytes % kUsualBlockSize != 0, "the image is not a whole number of sectors");
    addIf(cso.MissingBytes() != 0, "the image's partial last block is not stored");
    const std::uint64_t end = std::uint64_t{cso.Entry(cso.BlockCount()) & ~kCsoPlainBlock} << header.align;
    addIf(end != static_cast<std::uint64_t>(fileSize), "the index does not end at the end of the file");
    return oddities;
}

CReport ReportOnCso(const std::string& path) {
    CCsoReader cso(true);
    OpenCso(cso, path);
    const std::int64_t fileSize = SizeOrRefuse(path);
    std::uint64_t plain = 0;
    for (std::uint64_t block = 0; block < cso.BlockCount(); ++block) {
        plain += cso.IsPlain(block) ? 1 : 0;
    }
    const CsoHeader& header = cso.Header();
    return {{"header_size", header.header_size},
            {"total_bytes", header.total_bytes},
            {"block_size", header.block_size},
            {"version", header.version},
            {"align", header.align},
            {"blocks", cso.BlockCount()},
            {"plain_blocks", plain},
            {"ratio_percent", RatioPercent(fileSize, header.total_bytes)},
            {"oddities", CsoOddities(cso, fileSize)}};
}

std::vector<std::string> DaxOddities(const CDaxReader& dax, std::int64_t fileSize) {
    std::vector<std::string> oddities;
    const DaxHeader& header = dax.Header();
    bool inOrder = true;
    std::uint64_t end = DaxHeader::kSize + std::uint64_t{dax.FrameCount()} * (kDaxPositionSize + kDaxLengthSize) +
                        std::uint64_t{dax.AreaCount()} * kDaxAreaSize;
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

CReport ReportOnDax(const std::string& path) {
    CDaxReader dax(true);
    if (!dax.Open(path) || dax.ReadHeader() != EDaxFault::None || dax.ReadTables() != EDaxFault::None) {
        RefuseUnreadable(path);
    }
    const std::int64_t fileSize = SizeOrRefuse(path);
    std::uint32_t plain = 0;
    for (std::uint32_t frame = 0; frame < dax.FrameCount(); ++frame) {
        plain += dax.IsPlain(frame) ? 1 : 0;
    }
    return {{"image_size", dax.Header().image_size},
            {"version", dax.Header().version},
            {"frames", dax.FrameCount()},
            {"plain_frames", plain},
            {"ratio_percent", RatioPercent(fileSize, dax.Header().image_size)},
            {"oddities", DaxOddities(dax, fileSize)}};
}

}  // namespace

std::optional<CReport> ReportOnContainer(const std::string& path, EForm form) {
    switch (form) {
        case EForm::Cso:
            return ReportOnCso(path);
        case EForm::Dax:
            return ReportOnDax(path);
        case EForm::Bin:
        case EForm::Cue:
            return ReportOnRawImage(path);
        case EForm::Iso:
        case EForm::Zso:
        case EForm::Iml:
        case EForm::Unknown:
            break;
    }
    return std::nullopt;
}

std::vector<std::string> ContainerProblems(const std::string& path, EForm form) {
    if (form != EForm::Cso) {
        return {};
    }
    CCsoReader cso(true);
    OpenCso(cso, path);
    if (cso.MissingBytes() == 0) {
        return {};
    }
    return {Format("the last %llu bytes of the image are no whole block and are not stored",
                   static_cast<unsigned long long>(cso.MissingBytes()))};
}

}  // namespace vantrel
