#include "iml/postgap.h"

#include <optional>

#include "files/byte_order.h"
#include "iml/image_kind.h"
#include "iml/volume_size.h"
#include "operation/frame.h"
#include "operation/text.h"

namespace vantrel {

namespace {

constexpr const char* kStartText = "checking ISO postgap, please Wait";
constexpr const char* kDoneText = "checking [cd] ISO done added postgap!";

/// An image that a postgap command works on.
class CPostgapImage {
public:
    CPostgapImage(const SPostgapRequest& request, COperation& operation) : m_request(request), m_operation(operation) {}

    void Open() {
        if (!m_image.Open(m_request.imagePath, m_request.manner)) {
            m_operation.Fail(Format("Code 401 - Error Opening %s", m_request.imagePath.c_str()));
        }
    }

    void Reopen() {
        if (!m_image.Reopen()) {
            m_operation.Fail(Format("Code 13000 - Error Opening %s", m_request.imagePath.c_str()));
        }
    }

    ImageKind Kind() {
        std::array<std::uint8_t, 1> system = {};
        std::array<std::uint8_t, 1> mark = {};
        m_image.ReadAt(kSystemIdentifierSecond, system);
        m_image.ReadAt(kXaMarkFirst, mark);
        CheckReading();
        return ImageKindOf(system[0], mark[0]);
    }

    /// Whether the image is as long as its volume. Its length is a signed 32-bit number here.
    bool IsComplete() {
        std::array<std::uint8_t, 4> volumeSize = {};
        m_image.ReadAt(kVolumeSizePosition, volumeSize);
        const std::int64_t size = m_image.Size();
        if (size < 0) {
            FailReading();  // in the window too: a complete image might get a second postgap
        }
        CheckReading();
        const auto length = static_cast<std::int32_t>(static_cast<std::uint32_t>(size));
        return static_cast<std::uint32_t>(length / kImageSector) == LoadLe32(volumeSize);
    }

    /// Appends `sectors` sectors of zeros; their position.
    std::int64_t Append(std::int64_t sectors) {
        static constexpr std::array<std::uint8_t, kImageSector> kZeros = {};
        const std::int64_t end = m_image.Size();
        Seek(end);
        for (std::int64_t i = 0; i < sectors; ++i) {
            Write(kZeros);
            m_operation.StepProgress();
            m_operation.SetPane(EPane::Percent, PercentText(PercentOf(i + 1, sectors)));
            m_operation.PumpMessages();
        }
        return end;
    }

    void WriteAt(std::int64_t position, std::span<const std::uint8_t> bytes) {
        Seek(position);
        Write(bytes);
    }

    void CorrectVolumeSize() {
        const std::int64_t length = m_image.Size();
        Seek(length);  // an unknown length is no place
        WriteAt(kVolumeSizePosition, VolumeSizeField(length));
    }

    /// Keeps the change, and completes.
    void Finish() {
        if (!m_image.Commit()) {
            m_operation.Fail(m_image.FailureText());
        }
        m_operation.SetPane(EPane::Status, kDoneText);
        m_operation.SetPane(EPane::File, m_request.imagePath);
        m_operation.Complete(kDoneText);
    }

    void Tell(const char* before) { m_operation.Notify(before + m_request.imagePath); }

private:
    /// The window takes what cannot be read for zeros; elsewhere nothing is said of an image that was not read.
    void CheckReading() {
        if (m_request.manner != EUpdateManner::InPlace && m_image.HasFailedReading()) {
            FailReading();
        }
    }

    [[noreturn]] void FailReading() { m_operation.Fail(Format("Cannot read %s", m_request.imagePath.c_str())); }

    void Seek(std::int64_t position) {
        if (!m_image.Seek(position)) {
            m_operation.Fail(Format("Cannot write %s", m_request.imagePath.c_str()));
        }
    }

    void Write(std::span<const std::uint8_t> bytes) {
        if (!m_image.Write(bytes)) {
            m_operation.Fail(m_image.FailureText());
        }
    }

    const SPostgapRequest& m_request;
    COperation& m_operation;
    CUpdateFile m_image;
};

void TellDvd(CPostgapImage& image) {
    image.Tell("This is PS2 DVD iso  image file ,doesn't needed to Write a postgap ");
}

void AppendMissingPostgap(CPostgapImage& image) {
    const std::int64_t start = image.Append(kPostgapSectors);
    image.WriteAt(start, kPostgapMark);
    image.Finish();
}

void CheckCd(CPostgapImage& image, const SPostgapRequest& request) {
    if (image.IsComplete()) {
        image.Tell("This is PS2 CD/DVDRIP iso image file ,already Write a postgap ");
    } else if (request.manner == EUpdateManner::ReadOnly) {
        image.Tell("This is PS2 CD iso image file ,without its postgap ");
    } else {
        AppendMissingPostgap(image);
    }
}

}  // namespace

void CheckPostgap(const SPostgapRequest& request, COperation& operation) {
    operation.SetPane(EPane::Status, kStartText);
    DisableCommands(operation, {ECommand::IsoToIml, ECommand::Vantrel, ECommand::IsoToBin, ECommand::BinToIso,
                                ECommand::CheckPostgap, ECommand::DaxToIso, ECommand::IsoToDax, ECommand::IsoToCso,
                                ECommand::CsoToIso});
    CPostgapImage image(request, operation);
    image.Open();
    const ImageKind kind = image.Kind();
    operation.StartProgress(static_cast<std::int32_t>(kPostgapSectors), EProgressFill::Cd);
    switch (kind) {
        case ImageKind::Dvd:
            TellDvd(image);
            break;
        case ImageKind::Umd:
            image.Tell("This is PSP UMD iso image file ,doesn't needed to Write a postgap ");
            break;
        case ImageKind::Cd:
            CheckCd(image, request);
            break;
    }
    operation.EnableCommand(ECommand::Browse, true);
    operation.AcceptDroppedFiles();
}

void AddSelectivePostgap(const SPostgapRequest& request, COperation& operation) {
    operation.SetPane(EPane::Status, kStartText);
    DisableCommands(operation, {ECommand::IsoToIml, ECommand::Vantrel, ECommand::IsoToBin, ECommand::BinToIso,
                                ECommand::CheckPostgap, ECommand::DaxToIso, ECommand::IsoToDax});
    CPostgapImage image(request, operation);
    image.Open();
    const ImageKind kind = image.Kind();
    const std::optional<int> count = operation.CompressionLevel();
    if (!count) {
        return;
    }
    operation.EnableCommand(ECommand::CompressionLevel, false);
    operation.StartProgress(*count, EProgressFill::Cd);
    if (kind == ImageKind::Dvd) {
        TellDvd(image);
    } else {
        // Only a UMD image grows; a CD image is only counted anew.
        if (kind == ImageKind::Umd) {
            image.Append(*count);
        }
        image.Reopen();
        image.CorrectVolumeSize();
        image.Finish();
    }
    operation.EnableCommand(ECommand::Browse, true);
    operation.AcceptDroppedFiles();
}

}  // namespace vantrel
