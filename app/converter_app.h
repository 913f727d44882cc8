// The application object: prepares the process and runs the main dialog.
#pragma once

#include "app/ui/message_loop.h"

namespace vantrel {

class CConverterApp {
public:
    /// Runs the main dialog until it is closed. Returns false, by the convention of application frameworks: no message
    /// loop is left to run, so the process ends.
    bool InitInstance();

private:
    CMessageLoop m_loop;
};

}  // namespace vantrel
