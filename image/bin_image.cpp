// The image in a raw file of 2352-byte sectors: their user data.
#include <array>

#include "files/input_file.h"
#include "image/block_image.h"
#include "image/forms.h"
#include "raw/sector_check.h"

namespace vantrel {

namespace {

class CBinImage : public CBlockImage {
public:
    bool Open(const std::string& path, std::string& problem) {
        const std::int64_t size = m_file.Open(path) ? m_file.Size() : -1;
        if (size < 0) {
            problem = LastFileError();
            return false;
        }
        SetGeometry(size / kRawUnit * static_cast<std::int64_t>(kUserDataSize), kUserDataSize);
        return true;
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

std::unique_ptr<CImageSource> OpenBinImage(const std::string& path, std::string& problem) {
    auto image = std::make_unique<CBinImage>();
    return image->Open(path, problem) ? std::move(image) : nullptr;
}

}  // namespace vantrel
