// What a disk may hold after the power fails.
//
// The model is that of POSIX on a disk with sectors of 512 bytes, and of a file system that keeps its own structures
// intact:
// - Each sector of a file shows what it held at any moment since the last flush of the file, independently of all
//   others. So does the length; sectors within it that were not written are zeros.
// - A change of a name survives or does not, independently of the contents of files and of all other names, with three
//   exceptions: the changes of one name survive in their order; a renaming is one change of both names, even between
//   two folders; and a folder disappears only when it is empty. A flush of a folder writes its names.
// - A file or folder without a surviving name is lost, even if it was flushed.
#pragma once

#include <cstdint>
#include <functional>
#include <random>
#include <set>
#include <span>
#include <utility>
#include <vector>

#include "fuzz/disk_tree.h"

namespace vantrel::fuzz {

class CPowerCut {
public:
    /// The power fails after `done`, on a disk that held `before`. Refers to both.
    CPowerCut(const SDiskTree& before, std::span<const SDiskOperation> done);

    /// Calls `visit` with states that the disk may have: all (of torn writes, one for each), if there are about a
    /// hundred; otherwise those in which everything is lost or kept, those in which one operation is an exception from
    /// that, and `randomStates` others.
    void ForEachState(std::mt19937& random, int randomStates, const std::function<void(SDiskTree)>& visit) const;
    /// One of all states.
    SDiskTree RandomState(std::mt19937& random) const;

private:
    enum class EFate {
        Lost,
        LengthKept,  ///< The length reached the disk without the data.
        DataKept,    ///< The data reached the disk without the length.
        Kept,
        Torn,  ///< The length and some sectors reached the disk.
    };
    /// Numbers of operations.
    using Numbers = std::set<std::size_t>;
    /// By number of m_writes.
    using WriteFates = std::vector<EFate>;

    bool IsWrite(std::size_t number) const;
    void AddNames(std::size_t number);
    void FlushFile(std::size_t number);
    void Keep(Numbers changes, Numbers& kept) const;
    SDiskTree StateWith(const Numbers& names, const WriteFates& writes, std::uint32_t tear) const;
    Bytes ContentWith(Node file, const WriteFates& fates, std::uint32_t tear) const;
    std::vector<Numbers> ChoicesOfNames() const;
    std::vector<WriteFates> ChoicesOfWrites() const;
    Numbers NamesWithout(std::size_t number) const;

    const SDiskTree& m_before;
    std::span<const SDiskOperation> m_done;
    std::map<std::size_t, Numbers> m_needed;  ///< For each change of names, those that precede it on the disk.
    std::map<std::pair<Node, std::string>, std::size_t> m_lastChange;  ///< For each name in a folder.
    std::map<Node, Numbers> m_changesIn;                               ///< For each folder.
    Numbers m_flushedNames;
    std::vector<std::size_t> m_names;                  ///< Changes of names that are not flushed.
    std::vector<std::size_t> m_writes;                 ///< Writes and changes of length that are not flushed.
    std::map<Node, std::shared_ptr<Bytes>> m_flushed;  ///< The contents of files after their last flush.
};

}  // namespace vantrel::fuzz
