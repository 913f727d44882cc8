// What every command of the console program is: its texts, its options and its action.
#pragma once

#include <memory>
#include <string>
#include <vector>

namespace vantrel {

class COptionSet;

/// Exit statuses of the program.
enum class EExit { Done = 0, Failed = 1, Usage = 2 };

/// Texts that --help shows.
struct SCommandTexts {
    std::string name;
    std::string summary;
    std::string notes;  ///< Remarks and examples, below the options.
};

class CCommand {
public:
    explicit CCommand(SCommandTexts texts) : m_texts(std::move(texts)) {}
    CCommand(const CCommand&) = delete;
    CCommand& operator=(const CCommand&) = delete;
    virtual ~CCommand() = default;

    const SCommandTexts& Texts() const { return m_texts; }
    const std::string& Name() const { return m_texts.name; }

    /// Declares the options, whose values are stored in members of the command.
    virtual void Declare(COptionSet& options) = 0;
    /// Why the options cannot be used together; empty if they can.
    virtual std::string UsageProblem() const { return {}; }
    virtual EExit Run() = 0;

private:
    SCommandTexts m_texts;
};

using Commands = std::vector<std::unique_ptr<CCommand>>;

}  // namespace vantrel
