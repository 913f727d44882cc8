#include "image/image_source.h"

#include "files/input_file.h"
#include "image/forms.h"

namespace vantrel {

std::unique_ptr<CImageSource> OpenImage(const std::string& path, std::string& problem) {
    EForm form = EForm::Unknown;
    {
        CInputFile file;
        if (!file.Open(path)) {
            problem = LastFileError();
            return nullptr;
        }
        form = FormOf(file);
        if (file.HasFailed()) {
            problem = LastFileError();
            return nullptr;
        }
    }
    switch (form) {
        case EForm::Iso:
            return OpenPlainImage(path, problem);
        case EForm::Cso:
            return OpenCsoImage(path, problem);
        case EForm::Dax:
            return OpenDaxImage(path, problem);
        case EForm::Bin:
            return OpenBinImage(path, problem);
        case EForm::Iml:
        case EForm::Cue:
        case EForm::Unknown:
            break;
    }
    problem = form == EForm::Unknown ? "not a disc image that is known here"
                                     : std::string("holds no image by itself, being of the form ") + NameOf(form);
    return nullptr;
}

}  // namespace vantrel
