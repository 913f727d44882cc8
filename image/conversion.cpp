#include "image/conversion.h"

#include <algorithm>
#include <functional>
#include <utility>
#include <vector>

#include "compress/buffer.h"
#include "compress/cso.h"
#include "compress/dax.h"
#include "compress/work_plan.h"
#include "files/checked_file.h"
#include "files/refused.h"
#include "image/forms.h"
#include "image/image_compare.h"
#include "operation/text.h"
#include "pipeline/ordered_pipeline.h"
#include "raw/iso_to_bin.h"

namespace vantrel {

namespace {

/// Copy size for plain images.
constexpr std::size_t kCopySize = 4U << 20U;

/// A part of an image on its way into a plain image.
struct SImagePart {
    Buffer room;
    std::unique_ptr<CSourcePiece> piece;
    std::size_t length = 0;
    bool isZero = false;
};

/// One conversion to a plain image.
class CIsoWriter {
public:
    CIsoWriter(const SImageConversion& conversion, COperation& operation)
        : m_conversion(conversion), m_operation(operation), m_size(conversion.image.Size()) {}

    void Run(const std::function<void(COutputFile& output)>& check) {
        m_output.OpenOrFail(m_conversion.outputPath, m_conversion.manner, "Cannot create %s");
        m_operation.SetTotal(m_size);
        if (m_conversion.image.PlainFile() != nullptr) {
            CopyImage();
        } else {
            ExpandImage();
        }
        m_output.FinishOrFail();
        check(m_output);
        m_output.CommitOrFail();
        m_operation.Complete("Conversion to ISO Done !");
    }

private:
    void CopyImage() {
        std::vector<std::uint8_t> buffer(kCopySize);
        while (m_done < m_size) {
            const auto wanted = static_cast<std::size_t>(std::min<std::int64_t>(kCopySize, m_size - m_done));
            const std::size_t count = m_output.Copy(m_conversion.image, m_done, std::span(buffer).first(wanted));
            m_output.FailIfUnwritten();
            Advance(count, wanted, m_conversion.image.ReadProblem());
        }
    }

    void ExpandImage() {
        const std::uint32_t unit = m_conversion.image.PieceUnit();
        const auto units = static_cast<std::uint64_t>((m_size + unit - 1) / unit);
        const SWorkPlan plan = PlanWork(m_conversion.workers, {unit, 0}, units, unit);
        const std::size_t partSize = std::size_t{plan.blocksPerSlot} * unit;
        COrderedPipeline<SImagePart> parts(
            (units + plan.blocksPerSlot - 1) / plan.blocksPerSlot, plan.workers, Parts(plan.SlotCount(), partSize),
            [partSize](SImagePart& part, std::uint64_t number) {
                part.piece->Load(static_cast<std::int64_t>(number * partSize), {part.room.get(), partSize});
            },
            [partSize](SImagePart& part, std::uint64_t, std::uint32_t) {
                part.length = part.piece->Expand({part.room.get(), partSize});
                part.isZero = IsZero({part.room.get(), part.length});
            });
        while (const SImagePart* part = parts.Next()) {
            const auto wanted =
                static_cast<std::size_t>(std::min<std::int64_t>(static_cast<std::int64_t>(partSize), m_size - m_done));
            WritePart(*part);
            Advance(part->length, wanted, part->piece->Problem());
        }
    }

    std::vector<SImagePart> Parts(std::size_t count, std::size_t size) {
        std::vector<SImagePart> parts(count);
        for (SImagePart& part : parts) {
            part.room = TryAllocate(size);
            part.piece = m_conversion.image.NewPiece(size);
            if (!part.room || !part.piece) {
                m_operation.Fail("Not enough memory to read " + m_conversion.inputPath);
            }
        }
        return parts;
    }

    /// Zeros become holes where the file system supports them.
    void WritePart(const SImagePart& part) {
        if (part.isZero) {
            m_output.WriteZerosOrFail(static_cast<std::int64_t>(part.length));
        } else {
            m_output.WriteOrFail({part.room.get(), part.length});
        }
    }

