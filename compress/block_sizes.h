// The two sizes that everything about the blocks of a container is measured by.
#pragma once

#include <cstdint>

namespace vantrel {

struct SBlockSizes {
    std::uint32_t block = 0;       ///< Bytes of an expanded block; the last one of an image may be shorter.
    std::uint32_t storedRoom = 0;  ///< Room for a stored block: more than it ever takes.
};

}  // namespace vantrel
