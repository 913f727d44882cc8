// What an export keeps of an image apart from its listed files: the leading structures and, if there is one, the gap
// file. For rebuilds of the image that was exported.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "files/checked_file.h"
#include "files/checksum.h"
#include "iml/layout/gap_file.h"
#include "iml/rebuild/composed_image.h"
#include "iml/rebuild/rebuild.h"
#include "operation/operation.h"

namespace vantrel {

class CKeptStructures {
public:
    /// Nothing is open yet.
    CKeptStructures(const SRebuildRequest& request, bool isDvd, COperation& operation);

    /// Opens both files and checks that they belong to the layout. `leadingLast` is the last sector that the layout
    /// gives to the leading structures. Fails if an exact rebuild lacks the gap file, or if the layout has changed.
    void OpenOrFail(std::uint32_t leadingLast);
    /// What the user should know: a missing gap file, changed leading structures.
    const std::vector<std::string>& Notices() const { return m_notices; }

    CCheckedInput& Leading() { return m_leading; }
    /// Null if there is none.
    CGapFileReader* Gaps() { return m_gaps ? &*m_gaps : nullptr; }
    bool IsLeadingUnchanged() const { return m_isLeadingUnchanged; }

    /// Length of the exported image in bytes. Without a gap file, the image ends with its volume, its closing anchor or
    /// `filesEnd`, the sector behind the last listed file. Fails if that is larger than any disc.
    std::int64_t ImageLengthOrFail(std::int64_t filesEnd);
    /// Length in bytes of an image that holds all directories.
    std::int64_t LengthOfStructures() const;
    /// Adds everything that is kept.
    void AddTo(CComposedImage& image);

private:
    void OpenLeading(std::uint32_t leadingLast);
    void OpenGaps();
    void CheckOrigin();
    std::uint32_t TrailingLocation();
    std::vector<std::uint8_t> ClosingAnchor();

    const SRebuildRequest& m_request;
    const bool m_isExact;
    const bool m_isDvd;
    COperation& m_operation;
    CCheckedInput m_leading;
    std::int64_t m_leadingLength = 0;  ///< without the trailing sector of a DVD
    std::optional<CGapFileReader> m_gaps;
    bool m_isLeadingUnchanged = true;
    std::vector<std::string> m_notices;
};

/// The checksum of a whole file. Fails if it cannot be read.
SChecksum SumOrFail(CCheckedInput& file, COperation& operation);

}  // namespace vantrel
