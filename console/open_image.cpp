#include "console/open_image.h"

#include "console/refused.h"
#include "files/native_file.h"

namespace vantrel {

std::unique_ptr<CImageSource> OpenImageOrRefuse(const std::string& path) {
    std::string problem;
    std::unique_ptr<CImageSource> image = OpenImage(path, problem);
    if (!image) {
        throw CRefused(path + ": " + problem);
    }
    return image;
}

void RefuseDamaged(const CImageSource& image, const std::string& path) {
    if (!image.Fault().empty()) {
        throw CRefused(path + ": damaged " + image.BlockNoun() + ": " + image.Fault());
    }
}

std::int64_t SizeOrRefuse(const std::string& path) {
    const std::int64_t size = FileSizeOf(path);
    if (size < 0) {
        throw CRefused(path + ": its length cannot be told");
    }
    return size;
}

}  // namespace vantrel
