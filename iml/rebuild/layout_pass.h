// The first pass of every rebuild: the layout's list of files becomes the side lists. For the rebuilds only.
#pragma once

#include "files/input_file.h"
#include "files/native_file.h"
#include "iml/layout/layout_reader.h"
#include "iml/rebuild/rebuild.h"
#include "iml/rebuild/placements.h"
#include "operation/operation.h"

namespace vantrel {

/// How the two shapes of layout differ here.
struct SLayoutRules {
    bool isDvd;
    int hashes;             ///< Which '#' opens the count line.
    std::int32_t unplaced;  ///< Entries of the list that are no files.
};

inline constexpr SLayoutRules kCdRules = {false, 2, 1};
inline constexpr SLayoutRules kDvdRules = {true, 1, 2};

/// Sectors from this one on (32 GiB) are on no disc. Whatever names one is refused, because the image would be zeros
/// until the disk is full.
inline constexpr std::uint32_t kSectorLimit = 1U << 24U;

/// Where a rebuild keeps its lists: as files for the window only.
inline ESidePlace SidePlaceOf(const SRebuildRequest& request) {
    return request.manner == EOutputManner::InPlace ? ESidePlace::BesideLayout : ESidePlace::Memory;
}

class CLayoutPass {
public:
    CLayoutPass(const SRebuildRequest& request, const SLayoutRules& rules, CSideLists& lists, COperation& operation)
        : m_request(request), m_rules(rules), m_lists(lists), m_operation(operation) {}

    /// Shows the start text, greys the commands and fills the lists; ends the rebuild when something is wrong.
    void Run();

    /// The number of files that the layout's count announces; not positive when there are none.
    std::int64_t Announced() const { return m_announced; }
    /// Whether the layout has the DVD shape.
    bool IsDvd() const { return m_rules.isDvd; }
    /// Last sector of the leading structures as the layout has it; −1 when unknown.
    std::int32_t LeadingLast() const { return m_head.leadingLast; }

private:
    void Open(CInputFile& file, const char* code);
    void OpenFiles();
    void CheckMedia();
    void ReadHead();
    void Reopen();
    void ListFiles();
    bool ListFile(CTextReader& text);
    void CheckLine(bool wasRead);
    void CheckListEnds();
    [[noreturn]] void RefuseLine();
    void CheckSectors(const SListedFile& file);
    void CheckEnd(CTextReader& text);
    void CheckWritten(bool written);
    bool IsCareful() const { return m_request.manner != EOutputManner::InPlace; }

    const SRebuildRequest& m_request;
    SLayoutRules m_rules;
    CSideLists& m_lists;
    COperation& m_operation;
    CInputFile m_bytes;
    CInputFile m_text;
    CNativeFile m_update;
    CLineBuffer m_line;
    SListHead m_head;
    std::int64_t m_announced = 0;
};

}  // namespace vantrel
