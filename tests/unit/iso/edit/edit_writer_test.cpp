// Both ways to write an edited image give the same bytes; what cannot be read ends them.
#include "iso/edit/edit_writer.h"

#include <gtest/gtest.h>

#include "files/refused.h"
#include "tests/support/recording_operation.h"
#include "tests/unit/iso/edit/memory_image.h"

namespace vantrel {
namespace {

using test::Bytes;
using test::CMemoryImage;
using test::PlaceOf;

class EditWriter : public testing::Test {
protected:
    EditWriter() {
        test::SImageDescription description;
        description.kind = test::EImageKind::Cd;
        description.postgap = test::EPostgap::Counted;
        description.paddingFill = 0xDD;
        description.files = {{"A.BIN", test::RandomBytes(5000, 1)},
                             {"B.BIN", test::RandomBytes(12 << 20U, 2)},
                             {"Z.BIN", test::RandomBytes(10, 4)}};
        m_built = test::BuildImage(description);
        m_image.m_bytes = m_built.bytes;
    }

    SEditPlan Plan(const std::vector<std::pair<std::string, Bytes>>& changes) {
        const SDiscMap map = ReadDiscMap(m_image, EMapRule::Complete);
        std::vector<SFileChange> list;
        for (const auto& [path, content] : changes) {
            test::WriteWhole(m_folder / path, content);
            list.push_back({PlaceOf(map, path), static_cast<std::int64_t>(content.size()), m_folder / path});
        }
        return PlanEdit(m_image, map, list, {});
    }

    Bytes Written(const SEditPlan& plan) {
        CCheckedOutput output(m_operation);
        output.OpenOrFail(m_folder / "new.iso", EOutputManner::CommitReplace, "%s");
        WriteEdited({m_image, "the image", [] {}}, plan, output, m_operation);
        output.CommitOrFail();
        return test::ReadWhole(m_folder / "new.iso");
    }

    Bytes Applied(const SEditPlan& plan) {
        test::WriteWhole(m_folder / "place.iso", m_image.m_bytes);
        CCheckedUpdate update(m_operation);
        update.OpenOrFail(m_folder / "place.iso", EUpdateManner::UndoUnlessCommitted, "%s");
        ApplyEdit(plan, update, m_operation);
        update.CommitOrFail();
        return test::ReadWhole(m_folder / "place.iso");
    }

    void ExpectContent(const Bytes& image, const std::string& path, const Bytes& content) {
        CMemoryImage written(image);
        const SDiscMap map = ReadDiscMap(written, EMapRule::Complete);
        const SDiscPlace& place = map.places.at(PlaceOf(map, path));
        ASSERT_EQ(place.Size(), static_cast<std::int64_t>(content.size())) << path;
        const auto start = image.begin() + place.extents[0].Position();
        EXPECT_TRUE(std::equal(content.begin(), content.end(), start)) << path;
        const auto end = start + place.Size();
        const std::ptrdiff_t rest = (2048 - place.Size() % 2048) % 2048;
        EXPECT_TRUE(std::all_of(end, end + rest, [](std::uint8_t byte) { return byte == 0; })) << path;
    }

    test::CTestFolder m_folder;
    test::CRecordingOperation m_operation;
    test::SBuiltImage m_built;
    CMemoryImage m_image{{}};
};

TEST_F(EditWriter, BothWaysGiveTheSameImage) {
    const Bytes shorter = test::RandomBytes(100, 5);
    const Bytes longer = test::RandomBytes(9000, 6);
    const Bytes larger = test::RandomBytes((13 << 20U) + 5, 7);
    for (const auto& changes : std::vector<std::vector<std::pair<std::string, Bytes>>>{
             {{"A.BIN", shorter}}, {{"A.BIN", longer}, {"Z.BIN", longer}}, {{"B.BIN", larger}}, {{"B.BIN", {}}}, {}}) {
        const SEditPlan plan = Plan(changes);
        const Bytes written = Written(plan);
        EXPECT_EQ(std::ssize(written), plan.newLength);
        EXPECT_TRUE(written == Applied(plan));
        for (const auto& [path, content] : changes) {
            ExpectContent(written, path, content);
        }
        for (const test::SBuiltFile& file : m_built.files) {
            const std::string name = file.path.substr(1);
            if (std::none_of(changes.begin(), changes.end(),
                             [&](const auto& change) { return change.first == name; })) {
                const auto start = written.begin() + std::ptrdiff_t{file.sector} * 2048;
                EXPECT_TRUE(std::equal(file.content.begin(), file.content.end(), start)) << name;
            }
        }
        EXPECT_TRUE(
            std::all_of(written.end() - 150 * 2048, written.end(), [](std::uint8_t byte) { return byte == 0; }));
    }
}

TEST_F(EditWriter, NothingIsTheBase) {
    EXPECT_TRUE(Written(PlanNothing(m_image)) == m_image.m_bytes);
}

TEST_F(EditWriter, AFileThatChangesMeanwhile) {
    const SEditPlan plan = Plan({{"A.BIN", test::RandomBytes(100, 5)}});
    test::WriteWhole(m_folder / "A.BIN", test::RandomBytes(101, 5));
    const std::string problem = (m_folder / "A.BIN") + " changed while the image was made";
    EXPECT_EQ(test::FailureOf([&] { Written(plan); }), problem);
    EXPECT_EQ(test::FailureOf([&] { Applied(plan); }), problem);
    EXPECT_TRUE(test::ReadWhole(m_folder / "place.iso") == m_image.m_bytes) << "the change is undone";
    EXPECT_EQ(m_folder.Names(), (std::vector<std::string>{"A.BIN", "place.iso"}));
}

TEST_F(EditWriter, ABaseThatEndsEarly) {
    const SEditPlan plan = Plan({{"Z.BIN", test::RandomBytes(100, 5)}});
    for (const std::size_t length : {std::size_t{11} << 20U, std::size_t{60'000}}) {
        m_image.m_bytes.resize(length);
        EXPECT_EQ(test::FailureOf([&] { Written(plan); }), "Cannot read all of the image");
    }
    CCheckedOutput output(m_operation);
    output.OpenOrFail(m_folder / "new.iso", EOutputManner::CommitReplace, "%s");
    EXPECT_THROW(WriteEdited({m_image, "the image", [] { throw CRefused("damaged"); }}, plan, output, m_operation),
                 CRefused);
}

TEST_F(EditWriter, InPlaceChangesOnlyWhatItMust) {
    const SEditPlan plan = Plan({{"Z.BIN", test::RandomBytes(9, 5)}});
    std::size_t bytes = 0;
    for (const SSectorPatch& patch : plan.patches) {
        bytes += patch.bytes.size();
    }
    for (const SImageArea& area : plan.zeros) {
        bytes += static_cast<std::size_t>(area.length);
    }
    EXPECT_LT(bytes, 3000U);
}

}  // namespace
}  // namespace vantrel
