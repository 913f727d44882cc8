// Commands that look at files: info, verify and list.
#include <cstdio>

#include "console/commands.h"
#include "image/inspect/container_report.h"
#include "image/inspect/image_report.h"
#include "console/inspect_command.h"
#include "image/inspect/layout_report.h"
#include "console/open_image.h"
#include "console/refused.h"
#include "image/inspect/verify.h"
#include "files/input_file.h"
#include "files/path.h"
#include "iso/contents.h"

namespace vantrel {

namespace {

bool IsLayout(const std::string& file) {
    CInputFile content;
    const bool isLayout = content.Open(file) && FormOf(content) == EForm::Iml;
    if (!content.IsOpen() || content.HasFailed()) {
        throw CRefused(file + ": " + LastFileError());
    }
    return isLayout;
}

Report Info(const std::string& file) {
    if (IsLayout(file)) {
        return ReportOnLayout(file);
    }
    const std::unique_ptr<CImageSource> image = OpenImageOrRefuse(file);
    Report report;
    report["file"] = file;
    report["form"] = NameOf(image->Form());
    report["file_bytes"] = SizeOrRefuse(file);
    Report container = ReportOnContainer(file, image->Form());
    if (!container.empty()) {
        report["container"] = std::move(container);
    }
    report["image"] = ReportOnImage(*image);
    RefuseDamaged(*image, file);
    return report;
}

Report List(const std::string& file) {
    const std::unique_ptr<CImageSource> image = OpenImageOrRefuse(file);
    Report report;
    report["file"] = file;
    report["form"] = NameOf(image->Form());
    report["files"] = Report::array();
    for (const SContentFile& found : ReadContents(*image).files) {
        report["files"].push_back({{"sector", found.sector}, {"bytes", found.size}, {"path", found.path}});
    }
    RefuseDamaged(*image, file);
    return report;
}

void PrintList(const Report& report) {
    for (const Report& file : report["files"]) {
        std::printf("%8u %10u %s\n", file["sector"].get<std::uint32_t>(), file["bytes"].get<std::uint32_t>(),
                    file["path"].get<std::string>().c_str());
    }
}

void AddVerifyCommand(CLI::App& app, ChosenCommand& chosen) {
    const auto against = std::make_shared<std::string>();
    SInspectCommand verify;
    verify.name = "verify";
    verify.summary = "Read a file whole, check everything in it, and print the sums of its image";
    verify.examples =
        "The sums are those by which public disc databases know an image. Exit status 1: something is wrong.\n"
        "Examples:\n  vantrel verify game.bin\n  vantrel verify game.cso --against game.iso";
    verify.addOptions = [against](CLI::App& command) {
        command.add_option("--against", *against, "Compare with the image in this file instead, whatever its form");
    };
    verify.inspect = [against](const std::string& file) {
        if (!against->empty()) {
            return CompareImages(file, *against);
        }
        return IsLayout(file) ? VerifyLayout(file) : VerifyImage(file);
    };
    AddInspectCommand(app, chosen, std::move(verify));
}

}  // namespace

void AddInspectCommands(CLI::App& app, ChosenCommand& chosen) {
    SInspectCommand info;
    info.name = "info";
    info.summary = "Tell what a file is, by its content";
    info.examples = "Examples:\n  vantrel info game.cso\n  vantrel info --json *.iso | jq .image.kind";
    info.inspect = Info;
    AddInspectCommand(app, chosen, std::move(info));
    AddVerifyCommand(app, chosen);

    SInspectCommand list;
    list.name = "list";
    list.summary = "List the files in an image: first sector, bytes, path";
    list.examples = "Examples:\n  vantrel list game.iso\n  vantrel list --json game.dax";
    list.inspect = List;
    list.print = PrintList;
    AddInspectCommand(app, chosen, std::move(list));
}

}  // namespace vantrel
