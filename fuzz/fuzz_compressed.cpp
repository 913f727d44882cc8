// CSO, ZSO and DAX files: the image readers and the expansions must find the same image in a file, and other forms must
// keep it.
#include <optional>

#include "compress/cso.h"
#include "compress/dax.h"
#include "files/refused.h"
#include "fuzz/invariants.h"
#include "image/conversion.h"
#include "image/image_source.h"
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

/// What `convert` does.
void ConvertTo(EForm form, const SCompressionRequest& request, COperation& operation) {
    try {
        const std::unique_ptr<CImageSource> image = OpenInput(request.imagePath);
        SImageConversion conversion = {request.imagePath, *image, form, request.outputPath, request.manner, 2, 1};
        conversion.readBack = true;
        ConvertImage(conversion, operation);
    } catch (const CRefused& refused) {
        operation.Fail(refused.what());
    }
}

void ConvertToIso(const SCompressionRequest& request, COperation& operation) {
    ConvertTo(EForm::Iso, request, operation);
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

void Report() {
    CSilentOperation operation;
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
    const bool isComplete = image.MissingParts().empty();
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
    } else if ((*OpenImage(kFile)->Facts())["plain_frames"] == 0) {
        Expect(BeginsWith(inWindow, strict), "the window expands a DAX to the image and its padding");
    }
}

/// Small images survive every compressed form.
void CheckOtherForms(CImageSource& image) {
    constexpr std::int64_t kLargest = 64 << 10U;
    if (image.Size() > kLargest) {
        return;
    }
    for (const EForm form : {EForm::Cso, EForm::Zso, EForm::Dax}) {
        CSilentOperation operation;
        const SCompressionRequest request = DirectConversion(kFile, kOutput, EOutputManner::CommitReplace, 2, 1);
        Expect(CompletesOrLeavesNothing([&] { ConvertTo(form, request, operation); }), "every form holds every image");
    }
}

void CompareExpansions(std::span<const std::uint8_t> file, const std::optional<Bytes>& converted, Conversion expand,
                       EForm form) {
    const std::optional<Bytes> inWindow = ExpandedInWindow(file, expand);
    const std::optional<Bytes> strict = ExpandedStrictly(file, expand);
    if (strict && inWindow) {
        CompareWithWindow(*strict, *inWindow, form);
    }
    if (strict && converted) {
        Expect(*strict == *converted, "both conversions write the same image");
    }
}

/// `expand` is null for a form that only `convert` reads.
void Run(std::span<const std::uint8_t> file, Conversion expand, EForm form) {
    const std::optional<Bytes> converted = ExpandedStrictly(file, ConvertToIso);
    if (expand != nullptr) {
        CompareExpansions(file, converted, expand, form);
    }
    try {
        const std::unique_ptr<CImageSource> image = OpenImage(kFile);
        if (image->Form() != form) {
            return;
        }
        Compare(*image, converted, file.size());
        if (converted) {
            CheckOtherForms(*image);
        }
        if (image->Size() <= kCapacity) {
            image->Facts();
            Report();
        }
    } catch (const CRefused&) {
        Expect(!converted, "a file that is refused as an image is not converted either");
    }
}

}  // namespace

}  // namespace vantrel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vantrel;
    const std::uint8_t first = size > 0 ? data[0] : 0;
    if (first == 'Z') {
        fuzz::Run({data, size}, nullptr, EForm::Zso);
    } else if (first == 'D') {
        fuzz::Run({data, size}, DaxToIso, EForm::Dax);
    } else {
        fuzz::Run({data, size}, CsoToIso, EForm::Cso);
    }
    return 0;
}
