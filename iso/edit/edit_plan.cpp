#include "iso/edit/edit_plan.h"

#include <algorithm>
#include <array>
#include <bit>
#include <iterator>
#include <limits>
#include <set>

#include "files/refused.h"
#include "iso/udf/udf_patches.h"
#include "operation/text.h"

namespace vantrel {

namespace {

constexpr std::int64_t kLargestFile = std::numeric_limits<std::uint32_t>::max();
constexpr std::int64_t kMostSectors = std::numeric_limits<std::uint32_t>::max();
constexpr std::int64_t kMostCdSectors = 333'000;  ///< 74 minutes
constexpr std::int64_t kLargestUmd = 1'800'000'000;
/// The catalogue counts the sectors of a boot image with 16 bits.
constexpr std::int64_t kMostBootSectors = std::numeric_limits<std::uint16_t>::max();
constexpr std::int64_t kLargestBootImage = kMostBootSectors * kBootSectorSize;
constexpr std::int64_t kScanSectors = 512;

using BothOrder32Bytes = std::array<std::uint8_t, sizeof(SBothOrder32)>;

BothOrder32Bytes BothOrder(std::uint32_t value) {
    return std::bit_cast<BothOrder32Bytes>(SBothOrder32{Le32(value), Be32(value)});
}

/// Extent location and data length of a directory record, which follow each other (ECMA-119 9.1.3, 9.1.4).
SSectorPatch RecordPatch(std::int64_t record, std::uint32_t sector, std::uint32_t size) {
    static_assert(offsetof(SDirectoryRecord, dataLength) ==
                  offsetof(SDirectoryRecord, extentLocation) + sizeof(SBothOrder32));
    SSectorPatch patch = {record + static_cast<std::int64_t>(offsetof(SDirectoryRecord, extentLocation)), {}};
    for (const std::uint32_t value : {sector, size}) {
        const BothOrder32Bytes bytes = BothOrder(value);
        patch.bytes.insert(patch.bytes.end(), bytes.begin(), bytes.end());
    }
    return patch;
}

std::int64_t BootSectorsFor(std::int64_t bytes) {
    return (bytes + kBootSectorSize - 1) / kBootSectorSize;
}

/// How much of a changed boot image is loaded. If it was the whole file, with or without the rest of its last sector,
/// it still is; it never exceeds the file.
std::int64_t NewBootCount(const SBootEntry& entry, const SFileEdit& edit) {
    const std::int64_t whole = BootSectorsFor(SectorsFor(edit.newSize) * kSectorSize);
    if (entry.count == BootSectorsFor(SectorsFor(edit.oldSize) * kSectorSize)) {
        return whole;
    }
    return entry.count == BootSectorsFor(edit.oldSize) ? BootSectorsFor(edit.newSize)
                                                       : std::min<std::int64_t>(entry.count, whole);
}

/// Names of the primary volume, or else those of the others.
std::vector<std::string> NamesOf(const SDiscPlace& place) {
    std::vector<std::string> names;
    for (const SDiscName& name : place.names) {
        if (name.volume == place.names.front().volume) {
            names.push_back(name.path);
        }
    }
    return names;
}

/// Number of the files of the primary volume at a place.
std::int64_t FilesAt(const SDiscPlace& place) {
    return std::count_if(place.names.begin(), place.names.end(),
                         [](const SDiscName& name) { return name.volume == 0; });
}

class CPlanner {
public:
    CPlanner(CByteSource& base, const SDiscMap& map, std::vector<SFileChange> changes, const SEditRules& rules)
        : m_base(base), m_map(map), m_changes(std::move(changes)), m_rules(rules), m_occupied(map.occupied) {}

