// Memory for zlib streams that are created and ended for every block.
#pragma once

#include <zlib.h>

namespace vantrel {

/// Gives zlib the memory of an ended stream again for the next one. With the allocators of the C runtimes, creating a
/// stream may take as long as compressing a block: its tables are so large that they come from the system each time.
/// Streams that use this object must end before it is destroyed.
class CStreamMemory {
public:
    CStreamMemory() = default;
    CStreamMemory(const CStreamMemory&) = delete;
    CStreamMemory& operator=(const CStreamMemory&) = delete;
    ~CStreamMemory();

    /// A stream that has not been initialised and will take its memory from here.
    z_stream NewStream();

private:
    struct SPiece;

    static voidpf Take(voidpf memory, uInt items, uInt size);
    static void GiveBack(voidpf memory, voidpf content);

    SPiece* m_pieces = nullptr;  // a list of all pieces, used or free
};

}  // namespace vantrel