    void Advance(std::size_t count, std::size_t wanted, const std::string& problem) {
        if (count != wanted) {
            m_operation.Fail(!problem.empty() ? problem
                                              : "Cannot read " + m_conversion.inputPath + ": unexpected end of file");
        }
        m_done += static_cast<std::int64_t>(count);
        m_operation.SetDone(m_done);
        m_operation.Yield();
    }

    const SImageConversion& m_conversion;
    COperation& m_operation;
    std::int64_t m_size;
    std::int64_t m_done = 0;
    CCheckedOutput m_output{m_operation};
};

/// Fails if the image in the output, which is read at `path`, differs.
void CompareWritten(const SImageConversion& conversion, const std::string& path, COperation& operation) {
    const std::unique_ptr<CImageSource> written = OpenImageAs(conversion.form, path);
    const std::int64_t position = FirstDifference(conversion.image, *written, operation);
    RefuseDamaged(*written, conversion.outputPath);
    if (position != conversion.image.Size() || position != written->Size()) {
        operation.Fail(Format("%s: the output reads back differently from byte %lld on", conversion.outputPath.c_str(),
                              static_cast<long long>(position)));
    }
}

/// Fails if the output reads back differently. The message names the output, not the temporary file.
void ReadBack(const SImageConversion& conversion, COutputFile& output, COperation& operation) {
    if (!conversion.readBack) {
        return;
    }
    const std::string path = output.PathToRead();
    if (path.empty()) {
        operation.Fail(output.Problem());
    }
    try {
        CompareWritten(conversion, path, operation);
    } catch (const CRefused& refused) {
        std::string problem = refused.what();
        if (const std::size_t start = problem.find(path); start != std::string::npos) {
            problem.replace(start, path.size(), conversion.outputPath);
        }
        operation.Fail(problem);
    }
}

SCompressionRequest CompressionOf(const SImageConversion& conversion, const char* doneText) {
    SCompressionRequest request = DirectConversion(conversion.inputPath, conversion.outputPath, conversion.manner,
                                                   conversion.workers, conversion.level);
    request.image = &conversion.image;
    request.blockSize = conversion.blockSize;
    request.doneText = doneText;
    return request;
}

}  // namespace

void ConvertImage(const SImageConversion& conversion, COperation& operation) {
    const auto check = [&](COutputFile& output) { ReadBack(conversion, output, operation); };
    if (conversion.form == EForm::Iso) {
        CIsoWriter(conversion, operation).Run(check);
    } else if (conversion.form == EForm::Bin) {
        ImageToBin({conversion.inputPath, conversion.outputPath, CuePathOf(conversion.outputPath), conversion.manner,
                    &conversion.image, conversion.workers, check, "Conversion to BIN Done !"},
                   operation);
    } else if (conversion.form == EForm::Dax) {
        SCompressionRequest request = CompressionOf(conversion, "Conversion to DAX Done !");
        request.checkOutput = check;
        ImageToDax(request, operation);
    } else {
        const bool isZso = conversion.form == EForm::Zso;
        SCompressionRequest request =
            CompressionOf(conversion, isZso ? "Conversion to ZSO Done !" : "Conversion to CSO Done !");
        request.magic = isZso ? kZsoMagic : kCsoMagic;
        request.checkOutput = check;
        ImageToCso(request, operation);
    }
}

std::unique_ptr<CImageSource> OpenInput(const std::string& path) {
    std::unique_ptr<CImageSource> image = OpenImage(path);
    if (const std::vector<std::string> missing = image->MissingParts(); !missing.empty()) {
        throw CRefused(path + ": " + missing.front());
    }
    return image;
}

std::unique_ptr<CImageSource> OpenContainer(const std::string& path, const char* openPattern, COperation& operation) {
    CCheckedInput file(operation);
    file.OpenOrFail(path, openPattern);
    const EForm form = FormOf(file);
    file.FailIfUnread();
    file.Close();
    return form == EForm::Unknown || form == EForm::Iso ? nullptr : OpenInput(path);
}

void WarnOfOtherParts(const CImageSource& image, const std::string& path, COperation& operation) {
    std::string text;
    for (const std::string& part : image.OtherParts()) {
        text.append(text.empty() ? "" : "\n").append(path).append(": ").append(part);
    }
    if (!text.empty()) {
        operation.Warn(text);
    }
}

}  // namespace vantrel
