// How --help looks: commands rather than subcommands, "-l,--level N" rather than the types of a library. The manual
// page and the completions are made from these texts, so their form is settled here.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace vantrel {

class CHelpFormatter : public CLI::Formatter {
public:
    CHelpFormatter();

    std::string make_usage(const CLI::App* app, std::string name) const override;
    std::string make_option_opts(const CLI::Option* option) const override;
};

}  // namespace vantrel
