#include "image/inspect/report.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace vantrel {

CReport::CReport(std::initializer_list<SMember> members) : m_value(Object(members)) {}

void CReport::Add(std::string name, CReport value) {
    if (std::holds_alternative<std::nullptr_t>(m_value)) {
        m_value = Object();
    }
    std::get<Object>(m_value).push_back({std::move(name), std::move(value)});
}

const CReport* CReport::Find(std::string_view name) const {
    const Object* members = std::get_if<Object>(&m_value);
    if (!members) {
        return nullptr;
    }
    const auto found =
        std::find_if(members->begin(), members->end(), [name](const SMember& member) { return member.name == name; });
    return found == members->end() ? nullptr : &found->value;
}

const CReport& CReport::operator[](std::string_view name) const {
    const CReport* found = Find(name);
    if (!found) {
        throw std::out_of_range("no member " + std::string(name));
    }
    return *found;
}

bool CReport::operator==(const CReport& other) const {
    return m_value == other.m_value;
}

}  // namespace vantrel
