// Declares the options of a command. Only option_set.cpp includes the parsing library, because that takes long to
// compile.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace vantrel {

/// Every option has a variable that receives its value and must outlive the parsing. An option that is not given leaves
/// the variable unchanged. Names are like "-q,--quiet"; a name without dashes, like "FILE", is positional.
class COptionSet {
public:
    explicit COptionSet(CLI::App& command) : m_command(command) {}

    void AddFlag(const std::string& names, bool& value, const std::string& summary);
    void AddText(const std::string& names, std::string& value, const std::string& summary);
    /// A text that is no path; the help shows `noun` for it.
    void AddWord(const std::string& names, const std::string& noun, std::string& value, const std::string& summary);
    void AddTexts(const std::string& names, std::vector<std::string>& values, const std::string& summary);
    /// A whole number from `first` to `last`.
    void AddNumber(const std::string& names, int& value, int first, int last, const std::string& summary);
    /// An option whose value may be omitted, and is empty then. `problemOf` returns why a value is wrong, or an empty
    /// text.
    void AddOptionalText(const std::string& names, std::optional<std::string>& value, const std::string& summary,
                         const std::function<std::string(const std::string&)>& problemOf);
    /// One or more files, as the positional FILE. Patterns are expanded on Windows.
    void AddFiles(std::vector<std::string>& files, const std::string& summary);

    /// Makes an option mandatory.
    void Require(const std::string& name);
    /// Allows only one of two options.
    void Exclude(const std::string& name, const std::string& other);

private:
    CLI::App& m_command;
};

}  // namespace vantrel
