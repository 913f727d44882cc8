#include "image/inspect/file_report.h"

#include "files/native_file.h"
#include "files/refused.h"
#include "image/image_source.h"
#include "image/inspect/image_report.h"
#include "image/inspect/layout_report.h"
#include "iso/contents.h"

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

CReport ReportOnContents(const std::string& path) {
    const std::unique_ptr<CImageSource> image = OpenImage(path);
    CReport::List files;
    for (const SContentFile& file : ReadContents(*image).files) {
        files.push_back({{"sector", file.Sector()}, {"bytes", file.Size()}, {"path", file.path}});
    }
    RefuseDamaged(*image, path);
    return {{"file", path}, {"form", NameOf(image->Form())}, {"files", std::move(files)}};
}

}  // namespace vantrel
