#include "console/open_image.h"

#include "console/refused.h"

namespace vantrel {

std::unique_ptr<CImageSource> OpenImageOrRefuse(const std::string& path) {
    std::string problem;
    std::unique_ptr<CImageSource> image = OpenImage(path, problem);
    if (!image) {
        throw CRefused(path + ": " + problem);
    }
    return image;
}

}  // namespace vantrel
