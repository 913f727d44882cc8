#include "console/option_set.h"

#include <CLI/App.hpp>

#include "console/file_patterns.h"

namespace vantrel {

void COptionSet::AddFlag(const std::string& names, bool& value, const std::string& summary) {
    m_command.add_flag(names, value, summary);
}

void COptionSet::AddText(const std::string& names, std::string& value, const std::string& summary) {
    m_command.add_option(names, value, summary);
}

void COptionSet::AddWord(const std::string& names, const std::string& noun, std::string& value,
                         const std::string& summary) {
    m_command.add_option(names, value, summary)->type_name(noun);
}

void COptionSet::AddTexts(const std::string& names, std::vector<std::string>& values, const std::string& summary) {
    m_command.add_option(names, values, summary);
}

void COptionSet::AddNumber(const std::string& names, int& value, int first, int last, const std::string& summary) {
    m_command.add_option(names, value, summary)->check(CLI::Range(first, last));
}

void COptionSet::AddOptionalText(const std::string& names, std::optional<std::string>& value,
                                 const std::string& summary,
                                 const std::function<std::string(const std::string&)>& problemOf) {
    const auto store = [&value](const std::string& text) { value = text; };
    m_command.add_option_function<std::string>(names, store, summary)
        ->expected(0, 1)
        ->check(CLI::Validator(problemOf, ""));
}

void COptionSet::AddFiles(std::vector<std::string>& files, const std::string& summary) {
    m_command.add_option("FILE", files, summary)->required();
    m_command.parse_complete_callback([&files] { files = CommandFiles(files); });
}

void COptionSet::Require(const std::string& name) {
    m_command.get_option(name)->required();
}

void COptionSet::Exclude(const std::string& name, const std::string& other) {
    m_command.get_option(name)->excludes(m_command.get_option(other));
}

}  // namespace vantrel