    SEditPlan Run() {
        m_plan.oldLength = m_map.length;
        // Places are in the order of their sectors.
        std::sort(m_changes.begin(), m_changes.end(),
                  [](const SFileChange& a, const SFileChange& b) { return a.place < b.place; });
        for (const SFileChange& change : m_changes) {
            Check(change);
            AddEdit(change);
        }
        PlaceGrownFiles();
        MoveClosing();
        CheckMedium();
        for (std::size_t i = 0; i < m_changes.size(); ++i) {
            ClearOldSectors(m_plan.edits[i]);
            PatchRecords(m_map.places[m_changes[i].place], m_plan.edits[i]);
        }
        PatchVolumeSizes();
        PatchUdfVolume();
        CountUnchanged();
        std::sort(m_plan.zeros.begin(), m_plan.zeros.end(),
                  [](const SImageArea& a, const SImageArea& b) { return a.position < b.position; });
        return std::move(m_plan);
    }

private:
    const SDiscPlace& PlaceOf(const SFileChange& change) const { return m_map.places[change.place]; }

    void Check(const SFileChange& change) const {
        const SDiscPlace& place = PlaceOf(change);
        const char* const name = place.Path().c_str();
        if (*place.obstacle != '\0') {
            throw CRefused(Format("%s: it %s, so it cannot be changed", name, place.obstacle));
        }
        if (change.size > kLargestFile) {
            throw CRefused(Format("%s: %lld bytes are too many: files of a disc are smaller than 4 GiB", name,
                                  static_cast<long long>(change.size)));
        }
        if (place.extents.size() > 1) {
            throw CRefused(
                Format("%s: it is recorded in %zu extents, so it cannot be changed", name, place.extents.size()));
        }
        if (!place.bootEntries.empty() && change.size == 0) {
            throw CRefused(Format("%s: it is a boot image, so it cannot be emptied", name));
        }
    }

    void AddEdit(const SFileChange& change) {
        const SDiscPlace& place = PlaceOf(change);
        m_plan.edits.push_back(
            {NamesOf(place), place.Sector(), place.Sector(), place.Size(), change.size, change.source});
        SFileEdit& edit = m_plan.edits.back();
        const std::int64_t own = SectorsFor(edit.oldSize);
        const std::int64_t needed = SectorsFor(edit.newSize);
        if (needed > own && !TakeFree(edit.from + own, edit.from + needed)) {
            m_grown.push_back(m_plan.edits.size() - 1);
        }
    }

    /// Takes the sectors from `first` to `end` - 1 if they are free.
    bool TakeFree(std::int64_t first, std::int64_t end) {
        if (end > m_map.closingSector ||
            !m_occupied.IsFree(static_cast<std::uint32_t>(first), static_cast<std::uint32_t>(end)) ||
            EndOfData(first, end) > first) {
            return false;
        }
        m_occupied.Add(static_cast<std::uint32_t>(first), static_cast<std::uint32_t>(end));
        return true;
    }

    /// The sector behind the last one from `first` to `end` - 1 that is not all zeros; `first` if all are.
    std::int64_t EndOfData(std::int64_t first, std::int64_t end) {
        std::vector<std::uint8_t> bytes;
        while (end > first) {
            const std::int64_t start = std::max(first, end - kScanSectors);
            bytes.assign(static_cast<std::size_t>((end - start) * kSectorSize), 0);
            m_base.ReadAt(start * kSectorSize, bytes);
            const auto last = std::find_if(bytes.rbegin(), bytes.rend(), [](std::uint8_t byte) { return byte != 0; });
            if (last != bytes.rend()) {
                return start + SectorsFor(bytes.rend() - last);
            }
            end = start;
        }
        return first;
    }

    void PlaceGrownFiles() {
        if (m_grown.empty()) {
            return;
        }
        if (m_rules.keepPlaces) {
            RefuseToMove();
        }
        const std::uint32_t occupiedEnd = std::min(m_occupied.EndBefore(m_map.closingSector), m_map.closingSector);
        std::int64_t next = EndOfData(occupiedEnd, m_map.closingSector);
        for (const std::size_t index : m_grown) {
            SFileEdit& edit = m_plan.edits[index];
            const std::int64_t end = next + SectorsFor(edit.newSize);
            if (end > kMostSectors) {
                throw CRefused("the image would have more sectors than 32 bits can count");
            }
            edit.to = static_cast<std::uint32_t>(next);
            next = end;
        }
        m_contentEnd = next;
    }

