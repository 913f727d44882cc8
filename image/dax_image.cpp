// Reads the image in a DAX file.
#include "compress/dax_reader.h"
#include "files/refused.h"
#include "image/block_image.h"
#include "image/forms.h"
#include "operation/text.h"

namespace vantrel {

namespace {

const char* DaxFaultText(EDaxFault fault) {
    switch (fault) {
        case EDaxFault::None:
            break;
        case EDaxFault::Header:
            return "the header is not one of a DAX file";
        case EDaxFault::Tables:
            return "the tables do not fit the file";
        case EDaxFault::Memory:
            return "there is not enough memory for the tables";
        case EDaxFault::Read:
            return "its stored bytes lie outside the file or are too many";
        case EDaxFault::Inflate:
            return "its stream is damaged";
    }
    return "";
}

class CDaxImage : public CBlockImage {
public:
    bool Open(const std::string& path, std::string& problem) {
        if (!m_dax.Open(path)) {
            problem = LastFileError();
            return false;
        }
        EDaxFault fault = m_dax.ReadHeader();
        if (fault == EDaxFault::None) {
            fault = m_dax.ReadTables();
        }
        problem = DaxFaultText(fault);
        SetGeometry(m_dax.Header().image_size, kDaxFrameSize);
        return fault == EDaxFault::None;
    }

    EForm Form() const override { return EForm::Dax; }
    const char* BlockNoun() const override { return "frame"; }

private:
    bool LoadBlock(std::uint64_t number, std::span<const std::uint8_t>& content, std::string& fault) override {
        const EDaxFault found = m_dax.ReadFrame(static_cast<std::uint32_t>(number), content);
        if (found != EDaxFault::None) {
            fault = DaxFaultText(found);
            return false;
        }
        const std::int64_t wanted =
            std::min<std::int64_t>(Size() - static_cast<std::int64_t>(number) * kDaxFrameSize, kDaxFrameSize);
        if (static_cast<std::int64_t>(content.size()) != wanted) {
            fault = Format("its stream expands to %zu bytes instead of %lld", content.size(),
                           static_cast<long long>(wanted));
            return false;
        }
        return true;
    }

    CDaxReader m_dax;
};

}  // namespace

std::unique_ptr<CImageSource> OpenDaxImage(const std::string& path) {
    auto image = std::make_unique<CDaxImage>();
    if (std::string problem; !image->Open(path, problem)) {
        throw CRefused(path + ": " + problem);
    }
    return image;
}

}  // namespace vantrel
