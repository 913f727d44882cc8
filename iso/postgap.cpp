#include "iso/postgap.h"

#include <algorithm>
#include <string_view>

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
        if (m_request.strict) {
            m_image.FailIfUnread();
            Check();
        }
    }

    ImageKind Kind() const { return KindBySystem(m_volume); }

    /// Whether the image is as long as its volume. The length is taken as a signed 32-bit number.
    bool IsComplete() {
        const auto length = static_cast<std::int32_t>(static_cast<std::uint32_t>(m_image.SizeOrFail()));
        return static_cast<std::uint32_t>(length / kSectorSize) == m_volume.volumeSpaceSize.Value();
    }

    /// Fails for a CD image that is neither as long as its volume nor shorter by a postgap.
    void CheckLength() {
        const std::int64_t sectors = m_image.SizeOrFail() / kSectorSize;
        const std::int64_t volume = m_volume.volumeSpaceSize.Value();
        if (PostgapStateOf(sectors, volume) == EPostgapState::Neither) {
            m_operation.Fail(
                Format("%s has %lld sectors, but its volume %lld: that is neither a complete image nor one "
                       "without its postgap",
                       m_request.imagePath.c_str(), static_cast<long long>(sectors), static_cast<long long>(volume)));
        }
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

    /// Sets the volume space size to the length of the image; returns it in sectors.
    std::int64_t CorrectVolumeSize() {
        m_image.ReopenOrFail("Code 13000 - Error Opening %s");
        const std::int64_t length = m_image.SizeOrFail();
        m_image.SeekOrFail(kVolumeSizePosition);
        m_image.WriteOrFail(VolumeSizeField(length));
        return length / kSectorSize;
    }

    /// Keeps the change and completes.
    void Finish(const std::string& doneText = kDoneText) {
        m_image.CommitOrFail();
        m_operation.SetPane(EPane::Status, doneText);
        m_operation.SetPane(EPane::File, m_request.imagePath);
        m_operation.Complete(doneText);
    }

    void Notify(const char* pattern) { m_operation.Notify(Format(pattern, m_request.imagePath.c_str())); }

    void WarnMissing() {
        m_operation.Warn(Format("This is PS2 CD iso image file ,without its postgap %s", m_request.imagePath.c_str()));
    }

    /// If not strict, only notifies.
    void RefuseDvd() {
        if (m_request.strict) {
            m_operation.Fail(Format("%s is a DVD image; no sectors are appended to one", m_request.imagePath.c_str()));
        }
        NotifyDvd();
    }

    void NotifyDvd() { Notify("This is PS2 DVD iso  image file ,doesn't needed to Write a postgap %s"); }

private:
    void Check() {
        static constexpr std::string_view kIdentifier = "CD001";
        // Every system identifier other than those of CD and UMD counts as that of a DVD.
        const bool isPs2 = m_volume.systemIdentifier[1] == 'L';
        if (!std::equal(kIdentifier.begin(), kIdentifier.end(), m_volume.standardIdentifier.begin()) ||
            (Kind() == ImageKind::Dvd && !isPs2)) {
            m_operation.Fail(
                Format("%s is no image of a PlayStation 2 CD or DVD or of a PSP UMD", m_request.imagePath.c_str()));
        }
        if (m_image.SizeOrFail() % kSectorSize != 0) {
            m_operation.Fail(Format("%s is no whole number of sectors long", m_request.imagePath.c_str()));
        }
    }

    const SPostgapRequest& m_request;
    COperation& m_operation;
    CCheckedUpdate m_image;
    SPrimaryVolumeDescriptor m_volume = {};
};

void CheckCd(CPostgapImage& image, CProgress& progress, const SPostgapRequest& request) {
    if (request.strict) {
        image.CheckLength();
    }
    if (image.IsComplete()) {
        image.Notify("This is PS2 CD/DVDRIP iso image file ,already Write a postgap %s");
    } else if (request.manner == EUpdateManner::ReadOnly) {
        image.WarnMissing();
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
    const ImageKind kind = image.Kind();
    if (kind == ImageKind::Cd) {
        CheckCd(image, progress, request);
    } else if (kind == ImageKind::Umd) {
        image.Notify("This is PSP UMD iso image file ,doesn't needed to Write a postgap %s");
    } else {
        image.NotifyDvd();
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
        image.RefuseDvd();
        return true;
    }
    // Only a UMD image grows; of a CD image only the volume size is corrected.
    const int appended = image.Kind() == ImageKind::Umd ? *request.sectors : 0;
    image.Append(progress, appended);
    const std::int64_t sectors = image.CorrectVolumeSize();
    image.Finish(request.strict ? Format("%d sectors appended, volume size set to %lld sectors", appended,
                                         static_cast<long long>(sectors))
                                : kDoneText);
    return true;
}

}  // namespace vantrel