    [[noreturn]] void RefuseToMove() const {
        std::string files;
        for (const std::size_t index : m_grown) {
            const SFileEdit& edit = m_plan.edits[index];
            files += Format("%s%s (%lld bytes, now %lld)", files.empty() ? "" : ", ", edit.names.front().c_str(),
                            static_cast<long long>(edit.oldSize), static_cast<long long>(edit.newSize));
        }
        throw CRefused("these files no longer fit their places and would have to move: " + files);
    }

    /// Sets the new length. What closes the image moves behind the moved files, unless these end before it.
    void MoveClosing() {
        const std::int64_t closing = m_map.closingSector * kSectorSize;
        const std::int64_t newClosing = std::max<std::int64_t>(m_contentEnd, m_map.closingSector) * kSectorSize;
        const std::int64_t closingLength = std::max<std::int64_t>(m_map.length - closing, 0);
        m_plan.newLength = newClosing > closing ? newClosing + closingLength : m_map.length;
        if (newClosing > closing && closingLength > 0) {
            SSectorPatch moved = {newClosing, std::vector<std::uint8_t>(static_cast<std::size_t>(closingLength))};
            if (m_base.ReadAt(closing, moved.bytes) != moved.bytes.size()) {
                throw CRefused("the end of the image cannot be read");
            }
            m_plan.patches.push_back(std::move(moved));
        }
        // A file that grows in a partial last sector completes it.
        for (const SFileEdit& edit : m_plan.edits) {
            if (edit.to * kSectorSize + edit.newSize > m_plan.newLength) {
                m_plan.newLength = SectorsFor(m_plan.newLength) * kSectorSize;
            }
        }
    }

    void CheckMedium() const {
        if (m_plan.SectorsAdded() == 0) {
            return;
        }
        const std::int64_t sectors = SectorsFor(m_plan.newLength);
        if (sectors > kMostSectors) {
            throw CRefused("the image would have more sectors than 32 bits can count");
        }
        if (m_map.kind == ImageKind::Cd && sectors > kMostCdSectors) {
            throw CRefused(Format("the image would have %lld sectors; a CD has at most %lld",
                                  static_cast<long long>(sectors), static_cast<long long>(kMostCdSectors)));
        }
        if (m_map.kind == ImageKind::Umd && m_plan.newLength > kLargestUmd) {
            throw CRefused(Format("the image would have %lld bytes; a UMD has at most %lld",
                                  static_cast<long long>(m_plan.newLength), static_cast<long long>(kLargestUmd)));
        }
    }

    /// Zeros behind the new content up to the end of its last sector, and in all sectors that the file leaves.
    void ClearOldSectors(const SFileEdit& edit) {
        const std::int64_t start = edit.to * kSectorSize;
        const std::int64_t end = start + SectorsFor(edit.newSize) * kSectorSize;
        const std::int64_t oldStart = edit.from * kSectorSize;
        const std::int64_t oldEnd = oldStart + SectorsFor(edit.oldSize) * kSectorSize;
        if (edit.IsMoved()) {
            AddZeros(oldStart, std::min(oldEnd, m_map.closingSector * kSectorSize));
            AddZeros(start + edit.newSize, end);
        } else {
            AddZeros(start + edit.newSize, std::max(end, oldEnd));
        }
    }

    void AddZeros(std::int64_t start, std::int64_t end) {
        end = std::min(end, m_plan.newLength);
        if (start < end) {
            m_plan.zeros.push_back({start, end - start});
        }
    }

