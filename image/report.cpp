#include "image/report.h"

#include <algorithm>
#include <stdexcept>

namespace vantrel {

void CReport::Add(std::string name, CReport value) {
    if (std::holds_alternative<std::nullptr_t>(m_value)) {
        m_value = Object();
    }
    std::get<Object>(m_value).emplace_back(std::move(name), std::move(value));
}

const CReport* CReport::Find(std::string_view name) const {
    const Object* members = std::get_if<Object>(&m_value);
    if (!members) {
        return nullptr;
    }
    const auto found =
        std::find_if(members->begin(), members->end(), [name](const Member& member) { return member.first == name; });
    return found == members->end() ? nullptr : &found->second;
}

const CReport& CReport::operator[](std::string_view name) const {
    const CReport* found = Find(name);
    if (!found) {
        throw std::out_of_range("no member " + std::string(name));
    }
    return *found;
}

}  // namespace vantrel
