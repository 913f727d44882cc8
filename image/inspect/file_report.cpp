#include "image/inspect/file_report.h"

#include <algorithm>

#include "files/native_file.h"
#include "files/refused.h"
#include "image/image_source.h"
#include "image/inspect/image_report.h"
#include "image/inspect/layout_report.h"
#include "operation/text.h"

namespace vantrel {

namespace {

std::int64_t SizeOrRefuse(const std::string& path) {
    const std::int64_t size = FileSizeOf(path);
    if (size < 0) {
        throw CRefused(path + ": cannot determine the length of the file");
    }
    return size;
}

}  // namespace

CReport ReportOnFile(const std::string& path, const std::string& filesFolder) {
    const EForm form = FormOfFile(path);
    CReport report;
    report.Add("file", path);
    report.Add("form", NameOf(form));
    report.Add("file_bytes", SizeOrRefuse(path));
    if (form == EForm::Iml) {
        report.Add("layout", ReportOnLayout(path, filesFolder));
        return report;
    }
    const std::unique_ptr<CImageSource> image = OpenImage(path);
    if (std::optional<CReport> container = image->Facts()) {
        report.Add("container", *std::move(container));
    }
    report.Add("image", ReportOnImage(*image));
    RefuseDamaged(*image, path);
    return report;
}

SContents ContentsOf(CImageSource& image, const std::string& path) {
    SContents contents = ReadContents(image);
    RefuseDamaged(image, path);
    if (contents.folders.front().sectors == 0) {
        throw CRefused(path + ": the image has no readable root directory");
    }
    const auto cut = std::find_if(contents.folders.begin(), contents.folders.end(),
                                  [](const SContentFolder& folder) { return !folder.inside; });
    if (cut != contents.folders.end()) {
        throw CRefused(
            Format("%s: the image does not hold all of the directory at sector %u", path.c_str(), cut->sector));
    }
    return contents;
}

CReport ReportOnContents(const std::string& path) {
    const std::unique_ptr<CImageSource> image = OpenImage(path);
    CReport::List files;
    for (const SContentFile& file : ContentsOf(*image, path).files) {
        files.push_back({{"sector", file.Sector()}, {"bytes", file.Size()}, {"path", file.path}});
    }
    return {{"file", path}, {"form", NameOf(image->Form())}, {"files", std::move(files)}};
}

}  // namespace vantrel
