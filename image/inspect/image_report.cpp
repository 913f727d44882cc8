#include "image/inspect/image_report.h"

#include "iso/contents.h"
#include "iso/volume.h"
#include "operation/text.h"

namespace vantrel {

namespace {

constexpr std::int64_t kPostgapSectors = 150;

const char* KindName(EMedia media) {
    switch (media) {
        case EMedia::Cd:
            return "PlayStation 2 CD";
        case EMedia::Dvd:
            return "PlayStation 2 DVD";
        case EMedia::Umd:
            return "PSP UMD";
        case EMedia::Unknown:
            break;
    }
    return "other";
}

/// Only a PlayStation 2 CD has a postgap; its volume size counts it, so an image that is 150 sectors short lacks it.
const char* PostgapState(EMedia media, std::int64_t sectors, std::int64_t volumeSectors) {
    if (media != EMedia::Cd) {
        return "not needed";
    }
    if (sectors == volumeSectors) {
        return "complete";
    }
    return sectors + kPostgapSectors == volumeSectors ? "missing" : "the length fits no postgap";
}

}  // namespace

Report ReportOnImage(CByteSource& image) {
    const SPrimaryVolumeDescriptor volume = ReadPrimaryVolume(image);
    const SContents contents = ReadContents(image);
    const EMedia media = MediaOf(MediaKeyOf(volume));
    const std::int64_t sectors = image.Size() / kSectorSize;
    const std::uint32_t volumeSectors = volume.volumeSpaceSize.Value();
    Report report;
    report["kind"] = KindName(media);
    report["system_identifier"] = FieldText(volume.systemIdentifier);
    report["volume_identifier"] = FieldText(volume.volumeIdentifier);
    report["application_identifier"] = FieldText(volume.applicationIdentifier);
    report["bytes"] = image.Size();
    report["sectors"] = sectors;
    report["volume_sectors"] = volumeSectors;
    report["postgap"] = PostgapState(media, sectors, volumeSectors);
    report["files"] = contents.files.size();
    report["folders"] = contents.folders;
    return report;
}

std::vector<std::string> ImageProblems(CByteSource& image) {
    std::vector<std::string> problems;
    const std::int64_t bytes = image.Size();
    const std::int64_t volumeBytes = ReadPrimaryVolume(image).volumeSpaceSize.Value() * kSectorSize;
    if (bytes % kSectorSize != 0) {
        problems.push_back(Format("the image is not a whole number of sectors: %lld bytes are left over",
                                  static_cast<long long>(bytes % kSectorSize)));
    }
    if (bytes / kSectorSize != volumeBytes / kSectorSize) {
        problems.push_back(Format("the image has %lld sectors, its volume descriptor says %lld",
                                  static_cast<long long>(bytes / kSectorSize),
                                  static_cast<long long>(volumeBytes / kSectorSize)));
    }
    for (const SContentFile& file : ReadContents(image).files) {
        if (!file.inside) {
            problems.push_back(
                Format("%s (sector %u, %u bytes) lies outside the image", file.path.c_str(), file.sector, file.size));
        }
    }
    return problems;
}

}  // namespace vantrel
