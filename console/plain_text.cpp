#include <algorithm>

#include "console/messages.h"
#include "console/report_text.h"
#include "operation/text.h"

namespace vantrel {

namespace {

constexpr std::size_t kIndent = 2;

/// A member's name for people: "first_address" becomes "first address".
std::string LabelOf(std::string name) {
    std::replace(name.begin(), name.end(), '_', ' ');
    return name;
}

std::string LinesOf(const CReport::Object& members, std::size_t indent, bool escape);

/// The text behind a label: a blank and the value, or further lines with an indent of their own.
struct SValueText {
    std::size_t indent;
    bool escape;

    std::string operator()(std::nullptr_t) const { return " null\n"; }
    std::string operator()(bool value) const { return value ? " yes\n" : " no\n"; }
    std::string operator()(std::int64_t value) const { return ' ' + std::to_string(value) + '\n'; }
    std::string operator()(double value) const { return Format(" %.1f\n", value); }
    /// Damaged names may contain NUL; the text ends there.
    std::string operator()(const std::string& text) const {
        const std::string shown = text.substr(0, text.find('\0'));
        return ' ' + (escape ? Escaped(shown) : shown) + '\n';
    }
    std::string operator()(const CReport::Object& members) const { return '\n' + LinesOf(members, indent, escape); }

    std::string operator()(const CReport::List& elements) const {
        std::string text = elements.empty() ? " none\n" : "\n";
        for (const CReport& element : elements) {
            // The element's own blank completes the indent.
            text += std::string(indent - 1, ' ') + std::visit(SValueText{indent + kIndent, escape}, element.Get());
        }
        return text;
    }
};

std::string LinesOf(const CReport::Object& members, std::size_t indent, bool escape) {
    std::string text;
    for (const auto& [name, value] : members) {
        text += std::string(indent, ' ') + LabelOf(name) + ':' +
                std::visit(SValueText{indent + kIndent, escape}, value.Get());
    }
    return text;
}

}  // namespace

std::string PlainText(const CReport& report, bool escape) {
    return LinesOf(report.As<CReport::Object>(), 0, escape);
}

}  // namespace vantrel
