#include "image/inspect/tree_comparison.h"

#include <unordered_map>

#include "iso/extracted_path.h"
#include "operation/text.h"

namespace vantrel {

namespace {

bool SamePlace(const SDiscFile& a, const SDiscFile& b) {
    return a.size == b.size && a.extents == b.extents;
}

/// The files of a tree by name and by place.
class CTreeIndex {
public:
    explicit CTreeIndex(const SDiscTree& tree) {
        for (const SDiscFile& file : tree.files) {
            const auto [entry, isNew] = m_byName.try_emplace(FoldedPath(file.path), &file);
            if (!isNew) {
                entry->second = nullptr;
            }
            if (!file.extents.empty()) {
                m_byStart.try_emplace(file.sector, &file);
                m_byPlace.try_emplace(PlaceKey(file), &file);
            }
        }
    }

    /// The file of that name in any case; null if there is none, or several.
    const SDiscFile* ByName(const SDiscFile& file) const {
        const auto found = m_byName.find(FoldedPath(file.path));
        return found == m_byName.end() ? nullptr : found->second;
    }

    /// A file with the same content; null if there is none.
    const SDiscFile* ByPlace(const SDiscFile& file) const {
        const auto found = m_byPlace.find(PlaceKey(file));
        return found == m_byPlace.end() || !SamePlace(*found->second, file) ? nullptr : found->second;
    }

    /// A file that begins in the same sector; null if there is none.
    const SDiscFile* ByStart(const SDiscFile& file) const {
        const auto found = m_byStart.find(file.sector);
        return found == m_byStart.end() ? nullptr : found->second;
    }

private:
    /// The same for the same place, and hardly ever for another one.
    static std::uint64_t PlaceKey(const SDiscFile& file) {
        return (std::uint64_t{file.sector} << 32U) ^ static_cast<std::uint64_t>(file.size);
    }

    std::unordered_map<std::string, const SDiscFile*> m_byName;
    std::unordered_map<std::uint32_t, const SDiscFile*> m_byStart;
    std::unordered_map<std::uint64_t, const SDiscFile*> m_byPlace;
};

/// The file of the other tree that should have the same place as `file` and does not; null if there is none.
///
/// Where names are shortened, the name of one file can be that of another file in the other tree. Hence a place that
/// the other tree knows is right, unless it has a name there that belongs to another place here.
const SDiscFile* Contradiction(const SDiscFile& file, const CTreeIndex& tree, const CTreeIndex& other) {
    const SDiscFile* const namesake = tree.ByName(file) == nullptr ? nullptr : other.ByName(file);
    if (namesake != nullptr && SamePlace(*namesake, file)) {
        return nullptr;
    }
    if (file.extents.empty()) {
        return namesake != nullptr && tree.ByPlace(*namesake) == nullptr ? namesake : nullptr;
    }
    const SDiscFile* const same = other.ByPlace(file);
    if (same == nullptr) {
        return namesake != nullptr ? namesake : other.ByStart(file);
    }
    const SDiscFile* const owner = tree.ByName(*same);
    return owner != nullptr && !SamePlace(*owner, *same) ? namesake : nullptr;
}

std::string PlaceText(const SDiscFile& file) {
    return file.size == 0 ? "empty"
                          : Format("at sector %u with %lld bytes", file.sector, static_cast<long long>(file.size));
}

}  // namespace

void CompareTrees(const SDiscTree& tree, const SDiscTree& other, CLimitedLines& problems) {
    const CTreeIndex index(tree);
    const CTreeIndex otherIndex(other);
    for (const SDiscFile& file : tree.files) {
        if (const SDiscFile* const wrong = Contradiction(file, index, otherIndex)) {
            problems.Add(Format("%s is %s; %s%s is %s", file.path.c_str(), PlaceText(file).c_str(),
                                other.prefix.c_str(), wrong->path.c_str(), PlaceText(*wrong).c_str()));
        }
    }
}

}  // namespace vantrel
