// Reads the image in a CSO or ZSO file.
#include "compress/cso_reader.h"
#include "files/refused.h"
#include "image/container_image.h"
#include "image/forms.h"
#include "operation/text.h"

namespace vantrel {

namespace {

const char* CsoFaultText(ECsoFault fault) {
    switch (fault) {
        case ECsoFault::None:
        case ECsoFault::ShortHeader:
        case ECsoFault::Unsupported:
            break;
        case ECsoFault::Format:
            return "the file has another form now";
        case ECsoFault::Memory:
            return "there is not enough memory for the index";
        case ECsoFault::Index:
            return "the index cannot be read";
        case ECsoFault::Read:
            return "its stored bytes lie outside the file, are too many or end before they begin";
        case ECsoFault::InflateBegin:
        case ECsoFault::Inflate:
        case ECsoFault::InflateEnd:
            return "its stream is damaged";
        case ECsoFault::WrongBlockSize:
            return "its stream expands to too few bytes";
    }
    return "";
}

class CCsoImage : public CContainerImage {
public:
    CCsoImage(const std::string& path, EForm form, const CsoMagic& magic)
        : CContainerImage(EStreamForm::Raw), m_form(form), m_cso(true, magic) {
        if (!m_cso.Open(path)) {
            throw CRefused(path + ": " + LastFileError());
        }
        ECsoFault fault = m_cso.ReadHeader();
        if (fault == ECsoFault::None) {
            fault = m_cso.ReadIndex();
        }
        if (fault != ECsoFault::None) {
            throw CRefused(!m_cso.Refusal().empty() ? m_cso.Refusal() : path + ": " + CsoFaultText(fault));
        }
        const CsoHeader& header = m_cso.Header();
        SetGeometry(
            {path, static_cast<std::int64_t>(header.total_bytes - m_cso.MissingBytes()), header.block_size, "block"});
    }

    EForm Form() const override { return m_form; }

    std::optional<CReport> Facts() override {
        const CsoHeader& header = m_cso.Header();
        std::uint64_t plain = 0;
        for (std::uint64_t block = 0; block < m_cso.BlockCount(); ++block) {
            plain += m_cso.StoredAs(block) == EStoredAs::Plain ? 1 : 0;
        }
        CReport facts{{"header_size", header.header_size},
                      {"total_bytes", header.total_bytes},
                      {"block_size", header.block_size},
                      {"version", header.version},
                      {"align", header.align},
                      {"blocks", m_cso.BlockCount()},
                      {"plain_blocks", plain},
                      {"ratio_percent", RatioPercent(m_cso.FileSize(), header.total_bytes)},
                      {"oddities", Oddities()}};
        if (!m_cso.Problem().empty()) {
            throw CRefused(m_cso.Problem());
        }
        return facts;
    }

    std::vector<std::string> MissingParts() const override {
        if (m_cso.MissingBytes() == 0) {
            return {};
        }
        return {Format("the last %llu bytes of the image, a partial block, are not stored",
                       static_cast<unsigned long long>(m_cso.MissingBytes()))};
    }

    CStoredBlocks& Stored() override { return m_cso; }
    SBlockSizes Sizes() const override { return m_cso.BlockSizes(); }
    std::string FaultOf(std::uint64_t number, const SBlock& block) const override {
        return CsoFaultText(m_cso.FaultOf(number, block));
    }

private:
    std::vector<std::string> Oddities() const {
        constexpr std::uint32_t kUsualBlockSize = 2048;
        const CsoHeader& header = m_cso.Header();
        std::vector<std::string> oddities;
        const auto addIf = [&oddities](bool odd, const char* text) {
            if (odd) {
                oddities.emplace_back(text);
            }
        };
        addIf(header.header_size != 0 && header.header_size != CsoHeader::kSize, "the header size is neither 0 nor 24");
        addIf(header.version == kCsoVersionWithLz4, "version 2 with LZ4 blocks");
        addIf(header.block_size != kUsualBlockSize, "blocks are not 2048 bytes");
        addIf(header.align != 0, "positions are shifted");
        addIf(header.reserved[0] != 0 || header.reserved[1] != 0, "reserved bytes are not zero");
        addIf(header.total_bytes % kUsualBlockSize != 0, "the image is not a whole number of sectors");
        addIf(m_cso.MissingBytes() != 0, "the image's partial last block is not stored");
        addIf(m_cso.DataEnd() != static_cast<std::uint64_t>(m_cso.FileSize()),
              "the index does not end at the end of the file");
        return oddities;
    }

    EForm m_form;
    CCsoReader m_cso;
};

}  // namespace

std::unique_ptr<CImageSource> OpenCsoImage(const std::string& path) {
    return std::make_unique<CCsoImage>(path, EForm::Cso, kCsoMagic);
}

std::unique_ptr<CImageSource> OpenZsoImage(const std::string& path) {
    return std::make_unique<CCsoImage>(path, EForm::Zso, kZsoMagic);
}

}  // namespace vantrel
