#include "iml/rebuild/kept_structures.h"

#include <algorithm>

#include "iml/layout/trailing_sector.h"
#include "iml/rebuild/listed_files.h"
#include "iso/volume.h"
#include "operation/text.h"

namespace vantrel {

CKeptStructures::CKeptStructures(const SRebuildRequest& request, bool isDvd, COperation& operation)
    : m_request(request),
      m_isExact(request.rule == ERebuildRule::Exact),
      m_isDvd(isDvd),
      m_operation(operation),
      m_leading(operation) {}

void CKeptStructures::OpenOrFail(std::uint32_t leadingLast) {
    OpenLeading(leadingLast);
    OpenGaps();
    if (m_gaps) {
        CheckOrigin();
    }
}

void CKeptStructures::OpenLeading(std::uint32_t leadingLast) {
    m_leading.OpenOrFail(m_request.leadingPath, "Code 204!!! file not found==> %s");
    m_leadingLength = m_leading.SizeOrFail() - (m_isDvd ? kSectorSize : 0);
    if (ReplacesLeading(m_request)) {
        m_operation.Fail(Format("The image would replace %s", m_request.leadingPath.c_str()));
    }
    if (m_leadingLength < 0 || m_leadingLength / kSectorSize <= leadingLast) {
        m_operation.Fail(Format("The file %s is shorter than the layout says", m_request.leadingPath.c_str()));
    }
}

void CKeptStructures::OpenGaps() {
    if (FileKindOf(m_request.gapsPath) == EFileKind::Missing) {
        if (m_isExact) {
            m_operation.Fail(
                Format("%s is missing: an exact rebuild needs the gap file that \"vantrel iso2iml --extract\" writes",
                       m_request.gapsPath.c_str()));
        }
        m_notices.push_back(
            Format("There is no %s: whatever no listed file covers becomes zeros, and files of their recorded length "
                   "count as unchanged. \"vantrel iso2iml --extract\" writes that file",
                   m_request.gapsPath.c_str()));
        return;
    }
    m_gaps.emplace();
    if (!m_gaps->Open(m_request.gapsPath)) {
        m_operation.Fail(m_gaps->Problem());
    }
    if (m_gaps->Origin().image.length / kSectorSize >= kSectorLimit) {
        m_operation.Fail(Format("%s describes an image larger than any disc", m_request.gapsPath.c_str()));
    }
}

/// A gap file belongs to a layout and its leading structures. An edited rebuild accepts a change of one of them.
void CKeptStructures::CheckOrigin() {
    CCheckedInput layout(m_operation);
    layout.OpenOrFail(m_request.layoutPath, "Code 2011 - Error Opening %s");
    const bool isLayout = SumOrFail(layout, m_operation) == m_gaps->Origin().layout;
    m_isLeadingUnchanged = SumOrFail(m_leading, m_operation) == m_gaps->Origin().leading;
    if (m_isExact && !isLayout) {
        m_operation.Fail(
            Format("%s belongs to another layout than %s: an exact rebuild needs both as one export wrote them",
                   m_request.gapsPath.c_str(), m_request.layoutPath.c_str()));
    }
    if (!isLayout && !m_isLeadingUnchanged) {
        m_operation.Fail(Format("%s belongs to another layout than %s; move it away to rebuild without it",
                                m_request.gapsPath.c_str(), m_request.layoutPath.c_str()));
    }
    if (!m_isExact && !m_isLeadingUnchanged) {
        m_notices.push_back(Format("%s has changed since the export", m_request.leadingPath.c_str()));
    }
}

std::int64_t CKeptStructures::ImageLengthOrFail(std::int64_t filesEnd) {
    if (m_gaps) {
        return m_gaps->Origin().image.length;
    }
    const std::int64_t volumeEnd = ReadPrimaryVolume(m_leading).volumeSpaceSize.Value();
    const std::int64_t anchorEnd = m_isDvd ? std::int64_t{TrailingLocation()} + 1 : 0;
    const std::int64_t sectors = std::max({volumeEnd, SectorsFor(m_leadingLength), filesEnd, anchorEnd});
    if (sectors > kSectorLimit) {
        m_operation.Fail(Format("%s describes an image larger than any disc", m_request.leadingPath.c_str()));
    }
    return sectors * kSectorSize;
}

std::int64_t CKeptStructures::LengthOfStructures() const {
    return m_gaps ? m_gaps->Origin().image.length : m_leadingLength;
}

void CKeptStructures::AddTo(CComposedImage& image) {
    if (m_gaps) {
        image.AddGaps(*m_gaps);
    }
    image.AddSource(0, m_leadingLength, m_leading);
    if (!m_gaps && m_isDvd) {
        image.AddBytes(TrailingLocation() * kSectorSize, ClosingAnchor());
    }
}

std::uint32_t CKeptStructures::TrailingLocation() {
    return TagLocationOf(ReadTrailingSector(m_leading));
}

/// The closing anchor of a UDF volume. The leading structures hold only the start of its tag, but its content is
/// that of the first anchor. Empty if the volume had none.
std::vector<std::uint8_t> CKeptStructures::ClosingAnchor() {
    constexpr std::size_t kChecksumOffset = 4;
    const TrailingSector trailing = ReadTrailingSector(m_leading);
    TrailingSector anchor = {};
    m_leading.ReadAt(kAnchorSector * kSectorSize, anchor);
    if (LoadLe16(std::span(trailing).first<2>()) != kTagAnchor ||
        !std::equal(trailing.begin() + 5, trailing.begin() + kTagHeadSize, anchor.begin() + 5)) {
        return {};
    }
    const auto location = Le32(TagLocationOf(trailing));
    std::copy(location.begin(), location.end(), anchor.begin() + kTagHeadSize);
    anchor[kChecksumOffset] = 0;
    std::uint8_t sum = 0;
    for (std::size_t i = 0; i < kTagHeadSize + location.size(); ++i) {
        sum = static_cast<std::uint8_t>(sum + anchor[i]);
    }
    anchor[kChecksumOffset] = sum;
    return {anchor.begin(), anchor.end()};
}

SChecksum SumOrFail(CCheckedInput& file, COperation& operation) {
    const SChecksum sum = ChecksumOf(file, [&operation] { operation.Yield(); });
    file.FailIfUnread();
    return sum;
}

}  // namespace vantrel
