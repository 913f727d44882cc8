#include "iml/rebuild/placements.h"

#include "files/byte_order.h"
#include "files/text_output.h"
#include "operation/text.h"

namespace vantrel {

CPlacements::CPlacements(const SRebuildRequest& request, COperation& operation)
    : m_paths(request.sideFiles), m_operation(operation), m_entryList(operation), m_bounds(operation) {}

void CPlacements::CreateFiles() {
    if (m_paths) {
        m_entryList.OpenOrFail(m_paths->entryList, EOutputManner::InPlace, "Code 202 - Error Opening %s");
        m_bounds.OpenOrFail(m_paths->bounds, EOutputManner::InPlace, "Code 2021 - Error Opening %s");
    }
}

void CPlacements::Append(const SListedFile& file) {
    const SPlacement placement = {static_cast<std::uint32_t>(file.first), static_cast<std::uint32_t>(file.last),
                                  file.path};
    if (m_paths) {
        CTextOutput line(m_entryList);
        line.Write(Format("%08X|%08X|%s\n", placement.first, placement.last, placement.path.c_str()));
        line.Flush();
        m_entryList.FailIfUnwritten();
        WriteBound(placement.first);
        WriteBound(placement.last);
    }
    m_behindLast = placement.last + 1;
    m_files.push_back(placement);
}

void CPlacements::FinishFiles() {
    if (m_paths) {
        WriteBound(m_behindLast);
        WriteBound(m_behindLast + 1);
        m_entryList.FinishOrFail();
        m_bounds.FinishOrFail();
    }
}

void CPlacements::WriteBound(std::uint32_t sector) {
    m_bounds.WriteOrFail(Le32(sector));
}

void CPlacements::ReopenFiles() {
    if (m_paths) {
        CCheckedInput file(m_operation);
        file.OpenOrFail(m_paths->entryList, "Code 206 !!! file not found ==> %s");
        file.OpenOrFail(m_paths->bounds, "Code 2022 - Error Opening %s");
    }
}

void CPlacements::RemoveFiles() {
    if (m_paths) {
        RemoveFile(m_paths->bounds);
        RemoveFile(m_paths->entryList);
    }
}

std::int64_t CPlacements::GapBehind(std::size_t index) const {
    const std::uint32_t next = index + 1 < m_files.size() ? m_files[index + 1].first : m_behindLast;
    return std::int64_t{next} - m_files[index].last - 1;
}

std::uint32_t CPlacements::FirstSector() const {
    return m_files.empty() ? m_behindLast : m_files.front().first;
}

}  // namespace vantrel
