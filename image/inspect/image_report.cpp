#include "image/inspect/image_report.h"

#include <algorithm>
#include <span>

#include "image/inspect/title.h"
#include "iso/contents.h"
#include "iso/volume.h"
#include "operation/text.h"

namespace vantrel {

namespace {

const char* KindName(ImageKind kind) {
    switch (kind) {
        case ImageKind::Cd:
            return "PlayStation 2 CD";
        case ImageKind::Dvd:
            return "PlayStation 2 DVD";
        case ImageKind::Umd:
            return "PSP UMD";
        case ImageKind::Unknown:
            break;
    }
    return "other";
}

/// Only a PlayStation 2 CD has a postgap.
const char* PostgapText(ImageKind kind, std::int64_t sectors, std::int64_t volumeSectors) {
    if (kind != ImageKind::Cd) {
        return "not needed";
    }
    switch (PostgapStateOf(sectors, volumeSectors)) {
        case EPostgapState::Complete:
            return "complete";
        case EPostgapState::Missing:
            return "missing";
        case EPostgapState::Neither:
            break;
    }
    return "the length fits no postgap";
}

/// A text field without the blanks and zeros that pad it, and with control characters as '?'.
std::string FieldText(std::span<const std::uint8_t> field) {
    std::string text(field.begin(), field.end());
    text.erase(text.find_last_not_of(std::string(" \0", 2)) + 1);
    std::replace_if(
        text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7F'; }, '?');
    return text;
}

}  // namespace

CReport ReportOnImage(CByteSource& image) {
    const SPrimaryVolumeDescriptor volume = ReadPrimaryVolume(image);
    const SContents contents = ReadContents(image);
    const ImageKind kind = KindByApplication(volume);
    const std::int64_t sectors = image.Size() / kSectorSize;
    const std::uint32_t volumeSectors = volume.volumeSpaceSize.Value();
    CReport report = {{"kind", KindName(kind)},
                      {"system_identifier", FieldText(volume.systemIdentifier)},
                      {"volume_identifier", FieldText(volume.volumeIdentifier)},
                      {"application_identifier", FieldText(volume.applicationIdentifier)},
                      {"bytes", image.Size()},
                      {"sectors", sectors},
                      {"volume_sectors", volumeSectors},
                      {"postgap", PostgapText(kind, sectors, volumeSectors)},
                      {"files", contents.files.size()},
                      {"folders", contents.folders.size()}};
    const STitle title = ReadTitle(image, contents);
    if (!title.name.empty()) {
        report.Add("title", title.name);
    }
    if (!title.discId.empty()) {
        report.Add("disc_id", title.discId);
    }
    return report;
}

}  // namespace vantrel
