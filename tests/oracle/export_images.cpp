// Helper of export_oracle.py: makes images of all kinds, and exports an image like the window.
//
//     export_images make FOLDER
//     export_images export FOLDER IMAGE LAYOUT PATH_FIELD
#include <cstdio>
#include <string>

#include "files/path.h"
#include "iml/export/export.h"
#include "tests/support/image_builder.h"
#include "tests/support/recording_operation.h"

namespace vantrel::test {
namespace {

/// Images that differ in medium, number of files and folders, path tables, attributes and postgap.
void MakeImages(const std::string& folder) {
    struct SShape {
        const char* name;
        EImageKind kind;
        std::size_t files;
        std::size_t folders;
        bool tables;
        bool attributes;
        EPostgap postgap;
    };
    constexpr SShape kShapes[] = {
        {"cd-one", EImageKind::Cd, 1, 0, true, true, EPostgap::None},
        {"cd-flat", EImageKind::Cd, 400, 0, true, false, EPostgap::Missing},
        {"cd-tree", EImageKind::Cd, 700, 90, false, true, EPostgap::Counted},
        {"cd-uncounted", EImageKind::Cd, 30, 5, true, true, EPostgap::Uncounted},
        {"dvd-one", EImageKind::Dvd, 1, 0, false, false, EPostgap::None},
        {"dvd-tree", EImageKind::Dvd, 2000, 200, true, false, EPostgap::None},
        {"umd-flat", EImageKind::Umd, 60, 0, true, false, EPostgap::None},
        {"umd-tree", EImageKind::Umd, 500, 60, false, true, EPostgap::None},
    };
    std::uint64_t seed = 100;
    for (const SShape& shape : kShapes) {
        SImageDescription description;
        description.kind = shape.kind;
        description.files = ManyFiles(shape.files, shape.folders, ++seed);
        description.files[shape.files / 2].holeBefore = 5;
        description.holeFill = 0x77;
        description.optionalPathTables = shape.tables;
        description.xaAttributes = shape.attributes;
        description.postgap = shape.postgap;
        WriteWhole(folder + shape.name + ".iso", BuildImage(description).bytes);
    }
}

void Export(const std::string& folder, const std::string& image, const std::string& layout, const std::string& field) {
    CRecordingOperation operation;
    IsoToIml(
        folder, image,
        [&] {
            return SChosenLayout{layout, field};
        },
        operation);
}

}  // namespace
}  // namespace vantrel::test

int main(int count, char** words) {
    using namespace vantrel;
    const std::string command = count > 2 ? words[1] : "";
    if (command == "make" && count == 3) {
        test::MakeImages(WithSeparator(words[2]));
        return 0;
    }
    if (command == "export" && count == 6) {
        test::Export(WithSeparator(words[2]), words[3], words[4], words[5]);
        return 0;
    }
    std::fprintf(stderr, "usage: export_images make FOLDER | export FOLDER IMAGE LAYOUT PATH_FIELD\n");
    return 2;
}
