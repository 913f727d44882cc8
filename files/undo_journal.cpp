#include "files/undo_journal.h"

#include <algorithm>
#include <array>
#include <map>

#include "files/byte_order.h"
#include "files/checksum.h"
#include "files/path.h"
#include "files/refused.h"

namespace vantrel {

namespace {

/// Longer parts are not ours.
constexpr std::uint32_t kLongestPart = 1U << 28U;
/// No file reaches so far.
constexpr std::uint64_t kFarthestPosition = 1ULL << 62U;

std::uint32_t SumOf(std::span<const std::uint8_t> bytes) {
    SChecksum sum;
    sum.Add(bytes);
    return sum.crc32;
}

void Append(std::vector<std::uint8_t>& part, std::span<const std::uint8_t> bytes) {
    part.insert(part.end(), bytes.begin(), bytes.end());
}

void AppendNumber(std::vector<std::uint8_t>& part, std::int64_t value) {
    Append(part, Le32(static_cast<std::uint32_t>(value)));
    Append(part, Le32(static_cast<std::uint32_t>(static_cast<std::uint64_t>(value) >> 32U)));
}

/// Takes a number from the start of a part; 0 if the part is too short.
std::int64_t TakeNumber(std::span<const std::uint8_t>& part) {
    if (part.size() < 8) {
        part = {};
        return 0;
    }
    const auto value = static_cast<std::int64_t>(LoadLe64(part.first<8>()));
    part = part.subspan(8);
    return value;
}

std::size_t SectorsOf(std::size_t length) {
    return (length + kDiskSector - 1) / kDiskSector;
}

std::span<const std::uint8_t> SectorOf(std::span<const std::uint8_t> bytes, std::size_t sector) {
    const std::size_t start = std::min(sector * kDiskSector, bytes.size());
    return bytes.subspan(start, std::min(kDiskSector, bytes.size() - start));
}

std::size_t ReadAt(CNativeFile& file, std::int64_t position, std::span<std::uint8_t> buffer, bool& failed) {
    failed = !file.Seek(position);
    return failed ? 0 : file.Read(buffer, failed);
}

/// The part of the new content with which the file ended before the change.
std::span<const std::uint8_t> LastOldSector(std::span<const std::uint8_t> newer, std::size_t oldLength) {
    return SectorOf(newer.first(oldLength), oldLength / kDiskSector);
}

/// CRC-32 of bytes whose first `length` have the CRC-32 `firstSum`.
std::uint32_t SumOf(std::size_t length, std::uint32_t firstSum, std::span<const std::uint8_t> rest) {
    SChecksum sum = {static_cast<std::int64_t>(length), firstSum};
    SChecksum added;
    added.Add(rest);
    sum.Append(added);
    return sum.crc32;
}

/// Whether a sector of the file is as before the change, as after it, with only a part of what is appended, or undone
/// without the appended bytes cut off. `oldPartSum` is that of the new content up to the old length, if that ends
/// within the sector.
bool IsOldOrNew(std::span<const std::uint8_t> found, std::span<const std::uint8_t> older, std::size_t newLength,
                std::uint32_t newSum, std::uint32_t oldPartSum) {
    if (found.size() < older.size()) {
        return false;
    }
    const auto isZero = [](std::uint8_t byte) { return byte == 0; };
    const auto appended = found.subspan(older.size());
    const bool isOld = std::equal(older.begin(), older.end(), found.begin());
    const bool endsInZeros = std::all_of(appended.begin(), appended.end(), isZero);
    const bool isPart = found.size() < newLength && (isOld || SumOf(found.first(older.size())) == oldPartSum);
    const bool isUndone = isOld && (endsInZeros || SumOf(older.size(), oldPartSum, appended) == newSum);
    return isUndone || isPart || SumOf(found) == newSum;
}

}  // namespace

CUndoJournal::CUndoJournal(const std::string& path)
    : m_path(path), m_journalPath(FolderOf(path) + '.' + FileNameOf(path) + ".vantrel-undo") {}

/// A journal that cannot be examined counts: without it, an incomplete change would stay.
bool CUndoJournal::Exists() const {
    return FileKindOf(m_journalPath) != EFileKind::Missing;
}

bool CUndoJournal::WritePart(std::span<const std::uint8_t> part) {
    std::vector<std::uint8_t> whole;
    Append(whole, Le32(static_cast<std::uint32_t>(part.size())));
    Append(whole, part);
    Append(whole, Le32(SumOf(part)));
    return m_file.Write(whole) == whole.size();
}

bool CUndoJournal::Create(std::int64_t length) {
    if (!m_file.Open(m_journalPath, EOpenMode::CreateNew, ESharing::Readers)) {
        return false;
    }
    m_isBegun = true;
    m_isNameFlushed = false;
    std::vector<std::uint8_t> part;
    AppendNumber(part, length);
    return WritePart(part);
}

bool CUndoJournal::Add(std::int64_t position, std::span<const std::uint8_t> older,
                       std::span<const std::uint8_t> newer) {
    std::vector<std::uint8_t> part;
    AppendNumber(part, position);
    AppendNumber(part, static_cast<std::int64_t>(newer.size()));
    Append(part, Le32(SumOf(LastOldSector(newer, older.size()))));
    for (std::size_t sector = 0; sector < SectorsOf(newer.size()); ++sector) {
        Append(part, Le32(SumOf(SectorOf(newer, sector))));
    }
    Append(part, older);
    return WritePart(part);
}

bool CUndoJournal::Flush() {
    if (!m_file.FlushToDisk()) {
        return false;
    }
    m_isNameFlushed = m_isNameFlushed || FlushFolder(FolderOf(m_journalPath));
    return m_isNameFlushed;
}

bool CUndoJournal::OpenToRead() {
    m_hasFailed = !m_file.IsOpen() && !m_file.Open(m_journalPath, EOpenMode::ReadWrite, ESharing::Readers);
    return !m_hasFailed;
}

bool CUndoJournal::MoveTo(std::int64_t position) {
    m_hasFailed = m_hasFailed || !m_file.Seek(position);
    return !m_hasFailed;
}

/// Returns false at the end of what has reached the disk, and after an error.
bool CUndoJournal::ReadPart(std::vector<std::uint8_t>& part) {
    const auto reads = [this](std::span<std::uint8_t> bytes) {
        return m_file.Read(bytes, m_hasFailed) == bytes.size();
    };
    std::array<std::uint8_t, 4> number = {};
    // After a power cut, the journal may end in zeros, which must not count as parts without content.
    if (!reads(number) || LoadLe32(number) == 0 || LoadLe32(number) > kLongestPart) {
        return false;
    }
    part.resize(LoadLe32(number));
    return reads(part) && reads(number) && LoadLe32(number) == SumOf(part);
}

bool CUndoJournal::ReadChange(SChange& change) {
    std::vector<std::uint8_t> part;
    if (!ReadPart(part)) {
        return false;
    }
    std::span<const std::uint8_t> rest = part;
    change.position = TakeNumber(rest);
    change.newLength = static_cast<std::size_t>(TakeNumber(rest));
    if (static_cast<std::uint64_t>(change.position) > kFarthestPosition || change.newLength > kLongestPart ||
        rest.size() < (SectorsOf(change.newLength) + 1) * 4) {
        return false;
    }
    change.oldPartSum = LoadLe32(rest.first<4>());
    rest = rest.subspan(4);
    change.newSums.clear();
    for (std::size_t sector = 0; sector < SectorsOf(change.newLength); ++sector) {
        change.newSums.push_back(LoadLe32(rest.first<4>()));
        rest = rest.subspan(4);
    }
    change.older.assign(rest.begin(), rest.end());
    return true;
}

/// Where in the journal the changes are. Ends at a part that did not reach the disk.
std::vector<std::int64_t> CUndoJournal::FindChanges() {
    std::vector<std::int64_t> changes;
    std::vector<std::uint8_t> part;
    for (std::int64_t position = 4 + 8 + 4; MoveTo(position) && ReadPart(part);
         position += 4 + static_cast<std::int64_t>(part.size()) + 4) {
        changes.push_back(position);
    }
    return changes;
}

bool CUndoJournal::Belongs(CNativeFile& file, std::int64_t length, const std::vector<std::int64_t>& changes) {
    std::int64_t end = length;
    std::map<std::int64_t, bool> isKnown;  // by position; a sector may have been changed several times
    std::vector<std::uint8_t> content;
    for (const std::int64_t place : changes) {
        SChange change;
        if (!MoveTo(place) || !ReadChange(change)) {
            return false;
        }
        content.resize(change.newLength);
        content.resize(ReadAt(file, change.position, content, m_hasFailed));
        for (std::size_t sector = 0; sector < change.newSums.size(); ++sector) {
            const std::size_t newLength = std::min(kDiskSector, change.newLength - sector * kDiskSector);
            bool& known = isKnown[change.position + static_cast<std::int64_t>(sector * kDiskSector)];
            known = known || IsOldOrNew(SectorOf(content, sector), SectorOf(change.older, sector), newLength,
                                        change.newSums[sector], change.oldPartSum);
        }
        end = std::max(end, change.position + static_cast<std::int64_t>(change.newLength));
    }
    const std::int64_t size = file.Size();
    m_hasFailed = m_hasFailed || size < 0;
    return size >= length && size <= end &&
           std::all_of(isKnown.begin(), isKnown.end(), [](const auto& sector) { return sector.second; });
}

/// Opens the journal. Returns the old length of the file; −1 if the journal ends before it, so that no change has
/// begun, and after an error.
std::int64_t CUndoJournal::ReadLength() {
    std::vector<std::uint8_t> part;
    if (!OpenToRead() || !MoveTo(0) || !ReadPart(part) || part.size() != 8) {
        return -1;
    }
    std::span<const std::uint8_t> number = part;
    return TakeNumber(number);
}

bool CUndoJournal::Undo(CNativeFile& file) {
    const std::int64_t length = ReadLength();
    if (length < 0) {
        return !m_hasFailed;
    }
    const std::vector<std::int64_t> changes = FindChanges();
    if (m_hasFailed) {
        return false;
    }
    // Undoing the last change first restores sectors that were changed twice.
    for (auto place = changes.rbegin(); place != changes.rend(); ++place) {
        SChange change;
        if (!MoveTo(*place) || !ReadChange(change) || !file.Seek(change.position) ||
            file.Write(change.older) != change.older.size()) {
            return false;
        }
    }
    return file.Resize(length) && file.FlushToDisk();
}

bool CUndoJournal::Restore(CNativeFile& file) {
    const std::int64_t length = ReadLength();
    const bool belongs = length < 0 || Belongs(file, length, FindChanges());
    if (m_hasFailed) {
        return false;
    }
    if (!belongs) {
        throw CRefused(
            m_path + ": " + m_journalPath +
            " of an interrupted change does not belong to this file; delete it if the file is as it should be");
    }
    return Undo(file);
}

bool CUndoJournal::Remove() {
    m_file.Close();
    m_isBegun = !RemoveFile(m_journalPath);
    if (!m_isBegun) {
        FlushFolder(FolderOf(m_journalPath));  // if it fails, a power cut may undo the change once more
    }
    return !m_isBegun;
}

}  // namespace vantrel
