// An image that is stored without a container.
#include "files/input_file.h"
#include "files/refused.h"
#include "image/forms.h"
#include "iso/iso9660.h"

namespace vantrel {

namespace {

class CPlainImage : public CImageSource {
public:
    explicit CPlainImage(const std::string& path) {
        m_size = m_file.Open(path) ? m_file.Size() : -1;
        if (m_size < 0) {
            throw CRefused(path + ": " + LastFileError());
        }
    }

    EForm Form() const override { return EForm::Iso; }
    std::uint32_t BlockSize() const override { return static_cast<std::uint32_t>(kSectorSize); }
    const char* BlockNoun() const override { return "sector"; }
    std::int64_t Size() const override { return m_size; }
    const std::string& Fault() const override { return m_fault; }
    const std::string& ReadProblem() const override { return m_file.ReadProblem(); }

    CInputFile* PlainFile() override { return &m_file; }

    std::size_t ReadAt(std::int64_t position, std::span<std::uint8_t> buffer) override {
        const std::size_t done = m_file.ReadAt(position, buffer);
        if (m_file.HasFailed() && m_fault.empty()) {
            m_fault = "it cannot be read: " + LastFileError();
        }
        return done;
    }

private:
    CInputFile m_file;
    std::int64_t m_size = -1;
    std::string m_fault;
};

}  // namespace

std::unique_ptr<CImageSource> OpenPlainImage(const std::string& path) {
    return std::make_unique<CPlainImage>(path);
}

}  // namespace vantrel
