#include "iso/edit/replacement.h"

#include <algorithm>
#include <map>

#include "files/checked_file.h"
#include "files/checksum.h"
#include "files/letter_case.h"
#include "files/refused.h"
#include "iso/edit/edit_writer.h"
#include "operation/text.h"

namespace vantrel {

namespace {

/// A path for the search: lower case, '/' between names, without "./", version and the dot of a name without extension.
std::string SearchablePath(std::string path) {
    std::replace(path.begin(), path.end(), '\\', '/');
    path = LowerAscii(path.substr(0, path.find(kVersionSeparator)));
    std::string searchable;
    for (std::size_t start = 0; start <= path.size();) {
        const std::size_t end = std::min(path.find('/', start), path.size());
        std::string name = path.substr(start, end - start);
        start = end + 1;
        if (name.empty() || name == ".") {
            continue;
        }
        if (name.ends_with('.')) {
            name.pop_back();
        }
        searchable += (searchable.empty() ? "" : "/") + name;
    }
    return searchable;
}

class CReplacing {
public:
    CReplacing(const SReplaceRequest& request, CByteSource& image, COperation& operation)
        : m_request(request), m_image(image), m_operation(operation) {}

    SEditPlan Plan() {
        m_map = ReadDiscMap(m_image, EMapRule::Complete);
        for (std::size_t i = 0; i < m_map.places.size(); ++i) {
            for (const SDiscName& name : m_map.places[i].names) {
                m_byPath.emplace(SearchablePath(name.path), std::pair(name.volume, i));
            }
        }
        std::map<std::size_t, const SReplacement*> byPlace;
        std::vector<SFileChange> changes;
        for (const SReplacement& replacement : m_request.replacements) {
            const std::size_t place = PlaceOf(replacement.path);
            const std::int64_t size = SizeOf(replacement.source);
            const auto [earlier, isFirst] = byPlace.try_emplace(place, &replacement);
            if (isFirst) {
                changes.push_back({place, size, replacement.source});
            } else if (SumOf(earlier->second->source) != SumOf(replacement.source)) {
                m_operation.Fail(Format("%s and %s are two names of the same sectors, but their contents differ",
                                        earlier->second->path.c_str(), replacement.path.c_str()));
            }
        }
        return PlanEdit(m_image, m_map, std::move(changes), m_request.rules);
    }

private:
    /// The place of a path; names in the primary volume come first.
    std::size_t PlaceOf(const std::string& path) const {
        const auto [begin, end] = m_byPath.equal_range(SearchablePath(path));
        if (begin == end) {
            m_operation.Fail(Format("%s has no file %s; \"vantrel list\" shows its files", m_request.imagePath.c_str(),
                                    path.c_str()));
        }
        const auto volume = std::min_element(begin, end, [](const auto& a, const auto& b) {
                                return a.second < b.second;
                            })->second.first;
        std::size_t place = m_map.places.size();
        for (auto i = begin; i != end; ++i) {
            if (i->second.first == volume && place != m_map.places.size() && place != i->second.second) {
                m_operation.Fail(Format("%s has several files %s", m_request.imagePath.c_str(), path.c_str()));
            }
            if (i->second.first == volume) {
                place = i->second.second;
            }
        }
        return place;
    }

    std::int64_t SizeOf(const std::string& source) const {
        if (const EFileKind kind = FileKindOf(source); kind != EFileKind::File && kind != EFileKind::Missing) {
            m_operation.Fail(source + " is not a regular file");
        }
        CCheckedInput file(m_operation);
        file.OpenOrFail(source, "Cannot open %s");
        if (IsSameFile(source, m_request.imagePath)) {
            m_operation.Fail(source + " is the image itself");
        }
        return file.SizeOrFail();
    }

    SChecksum SumOf(const std::string& source) const {
        CCheckedInput file(m_operation);
        file.OpenOrFail(source, "Cannot open %s");
        const SChecksum sum = ChecksumOf(file, [this] { m_operation.Yield(); });
        file.FailIfUnread();
        return sum;
    }

    const SReplaceRequest& m_request;
    CByteSource& m_image;
    COperation& m_operation;
    SDiscMap m_map;
    std::multimap<std::string, std::pair<std::size_t, std::size_t>> m_byPath;  ///< volume and place
};

}  // namespace

SEditReport ReplaceInCopy(const SReplaceRequest& request, CByteSource& image,
                          const std::function<void()>& throwIfDamaged, COperation& operation) {
    const SEditPlan plan = CReplacing(request, image, operation).Plan();
    throwIfDamaged();
    SEditReport report = ReportOn(plan);
    if (!request.dryRun) {
        CCheckedOutput output(operation);
        output.OpenOrFail(request.outputPath, request.manner, "Cannot create %s");
        WriteEdited({image, request.imagePath, throwIfDamaged}, plan, output, operation);
        output.CommitOrFail();
    }
    return report;
}

SEditReport ReplaceInPlace(const SReplaceRequest& request, COperation& operation) {
    CCheckedUpdate image(operation);
    image.OpenOrFail(request.imagePath, request.dryRun ? EUpdateManner::ReadOnly : EUpdateManner::UndoUnlessCommitted,
                     "Cannot open %s");
    const SEditPlan plan = CReplacing(request, image, operation).Plan();
    image.FailIfUnread();
    SEditReport report = ReportOn(plan);
    if (!request.dryRun) {
        ApplyEdit(plan, image, operation);
        image.CommitOrFail();
    }
    return report;
}

}  // namespace vantrel
