// The application object: what has to be settled before the window opens, and the window's life.
#pragma once

#include "app/ui/message_loop.h"

namespace vantrel {

class CConverterApp {
public:
    /// Opens the main dialog and returns when it is closed; false, so that the process ends.
    bool InitInstance();

private:
    CMessageLoop m_loop;
};

}  // namespace vantrel
