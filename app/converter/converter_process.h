// The raw-sector converter as a process: extracted from the program's resources, run in the image's folder, deleted.
#pragma once

#include <windows.h>

#include "app/converter/converter_runner.h"

namespace vantrel {

class CConverterProcess : public CConverterRunner {
public:
    CConverterProcess() = default;
    CConverterProcess(const CConverterProcess&) = delete;
    CConverterProcess& operator=(const CConverterProcess&) = delete;
    ~CConverterProcess() override;

    void PlaceConverter(const std::string& folder) override;
    void StartBatchFile(const std::string& folder, const std::string& name) override;
    void StartConverter(const std::string& folder, const std::vector<std::string>& arguments) override;
    bool HasFinished() override;
    void RemoveConverter(const std::string& folder) override;

private:
    HANDLE m_process = nullptr;
};

}  // namespace vantrel
