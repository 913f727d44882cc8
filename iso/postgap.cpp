#include "iso/postgap.h"

#include "files/checked_file.h"
#include "iso/volume.h"
#include "operation/progress.h"
#include "operation/text.h"

namespace vantrel {

namespace {

constexpr const char* kStartText = "checking ISO postgap, please Wait";
constexpr const char* kDoneText = "checking [cd] ISO done added postgap!";

/// The image that a postgap command works on.
class CPostgapImage {
public:
    CPostgapImage(const SPostgapRequest& request, COperation& operation)
        : m_request(request), m_operation(operation), m_image(operation) {
        m_image.OpenOrFail(request.imagePath, request.manner, "Code 401 - Error Opening %s");
        m_volume = ReadPrimaryVolume(m_image);
        FailIfUnread();
    }

    ImageKind Kind() const { return KindBySystem(m_volume); }

    /// Whether the image is as long as its volume. The length is taken as a signed 32-bit number.
    bool IsComplete() {
        const auto length = static_cast<std::int32_t>(static_cast<std::uint32_t>(m_image.SizeOrFail()));
        return static_cast<std::uint32_t>(length / kSectorSize) == m_volume.volumeSpaceSize.Value();
    }

    /// Appends `count` sectors of zeros with `mark` at their start.
    void Append(CProgress& progress, std::int64_t count, std::span<const std::uint8_t> mark = {}) {
        static constexpr std::array<std::uint8_t, kSectorSize> kZeros = {};
        const std::int64_t end = m_image.SizeOrFail();
        m_image.SeekOrFail(end);
        for (std::int64_t i = 0; i < count; ++i) {
            m_image.WriteOrFail(kZeros);
            progress.Advance();
        }
        m_image.SeekOrFail(end);
        m_image.WriteOrFail(mark);
    }

    void CorrectVolumeSize() {
        m_image.ReopenOrFail("Code 13000 - Error Opening %s");
        const std::int64_t length = m_image.SizeOrFail();
        m_image.SeekOrFail(kVolumeSizePosition);
        m_image.WriteOrFail(VolumeSizeField(length));
    }

    /// Keeps the change and completes.
    void Finish() {
        m_image.CommitOrFail();
        m_operation.SetPane(EPane::Status, kDoneText);
        m_operation.SetPane(EPane::File, m_request.imagePath);
        m_operation.Complete(kDoneText);
    }

    void Notify(const char* pattern) { m_operation.Notify(Format(pattern, m_request.imagePath.c_str())); }

    void NotifyDvd() { Notify("This is PS2 DVD iso  image file ,doesn't needed to Write a postgap %s"); }

private:
    /// The window takes unreadable bytes as zeros.
    void FailIfUnread() {
        if (m_request.strict) {
            m_image.FailIfUnread();
        }
    }

    const SPostgapRequest& m_request;
    COperation& m_operation;
    CCheckedUpdate m_image;
    SPrimaryVolumeDescriptor m_volume = {};
};

void CheckCd(CPostgapImage& image, CProgress& progress, EUpdateManner manner) {
    if (image.IsComplete()) {
        image.Notify("This is PS2 CD/DVDRIP iso image file ,already Write a postgap %s");
    } else if (manner == EUpdateManner::ReadOnly) {
        image.Notify("This is PS2 CD iso image file ,without its postgap %s");
    } else {
        image.Append(progress, kPostgapSectors, kPostgapMark);
        image.Finish();
    }
}

}  // namespace

void CheckPostgap(const SPostgapRequest& request, COperation& operation) {
    operation.SetPane(EPane::Status, kStartText);
    operation.Begin(EConversion::CheckPostgap);
    CPostgapImage image(request, operation);
    CProgress progress(operation, kPostgapSectors);
    switch (image.Kind()) {
        case ImageKind::Unknown:
        case ImageKind::Dvd:
            image.NotifyDvd();
            break;
        case ImageKind::Umd:
            image.Notify("This is PSP UMD iso image file ,doesn't needed to Write a postgap %s");
            break;
        case ImageKind::Cd:
            CheckCd(image, progress, request.manner);
            break;
    }
}

bool AddSelectivePostgap(const SPostgapRequest& request, COperation& operation) {
    operation.SetPane(EPane::Status, kStartText);
    operation.Begin(EConversion::AddPostgap);
    CPostgapImage image(request, operation);
    if (!request.sectors) {
        return false;
    }
    CProgress progress(operation, *request.sectors);
    if (image.Kind() == ImageKind::Dvd) {
        image.NotifyDvd();
        return true;
    }
    // Only a UMD image grows; of a CD image only the volume size is corrected.
    if (image.Kind() == ImageKind::Umd) {
        image.Append(progress, *request.sectors);
    }
    image.CorrectVolumeSize();
    image.Finish();
    return true;
}

}  // namespace vantrel