    void PatchRecords(const SDiscPlace& place, const SFileEdit& edit) {
        const bool isEmbedded = std::any_of(place.udfFiles.begin(), place.udfFiles.end(),
                                            [this](std::size_t i) { return m_map.udf->files[i].embedded; });
        if (!edit.IsMoved() && edit.oldSize == edit.newSize && !isEmbedded) {
            return;
        }
        for (const SDiscName& name : place.names) {
            m_plan.patches.push_back(RecordPatch(name.record, edit.to, static_cast<std::uint32_t>(edit.newSize)));
        }
        for (const SBootEntry& entry : place.bootEntries) {
            PatchBootEntry(entry, edit);
        }
        std::set<std::uint32_t> patched;  // entries, which several names may share
        for (const std::size_t index : place.udfFiles) {
            const SUdfFile& file = m_map.udf->files[index];
            if (patched.insert(file.entrySector).second) {
                Append(PatchUdfFile(m_base, *m_map.udf, file, edit.to, edit.newSize));
            }
        }
    }

    void PatchBootEntry(const SBootEntry& entry, const SFileEdit& edit) {
        const std::int64_t count = NewBootCount(entry, edit);
        if (count > kMostBootSectors) {
            throw CRefused(
                Format("%s: %lld bytes are too many for a boot image that is loaded as a whole, which has at "
                       "most %lld",
                       edit.names.front().c_str(), static_cast<long long>(edit.newSize),
                       static_cast<long long>(kLargestBootImage)));
        }
        m_plan.patches.push_back(BootEntryPatch(entry, edit.to, static_cast<std::uint16_t>(count)));
    }

    void Append(std::vector<SSectorPatch> patches) {
        std::move(patches.begin(), patches.end(), std::back_inserter(m_plan.patches));
    }

    /// The closing anchors, which have moved, and what the volume says of its length.
    void PatchUdfVolume() {
        if (!m_map.udf) {
            return;
        }
        const auto added = static_cast<std::uint32_t>(m_plan.SectorsAdded());
        const SUdfVolume& volume = *m_map.udf;
        if (m_contentEnd > std::int64_t{volume.partitionStart} + volume.partitionSectors + added) {
            throw CRefused("the UDF partition ends before the sectors to which a file would move");
        }
        if (added > 0) {
            // A damaged copy of a descriptor would keep the old length.
            if (!volume.findings.empty()) {
                throw CRefused("the UDF volume cannot be lengthened: " + volume.findings.front());
            }
            const bool hasClosing = m_map.closingSector < m_map.Sectors();
            if (volume.closingAnchors > 0 && !hasClosing) {
                throw CRefused("files lie behind the closing anchor of the UDF volume, so it cannot be lengthened");
            }
            Append(PatchUdfLength(m_base, volume, added));
        }
    }

    void PatchVolumeSizes() {
        const std::int64_t added = m_plan.SectorsAdded();
        for (const SVolumeSize& size : m_map.volumeSizes) {
            const std::int64_t sectors = std::max<std::int64_t>(size.sectors + added, m_contentEnd);
            if (added == 0 && sectors <= size.sectors) {
                continue;
            }
            const BothOrder32Bytes bytes = BothOrder(static_cast<std::uint32_t>(sectors));
            m_plan.patches.push_back({size.position, {bytes.begin(), bytes.end()}});
        }
    }

    void CountUnchanged() {
        for (const SDiscPlace& place : m_map.places) {
            m_plan.unchanged += FilesAt(place);
        }
        for (const SFileChange& change : m_changes) {
            m_plan.unchanged -= FilesAt(PlaceOf(change));
        }
    }

    CByteSource& m_base;
    const SDiscMap& m_map;
    std::vector<SFileChange> m_changes;
    const SEditRules& m_rules;
    COccupiedSectors m_occupied;
    SEditPlan m_plan;
    std::vector<std::size_t> m_grown;  ///< edits that no longer fit
    std::int64_t m_contentEnd = 0;     ///< sector behind the moved files; 0 if no file moves
};

}  // namespace

SEditPlan PlanNothing(const CByteSource& base) {
    SEditPlan plan;
    plan.oldLength = base.Size();
    plan.newLength = base.Size();
    return plan;
}

SEditPlan PlanEdit(CByteSource& base, const SDiscMap& map, std::vector<SFileChange> changes, const SEditRules& rules) {
    return CPlanner(base, map, std::move(changes), rules).Run();
}

}  // namespace vantrel
