// Reads the image in a DAX file.
#include "compress/dax_reader.h"
#include "files/refused.h"
#include "image/container_image.h"
#include "image/forms.h"
#include "iso/iso9660.h"
#include "operation/text.h"

namespace vantrel {

namespace {

const char* DaxFaultText(EDaxFault fault) {
    switch (fault) {
        case EDaxFault::None:
            break;
        case EDaxFault::Header:
            return "the file has another form now";
        case EDaxFault::Unsupported:
        case EDaxFault::Short:
            break;
        case EDaxFault::Tables:
            return "the tables cannot be read";
        case EDaxFault::Memory:
            return "there is not enough memory for the tables";
        case EDaxFault::Read:
            return "its stored bytes lie outside the file or are too many";
        case EDaxFault::Inflate:
            return "its stream is damaged";
    }
    return "";
}

class CDaxImage : public CContainerImage {
public:
    explicit CDaxImage(const std::string& path) : CContainerImage(EStreamForm::Zlib) {
        if (!m_dax.Open(path)) {
            throw CRefused(path + ": " + LastFileError());
        }
        EDaxFault fault = m_dax.ReadHeader();
        if (fault == EDaxFault::None) {
            fault = m_dax.ReadTables();
        }
        if (fault != EDaxFault::None) {
            throw CRefused(!m_dax.Refusal().empty() ? m_dax.Refusal() : path + ": " + DaxFaultText(fault));
        }
        SetGeometry({path, m_dax.Header().image_size, kDaxFrameSize, "frame"});
    }

    EForm Form() const override { return EForm::Dax; }

    std::optional<CReport> Facts() override {
        std::uint32_t plain = 0;
        for (std::uint32_t frame = 0; frame < m_dax.FrameCount(); ++frame) {
            plain += m_dax.IsPlain(frame) ? 1 : 0;
        }
        CReport facts{{"image_size", m_dax.Header().image_size},
                      {"version", m_dax.Header().version},
                      {"frames", m_dax.FrameCount()},
                      {"plain_frames", plain},
                      {"ratio_percent", RatioPercent(m_dax.FileSize(), m_dax.Header().image_size)},
                      {"oddities", Oddities()}};
        if (!m_dax.Problem().empty()) {
            throw CRefused(m_dax.Problem());
        }
        return facts;
    }

    CStoredBlocks& Stored() override { return m_dax; }
    SBlockSizes Sizes() const override { return kDaxFrameSizes; }
    std::string FaultOf(std::uint64_t number, const SBlock& block) const override {
        const auto frame = static_cast<std::uint32_t>(number);
        const EDaxFault fault = m_dax.FaultOf(frame, block);
        return fault == EDaxFault::Short
                   ? Format("it has %zu bytes instead of %zu", block.content.size(), m_dax.Header().ContentSize(frame))
                   : DaxFaultText(fault);
    }

private:
    std::vector<std::string> Oddities() const {
        std::vector<std::string> oddities;
        bool inOrder = true;
        std::uint64_t end = DaxHeader::kSize + std::uint64_t{m_dax.FrameCount()} * (kDaxPositionSize + kDaxLengthSize) +
                            std::uint64_t{m_dax.AreaCount()} * kDaxAreaSize;
        for (std::uint32_t frame = 0; frame < m_dax.FrameCount(); ++frame) {
            inOrder = inOrder && m_dax.Position(frame) == end;
            end = std::uint64_t{m_dax.Position(frame)} + m_dax.Length(frame);
        }
        if (!inOrder) {
            oddities.emplace_back("frames do not follow one another without gaps");
        }
        if (end != static_cast<std::uint64_t>(m_dax.FileSize())) {
            oddities.emplace_back("the last frame does not end at the end of the file");
        }
        if (m_dax.Header().image_size % kSectorSize != 0) {
            oddities.emplace_back("the image is not a whole number of sectors");
        }
        return oddities;
    }

    CDaxReader m_dax{true};
};

}  // namespace

std::unique_ptr<CImageSource> OpenDaxImage(const std::string& path) {
    return std::make_unique<CDaxImage>(path);
}

}  // namespace vantrel
