// Reads the image in a CSO file.
#include "compress/cso_reader.h"
#include "files/refused.h"
#include "image/block_image.h"
#include "image/forms.h"

namespace vantrel {

namespace {

const char* CsoFaultText(ECsoFault fault) {
    switch (fault) {
        case ECsoFault::None:
            break;
        case ECsoFault::ShortHeader:
            return "the file is too short for a header";
        case ECsoFault::Format:
            return "the header is not one of a CSO file";
        case ECsoFault::Unsupported:
            break;
        case ECsoFault::Memory:
            return "the header claims blocks that are too large";
        case ECsoFault::Index:
            return "the index does not fit the file";
        case ECsoFault::Read:
            return "its stored bytes lie outside the file or are too many";
        case ECsoFault::InflateBegin:
        case ECsoFault::Inflate:
        case ECsoFault::InflateEnd:
            return "its stream is damaged";
        case ECsoFault::WrongBlockSize:
            return "its stream expands to too few bytes";
    }
    return "";
}

class CCsoImage : public CBlockImage {
public:
    explicit CCsoImage(const std::string& path) {
        if (!m_cso.Open(path)) {
            throw CRefused(path + ": " + LastFileError());
        }
        ECsoFault fault = m_cso.ReadHeader();
        if (fault == ECsoFault::None) {
            fault = m_cso.ReadIndex();
        }
        if (fault != ECsoFault::None) {
            throw CRefused(fault == ECsoFault::Unsupported ? m_cso.Unsupported() : path + ": " + CsoFaultText(fault));
        }
        const CsoHeader& header = m_cso.Header();
        SetGeometry(static_cast<std::int64_t>(header.total_bytes - m_cso.MissingBytes()), header.block_size);
    }

    EForm Form() const override { return EForm::Cso; }
    const char* BlockNoun() const override { return "block"; }

private:
    bool LoadBlock(std::uint64_t number, std::span<const std::uint8_t>& content, std::string& fault) override {
        const ECsoFault found = m_cso.ReadBlock(number, content);
        if (found != ECsoFault::None) {
            fault = CsoFaultText(found);
        }
        return found == ECsoFault::None;
    }

    CCsoReader m_cso{true};
};

}  // namespace

std::unique_ptr<CImageSource> OpenCsoImage(const std::string& path) {
    return std::make_unique<CCsoImage>(path);
}

}  // namespace vantrel
