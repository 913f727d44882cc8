// The options of one command, in the words of this program. The library that parses them is an affair of
// option_set.cpp, because it takes long to compile.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace vantrel {

/// Declares options. Every declaration names the variable that receives the value, which must outlive the parsing; its
/// content beforehand is the value of an option that is not given. `names` are like "-q,--quiet". A name without
/// dashes, like "FILE", is a word's place on the command line.
class COptionSet {
public:
    explicit COptionSet(CLI::App& command) : m_command(command) {}

    void AddFlag(const std::string& names, bool& value, const std::string& summary);
    void AddText(const std::string& names, std::string& value, const std::string& summary);
    void AddTexts(const std::string& names, std::vector<std::string>& values, const std::string& summary);
    /// A whole number from `first` to `last`.
    void AddNumber(const std::string& names, int& value, int first, int last, const std::string& summary);
    /// An option whose value may be left out, and is empty then. `problemOf` returns what is wrong with a value, or
    /// nothing.
    void AddOptionalText(const std::string& names, std::optional<std::string>& value, const std::string& summary,
                         const std::function<std::string(const std::string&)>& problemOf);
    /// One or more files, in the place FILE. On Windows, patterns among them are expanded.
    void AddFiles(std::vector<std::string>& files, const std::string& summary);

    /// An option that must be given.
    void Require(const std::string& name);
    /// Two options that cannot be given together.
    void Exclude(const std::string& name, const std::string& other);

private:
    CLI::App& m_command;
};

}  // namespace vantrel
