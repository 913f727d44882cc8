#include "image/image_source.h"

#include "files/refused.h"
#include "image/forms.h"
#include "image/image_chunks.h"

namespace vantrel {

std::unique_ptr<CImageChunks> CImageSource::Chunks() {
    return ChunksOf(*this);
}

std::unique_ptr<CImageSource> OpenImage(const std::string& path) {
    return OpenImageAs(FormOfFile(path), path);
}

void RefuseDamaged(const CImageSource& image, const std::string& path) {
    if (!image.Fault().empty()) {
        throw CRefused(path + ": damaged " + image.BlockNoun() + ": " + image.Fault());
    }
}

}  // namespace vantrel
