#include "image/inspect/overlap_check.h"

#include <algorithm>

#include "operation/text.h"

namespace vantrel {

namespace {

struct SNamedExtent {
    const SExtent* extent;
    const std::string* name;

    std::int64_t First() const { return extent->sector; }
    std::int64_t End() const { return extent->sector + SectorsFor(extent->size); }
};

std::string Text(const SNamedExtent& named) {
    return Format("%s (sectors %lld to %lld)", named.name->c_str(), static_cast<long long>(named.First()),
                  static_cast<long long>(named.End() - 1));
}

}  // namespace

void CheckOverlaps(const SDiscTree& tree, const std::vector<SNamedArea>& areas, CLimitedLines& problems) {
    std::vector<SNamedExtent> all;
    all.reserve(areas.size() + tree.files.size());
    for (const SNamedArea& area : areas) {
        all.push_back({&area.extent, &area.name});
    }
    for (const SDiscFile& file : tree.files) {
        for (const SExtent& extent : file.extents) {
            all.push_back({&extent, &file.path});
        }
    }
    std::stable_sort(all.begin(), all.end(), [](const SNamedExtent& a, const SNamedExtent& b) {
        return a.First() != b.First() ? a.First() < b.First() : a.extent->size < b.extent->size;
    });
    const SNamedExtent* last = nullptr;  // the one that ends last
    for (const SNamedExtent& next : all) {
        const bool overlaps = last != nullptr && next.First() < last->End() && next.extent->size > 0;
        const bool isDuplicate =
            last != nullptr && next.First() == last->First() && next.extent->size == last->extent->size;
        if (overlaps && !isDuplicate) {
            problems.Add(Format("%s%s and %s overlap", tree.prefix.c_str(), Text(*last).c_str(), Text(next).c_str()));
        }
        if (last == nullptr || next.End() > last->End()) {
            last = &next;
        }
    }
}

}  // namespace vantrel
