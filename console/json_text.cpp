#include <nlohmann/json.hpp>

#include "console/report_text.h"

namespace vantrel {

namespace {

using Json = nlohmann::ordered_json;

struct SJsonValue {
    Json operator()(const auto& value) const { return value; }

    Json operator()(const CReport::List& elements) const {
        Json json = Json::array();
        for (const CReport& element : elements) {
            json.push_back(std::visit(*this, element.Get()));
        }
        return json;
    }

    Json operator()(const CReport::Object& members) const {
        Json json = Json::object();
        for (const auto& [name, value] : members) {
            json[name] = std::visit(*this, value.Get());
        }
        return json;
    }
};

}  // namespace

std::string JsonText(const CReport& report) {
    constexpr int kOneLine = -1;
    return std::visit(SJsonValue(), report.Get()).dump(kOneLine, ' ', false, Json::error_handler_t::replace) + '\n';
}

}  // namespace vantrel
