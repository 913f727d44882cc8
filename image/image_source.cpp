#include "image/image_source.h"

#include "files/refused.h"
#include "image/forms.h"

namespace vantrel {

std::unique_ptr<CImageSource> OpenImage(const std::string& path) {
    const EForm form = FormOfFile(path);
    switch (form) {
        case EForm::Iso:
            return OpenPlainImage(path);
        case EForm::Cso:
            return OpenCsoImage(path);
        case EForm::Dax:
            return OpenDaxImage(path);
        case EForm::Zso:
            throw CRefused(path + ": the form ZSO is not supported");
        case EForm::Bin:
        case EForm::Cue:
            return OpenRawImage(path, form);
        case EForm::Iml:
            throw CRefused(path + ": the form " + NameOf(form) + " does not contain an image");
        case EForm::Unknown:
            break;
    }
    throw CRefused(path + ": not a known kind of disc image");
}

void RefuseDamaged(const CImageSource& image, const std::string& path) {
    if (!image.Fault().empty()) {
        throw CRefused(path + ": damaged " + image.BlockNoun() + ": " + image.Fault());
    }
}

}  // namespace vantrel
