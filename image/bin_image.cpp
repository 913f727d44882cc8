// The image in a raw file of 2352-byte sectors: their user data.
#include <array>

#include "files/input_file.h"
#include "files/refused.h"
#include "image/block_image.h"
#include "image/forms.h"
#include "raw/sector_check.h"

namespace vantrel {

namespace {

class CBinImage : public CBlockImage {
public:
    explicit CBinImage(const std::string& path) {
        const std::int64_t size = m_file.Open(path) ? m_file.Size() : -1;
        if (size < 0) {
            throw CRefused(path + ": " + LastFileError());
        }
        SetGeometry(size / kRawUnit * static_cast<std::int64_t>(kUserDataSize), kUserDataSize);
    }

    EForm Form() const override { return EForm::Bin; }
    const char* BlockNoun() const override { return "sector"; }

private:
    static constexpr auto kRawUnit = static_cast<std::int64_t>(kRawSectorSize);

    bool LoadBlock(std::uint64_t number, std::span<const std::uint8_t>& content, std::string& fault) override {
        if (m_file.ReadAt(static_cast<std::int64_t>(number) * kRawUnit, m_sector) != m_sector.size()) {
            fault = "it cannot be read";
            return false;
        }
        content = UserDataOf(m_sector);
        return true;
    }

    CInputFile m_file;
    std::array<std::uint8_t, kRawSectorSize> m_sector = {};
};

}  // namespace

std::unique_ptr<CImageSource> OpenBinImage(const std::string& path) {
    return std::make_unique<CBinImage>(path);
}

}  // namespace vantrel
