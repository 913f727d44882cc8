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
        case EDaxFault::Unsupported:
        case EDaxFault::Short:
            break;
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
    explicit CDaxImage(const std::string& path) {
        if (!m_dax.Open(path)) {
            throw CRefused(path + ": " + LastFileError());
        }
        EDaxFault fault = m_dax.ReadHeader();
        if (fault == EDaxFault::None) {
            fault = m_dax.ReadTables();
        }
        if (fault != EDaxFault::None) {
            throw CRefused(fault == EDaxFault::Unsupported ? m_dax.Unsupported() : path + ": " + DaxFaultText(fault));
        }
        SetGeometry(m_dax.Header().image_size, kDaxFrameSize);
    }

    EForm Form() const override { return EForm::Dax; }
    const char* BlockNoun() const override { return "frame"; }

private:
    bool LoadBlock(std::uint64_t number, std::span<const std::uint8_t>& content, std::string& fault) override {
        const auto frame = static_cast<std::uint32_t>(number);
        const EDaxFault found = m_dax.ReadFrame(frame, content);
        if (found == EDaxFault::Short) {
            fault = Format("it has %zu bytes instead of %zu", content.size(), m_dax.Header().ContentSize(frame));
        } else if (found != EDaxFault::None) {
            fault = DaxFaultText(found);
        }
        return found == EDaxFault::None;
    }

    CDaxReader m_dax{true};
};

}  // namespace

std::unique_ptr<CImageSource> OpenDaxImage(const std::string& path) {
    return std::make_unique<CDaxImage>(path);
}

}  // namespace vantrel
