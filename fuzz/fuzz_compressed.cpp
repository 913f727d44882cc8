// CSO and DAX files: the image readers and the expansions must find the same image in a file.
#include <optional>

#include "compress/cso.h"
#include "compress/dax.h"
#include "files/refused.h"
#include "fuzz/invariants.h"
#include "image/image_source.h"
#include "image/inspect/container_report.h"
#include "image/inspect/verify.h"

namespace vantrel::fuzz {

namespace {

/// A few bytes may expand to gigabytes; larger images than this end with a full disk.
constexpr std::int64_t kCapacity = 4 << 20U;
const std::string kFile = std::string(kFolder) + "game.bin";
const std::string kOutput = std::string(kFolder) + "new-game.iso";

using Conversion = void (*)(const SCompressionRequest&, COperation&);

std::optional<Bytes> ExpandedStrictly(std::span<const std::uint8_t> file, Conversion expand) {
    ClearDisk(kCapacity);
    PutFile(kFile, file);
    CSilentOperation operation;
    const SCompressionRequest request = DirectConversion(kFile, kOutput, EOutputManner::CommitNew, 2, 1);
    const bool completed = CompletesOrLeavesNothing([&] { expand(request, operation); });
    return completed ? std::optional(ContentOf(kOutput)) : std::nullopt;
}

std::optional<Bytes> ExpandedInWindow(std::span<const std::uint8_t> file, Conversion expand) {
    ClearDisk(kCapacity);
    PutFile(kFile, file);
    CSilentOperation operation;
    SCompressionRequest request = DirectConversion(kFile, kOutput, EOutputManner::InPlace, 0, 1);
    request.strict = false;
    const bool completed = !EndingOf([&] { expand(request, operation); });
    return completed ? std::optional(ContentOf(kOutput)) : std::nullopt;
}

/// The readable beginning of the image, at most as much as the disk could hold.
Bytes ReadThrough(CImageSource& image) {
    Bytes bytes(static_cast<std::size_t>(std::min(image.Size(), kCapacity)));
    bytes.resize(image.ReadAt(0, bytes));
    return bytes;
}

void Report(EForm form) {
    CSilentOperation operation;
    ReportOnContainer(kFile, form);
    ContainerProblems(kFile, form);
    try {
        VerifyFile(kFile, operation);
    } catch (const CRefused&) {
        // damaged where the file system is read
    }
}

void Compare(CImageSource& image, const std::optional<Bytes>& expanded, std::size_t fileSize) {
    const Bytes read = ReadThrough(image);
    const bool whole = static_cast<std::int64_t>(read.size()) == image.Size();
    if (image.Size() + static_cast<std::int64_t>(fileSize) > kCapacity) {
        return;  // The disk was too small for the conversion.
    }
    const bool isComplete = ContainerProblems(kFile, image.Form()).empty();
    Expect(expanded.has_value() == (whole && isComplete), "exactly the complete and readable images can be expanded");
    Expect(!expanded || *expanded == read, "expansion and reader find the same image");
}

bool BeginsWith(const Bytes& bytes, const Bytes& beginning) {
    return bytes.size() >= beginning.size() && std::equal(beginning.begin(), beginning.end(), bytes.begin());
}

/// The window leaves out a partial last block of a CSO, and believes the frames of a DAX instead of its header.
void CompareWithWindow(const Bytes& strict, const Bytes& inWindow, EForm form) {
    if (form == EForm::Cso) {
        Expect(BeginsWith(strict, inWindow), "the window expands a CSO to the beginning of the image");
    } else if ((*ReportOnContainer(kFile, form))["plain_frames"] == 0) {
        Expect(BeginsWith(inWindow, strict), "the window expands a DAX to the image and its padding");
    }
}

void Run(std::span<const std::uint8_t> file, Conversion expand, EForm form) {
    const std::optional<Bytes> inWindow = ExpandedInWindow(file, expand);
    const std::optional<Bytes> strict = ExpandedStrictly(file, expand);
    if (strict && inWindow) {
        CompareWithWindow(*strict, *inWindow, form);
    }
    try {
        const std::unique_ptr<CImageSource> image = OpenImage(kFile);
        if (image->Form() != form) {
            return;
        }
        Compare(*image, strict, file.size());
        if (image->Size() <= kCapacity) {
            Report(form);
        }
    } catch (const CRefused&) {
        Expect(!strict, "a file that is refused as an image is not expanded either");
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
