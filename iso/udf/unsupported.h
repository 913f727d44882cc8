// The exception for UDF volumes that need more than this reader knows.
#pragma once

#include "files/refused.h"

namespace vantrel {

/// Thrown for a volume that may be sound. what() is the reason.
class CUnsupportedUdf : public CRefused {
public:
    using CRefused::CRefused;
};

}  // namespace vantrel
