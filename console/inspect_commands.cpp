// Commands that look at files: info and list.
#include <cstdio>

#include "console/commands.h"
#include "console/container_report.h"
#include "console/image_report.h"
#include "console/inspect_command.h"
#include "console/refused.h"
#include "files/input_file.h"
#include "files/path.h"
#include "image/contents.h"
#include "image/image_source.h"

namespace vantrel {

namespace {

std::unique_ptr<CImageSource> OpenOrRefuse(const std::string& file) {
    std::string problem;
    std::unique_ptr<CImageSource> image = OpenImage(file, problem);
    if (!image) {
        throw CRefused(file + ": " + problem);
    }
    return image;
}

Report Info(const std::string& file) {
    const std::unique_ptr<CImageSource> image = OpenOrRefuse(file);
    CInputFile stored;
    stored.Open(file);
    Report report;
    report["file"] = file;
    report["form"] = NameOf(image->Form());
    report["file_bytes"] = stored.Size();
    Report container = ReportOnContainer(file, image->Form());
    if (!container.empty()) {
        report["container"] = std::move(container);
    }
    report["image"] = ReportOnImage(*image);
    return report;
}

Report List(const std::string& file) {
    const std::unique_ptr<CImageSource> image = OpenOrRefuse(file);
    Report report;
    report["file"] = file;
    report["form"] = NameOf(image->Form());
    report["files"] = Report::array();
    for (const SContentFile& found : ReadContents(*image).files) {
        report["files"].push_back({{"sector", found.sector}, {"bytes", found.size}, {"path", found.path}});
    }
    return report;
}

void PrintList(const Report& report) {
    for (const Report& file : report["files"]) {
        std::printf("%8u %10u %s\n", file["sector"].get<std::uint32_t>(), file["bytes"].get<std::uint32_t>(),
                    file["path"].get<std::string>().c_str());
    }
}

}  // namespace

void AddInspectCommands(CLI::App& app, ChosenCommand& chosen) {
    SInspectCommand info;
    info.name = "info";
    info.summary = "Tell what a file is, by its content";
    info.examples = "Examples:\n  vantrel info game.cso\n  vantrel info --json *.iso | jq .image.kind";
    info.inspect = Info;
    AddInspectCommand(app, chosen, std::move(info));

    SInspectCommand list;
    list.name = "list";
    list.summary = "List the files in an image: first sector, bytes, path";
    list.examples = "Examples:\n  vantrel list game.iso\n  vantrel list --json game.dax";
    list.inspect = List;
    list.print = PrintList;
    AddInspectCommand(app, chosen, std::move(list));
}

}  // namespace vantrel
