// CSO and DAX files. What the readers of the console program see in a file is what the conversion back makes of it.
#include <optional>

#include "compress/cso.h"
#include "compress/dax.h"
#include "image/inspect/container_report.h"
#include "image/inspect/image_report.h"
#include "console/refused.h"
#include "image/inspect/verify.h"
#include "fuzz/invariants.h"
#include "image/image_source.h"

namespace vantrel::fuzz {

namespace {

/// A few bytes may stand for gigabytes; images beyond the room end with a full disk.
constexpr std::int64_t kRoom = 4 << 20U;
const std::string kFile = std::string(kFolder) + "game.bin";
const std::string kOutput = std::string(kFolder) + "new-game.iso";

using Conversion = void (*)(const SCompressionRequest&, COperation&);

std::optional<Bytes> Expanded(std::span<const std::uint8_t> file, Conversion expand, EOutputManner manner) {
    ClearDisk(kRoom);
    PutFile(kFile, file);
    CSilentOperation operation;
    const std::uint32_t workers = manner == EOutputManner::InPlace ? 1 : 2;
    const auto run = [&] { expand(DirectConversion(kFile, kOutput, manner, workers), operation); };
    const bool completed = manner == EOutputManner::InPlace ? !EndingOf(run) : CompletesOrLeavesNothing(run);
    return completed ? std::optional(ContentOf(kOutput)) : std::nullopt;
}

/// The image as far as it can be read, at most what the disk could hold.
Bytes ReadThrough(CImageSource& image) {
    Bytes bytes(static_cast<std::size_t>(std::min(image.Size(), kRoom)));
    bytes.resize(image.ReadAt(0, bytes));
    return bytes;
}

void Report(EForm form) {
    ReportOnContainer(kFile, form).dump();
    ContainerProblems(kFile, form);
    try {
        VerifyImage(kFile).dump(2, ' ', false, vantrel::Report::error_handler_t::replace);
    } catch (const CRefused&) {
        // told
    }
}

void Compare(CImageSource& image, const std::optional<Bytes>& expanded, std::size_t fileSize) {
    const Bytes read = ReadThrough(image);
    const bool whole = static_cast<std::int64_t>(read.size()) == image.Size();
    if (image.Size() + static_cast<std::int64_t>(fileSize) > kRoom) {
        return;  // The disk was too small for the conversion.
    }
    Expect(!whole || expanded, "an image that can be read whole can be converted");
    Expect(!whole || *expanded == read, "the conversion and the reader find the same image");
    // DAX frames of other lengths than the header's size gives them are converted, and told by the reader only.
    Expect(whole || !expanded || image.Form() == EForm::Dax, "an image that cannot be read whole is not converted");
}

void Run(std::span<const std::uint8_t> file, Conversion expand, EForm form) {
    const std::optional<Bytes> inWindow = Expanded(file, expand, EOutputManner::InPlace);
    const std::optional<Bytes> careful = Expanded(file, expand, EOutputManner::CommitNew);
    Expect(!careful || !inWindow || *careful == *inWindow, "both manners expand to the same image");
    std::string problem;
    const std::unique_ptr<CImageSource> image = OpenImage(kFile, problem);
    Expect(image || !problem.empty(), "a file is refused with a reason");
    if (!image) {
        Expect(!careful, "what is refused as an image is not converted either");
        return;
    }
    if (image->Form() != form) {
        return;
    }
    Compare(*image, careful, file.size());
    if (image->Size() <= kRoom) {
        Report(form);
    }
}

}  // namespace

}  // namespace vantrel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vantrel::fuzz;
    const bool isDax = size > 0 && data[0] == 'D';
    Run({data, size}, isDax ? vantrel::DaxToIso : vantrel::CsoToIso, isDax ? vantrel::EForm::Dax : vantrel::EForm::Cso);
    return 0;
}
