#include "tests/support/recording_operation.h"

#include <algorithm>
#include <iterator>

namespace vantrel::test {

namespace {

constexpr const char* kPaneNames[] = {"FILE", "BYTES", "STATUS", "PERCENT"};

const char* NameOf(EConversion conversion) {
    switch (conversion) {
        case EConversion::IsoToIml:
            return "iso2iml";
        case EConversion::ImlToIso:
            return "iml2iso";
        case EConversion::ImlToCdImage:
            return "iml2iso cd";
        case EConversion::ImlToDvdImage:
            return "iml2iso dvd";
        case EConversion::IsoToBin:
            return "iso2bin";
        case EConversion::BinToIso:
            return "bin2iso";
        case EConversion::IsoToCso:
            return "iso2cso";
        case EConversion::CsoToIso:
            return "cso2iso";
        case EConversion::IsoToDax:
            return "iso2dax";
        case EConversion::DaxToIso:
            return "dax2iso";
        case EConversion::CheckPostgap:
            return "check-postgap";
        case EConversion::AddPostgap:
            return "add-postgap";
    }
    return "";
}

}  // namespace

std::string BeginOf(EConversion conversion) {
    return std::string("begin ") + NameOf(conversion);
}

void CRecordingOperation::Begin(EConversion conversion) {
    m_calls.push_back(BeginOf(conversion));
}

void CRecordingOperation::SetPane(EPane pane, std::string_view text) {
    const auto index = static_cast<std::size_t>(pane);
    m_panes[index] = text;
    m_calls.push_back("pane " + std::string(kPaneNames[index]) + " " + std::string(text));
}

void CRecordingOperation::SetTotal(std::int64_t units) {
    m_calls.push_back("total " + std::to_string(units));
}

void CRecordingOperation::SetDone(std::int64_t units) {
    m_calls.push_back("done " + std::to_string(units));
}

void CRecordingOperation::Yield() {
    m_calls.emplace_back("yield");
    ++m_yields;
    if (m_onYield) {
        m_onYield(m_yields);
    }
}

void CRecordingOperation::Notify(std::string_view text) {
    m_calls.push_back("notify " + std::string(text));
}

void CRecordingOperation::EndWith(std::string_view text, std::string_view cause) {
    m_calls.push_back("fail " + std::string(text));
    throw CConversionFailed(std::string(text), cause);
}

bool CRecordingOperation::Complete(std::string_view doneText, const std::function<void()>& report) {
    m_calls.push_back("complete " + std::string(doneText));
    if (m_completes) {
        report();
        m_calls.emplace_back("completed");
    }
    return m_completes;
}

std::vector<std::string> CRecordingOperation::CallsOf(std::string_view beginning) const {
    std::vector<std::string> calls;
    std::copy_if(m_calls.begin(), m_calls.end(), std::back_inserter(calls),
                 [beginning](const std::string& call) { return call.starts_with(beginning); });
    return calls;
}

std::string FailureOf(const std::function<void()>& conversion) {
    try {
        conversion();
    } catch (const CConversionFailed& failure) {
        return failure.what();
    }
    return "did not fail";
}

}  // namespace vantrel::test
