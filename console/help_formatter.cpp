#include "console/help_formatter.h"

namespace vantrel {

namespace {

constexpr std::size_t kColumnWidth = 26;

}  // namespace

CHelpFormatter::CHelpFormatter() {
    column_width(kColumnWidth);
}

std::string CHelpFormatter::make_usage(const CLI::App* app, std::string /*name*/) const {
    const bool whole = app->get_parent() == nullptr;
    return whole ? "Usage: vantrel COMMAND [options] FILE...\n       vantrel COMMAND --help\n"
                 : "Usage: vantrel " + app->get_name() + " [options] FILE...\n";
}

std::string CHelpFormatter::make_option_opts(const CLI::Option* option) const {
    if (option->get_positional() || option->get_type_name().empty()) {
        return option->get_expected_max() > 1 ? "..." : "";
    }
    const bool isNumber = option->get_type_name().starts_with("INT") || option->get_type_name().starts_with("UINT");
    return isNumber ? " N" : " PATH";
}

}  // namespace vantrel
