// Edits of images: what a plan accepts must read back as planned, by both ways to write it.
//
//      8 bits  remainder of a division by 4: number of changes; 4: without moving files
//     then for each change 8 bits of place and 16 bits of length, in units of 3 bytes
//     then the image, as patches
#include <algorithm>
#include <map>
#include <optional>

#include "files/checked_file.h"
#include "files/refused.h"
#include "fuzz/input_parts.h"
#include "fuzz/invariants.h"
#include "fuzz/patched_image.h"
#include "iso/edit/edit_writer.h"

namespace vantrel::fuzz {

namespace {

constexpr std::int64_t kCapacity = 24 << 20U;
const std::string kImage = std::string(kFolder) + "game.iso";
const std::string kNew = std::string(kFolder) + "new.iso";

struct SWantedChange {
    std::uint8_t place;
    std::int64_t size;
};

Bytes ContentOfSize(std::int64_t size, std::size_t number) {
    Bytes content(static_cast<std::size_t>(size));
    for (std::size_t i = 0; i < content.size(); ++i) {
        content[i] = static_cast<std::uint8_t>(i * 7 + number + 1);
    }
    return content;
}

/// Writes the sources, and chooses places that exist, each once.
std::vector<SFileChange> ChangesOf(const std::vector<SWantedChange>& wanted, const SDiscMap& map) {
    std::vector<SFileChange> changes;
    for (std::size_t i = 0; i < wanted.size() && !map.places.empty(); ++i) {
        const std::size_t place = wanted[i].place % map.places.size();
        const auto isSame = [place](const SFileChange& change) { return change.place == place; };
        if (std::none_of(changes.begin(), changes.end(), isSame)) {
            const std::string source = kFolder + std::to_string(i);
            PutFile(source, ContentOfSize(wanted[i].size, i));
            changes.push_back({place, wanted[i].size, source});
        }
    }
    return changes;
}

bool HasContent(const Bytes& image, std::int64_t position, const Bytes& content) {
    const auto start = static_cast<std::size_t>(position);
    return start <= image.size() && content.size() <= image.size() - start &&
           std::equal(content.begin(), content.end(), image.begin() + position);
}

void CheckPlace(const SDiscPlace& before, const SDiscPlace& after, const SFileEdit* edit, const Bytes& old,
                const Bytes& image) {
    Expect(after.udfFiles.size() == before.udfFiles.size(), "every file entry names the same content");
    if (edit != nullptr) {
        Expect(after.Sector() == edit->to && after.Size() == edit->newSize, "a changed file is where it was planned");
        Expect(HasContent(image, after.extents[0].Position(), ContentOf(edit->source)), "it has its new content");
        return;
    }
    Expect(after.Sector() == before.Sector() && after.Size() == before.Size(), "no other file moves");
    for (const SExtent& extent : before.extents) {
        // Behind the end of an image whose last sector is partial, there are zeros.
        const std::int64_t inside = std::min(extent.End(), static_cast<std::int64_t>(old.size())) - extent.Position();
        const auto start = old.begin() + std::min(extent.Position(), static_cast<std::int64_t>(old.size()));
        Expect(extent.size == 0 ||
                   HasContent(image, extent.Position(), {start, start + std::max<std::int64_t>(inside, 0)}),
               "other files keep their content");
    }
}

using Names = std::map<std::tuple<std::size_t, std::int64_t>, const SDiscPlace*>;

/// Places by volume and directory record, which stays where it is.
Names NamesOf(const SDiscMap& map) {
    Names names;
    for (const SDiscPlace& place : map.places) {
        for (const SDiscName& name : place.names) {
            names[{name.volume, name.record}] = &place;
        }
    }
    return names;
}

void CheckResult(const SDiscMap& map, const SEditPlan& plan, const std::vector<SFileChange>& changes,
                 const Bytes& old) {
    const Bytes& image = ContentOf(kNew);
    Expect(static_cast<std::int64_t>(image.size()) == plan.newLength, "the image has the planned length");
    CInputFile file;
    file.Open(kNew);
    std::optional<SDiscMap> after;
    try {
        after = ReadDiscMap(file, EMapRule::Complete);
    } catch (const CRefused& refused) {
        Expect(false, (std::string("the new image is sound, without \"") + refused.what() + '"').c_str());
    }
    const Names names = NamesOf(*after);
    for (const auto& [key, before] : NamesOf(map)) {
        const auto found = names.find(key);
        Expect(found != names.end(), "every name is still there");
        const auto index = static_cast<std::size_t>(before - map.places.data());
        const auto change = std::find_if(changes.begin(), changes.end(),
                                         [index](const SFileChange& candidate) { return candidate.place == index; });
        const auto edit = std::find_if(plan.edits.begin(), plan.edits.end(), [&](const SFileEdit& candidate) {
            return change != changes.end() && candidate.source == change->source;
        });
        CheckPlace(*before, *found->second, edit == plan.edits.end() ? nullptr : &*edit, old, image);
    }
    Expect(after->volumeSizes.size() == map.volumeSizes.size(), "every volume is still there");
}

void Edit(const Bytes& image, const std::vector<SWantedChange>& wanted, const SEditRules& rules) {
    ClearDisk(kCapacity);
    PutFile(kImage, image);
    CInputFile base;
    base.Open(kImage);
    try {
        const SDiscMap map = ReadDiscMap(base, EMapRule::Complete);
        const std::vector<SFileChange> changes = ChangesOf(wanted, map);
        const SEditPlan plan = PlanEdit(base, map, changes, rules);
        CSilentOperation operation;
        const bool isWritten = !EndingOf([&] {
            CCheckedOutput output(operation);
            output.OpenOrFail(kNew, EOutputManner::CommitNew, "%s");
            WriteEdited({base, kImage, [] {}}, plan, output, operation);
            output.CommitOrFail();
        });
        if (!isWritten) {
            return;  // a full disk
        }
        CheckResult(map, plan, changes, image);
        CSilentOperation inPlace;
        const bool isApplied = !EndingOf([&] {
            CCheckedUpdate update(inPlace);
            update.OpenOrFail(kImage, EUpdateManner::UndoUnlessCommitted, "%s");
            ApplyEdit(plan, update, inPlace);
            update.CommitOrFail();
        });
        Expect(ContentOf(kImage) == (isApplied ? ContentOf(kNew) : image), "both ways give the same image");
    } catch (const CRefused& refused) {
        Expect(*refused.what() != '\0', "an image is refused with a reason");
        Expect(ContentOf(kImage) == image, "a refused edit changes nothing");
    }
}

}  // namespace

}  // namespace vantrel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vantrel::fuzz;
    CInputParts parts({data, size});
    const std::uint8_t flags = parts.Byte();
    std::vector<SWantedChange> wanted(flags % 4U);
    for (SWantedChange& change : wanted) {
        change.place = parts.Byte();
        change.size = std::int64_t{3} * parts.Number();
    }
    Edit(PatchedImage(parts.Rest()), wanted, {(flags & 4U) != 0});
    return 0;
}
