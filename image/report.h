// What an inspection has found out: a tree of values that a front end prints or turns into JSON.
//
//     CReport report;
//     report.Add("file", path);
//     report.Add("image", {{"bytes", 4096}, {"crc32", "c71c0011"}});
#pragma once

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace vantrel {

/// One value of a report: null, a bool, an integer, a real number, a text, a list of values, or an object, whose
/// members keep the order in which they were added.
class CReport {
public:
    using Member = std::pair<std::string, CReport>;
    using List = std::vector<CReport>;
    using Object = std::vector<Member>;
    using Value = std::variant<std::nullptr_t, bool, std::int64_t, double, std::string, List, Object>;

    // Values convert implicitly, so that a report is written like the tree that it is.
    CReport() = default;
    CReport(std::nullptr_t) {}
    CReport(bool value) : m_value(value) {}
    CReport(std::integral auto value) : m_value(static_cast<std::int64_t>(value)) {}
    CReport(double value) : m_value(value) {}
    CReport(std::string text) : m_value(std::move(text)) {}
    CReport(const char* text) : m_value(std::string(text)) {}
    CReport(List elements) : m_value(std::move(elements)) {}
    CReport(const std::vector<std::string>& texts) : m_value(List(texts.begin(), texts.end())) {}
    CReport(std::initializer_list<Member> members) : m_value(Object(members)) {}

    /// Adds a member to an object. The first member makes an object of null.
    void Add(std::string name, CReport value);

    /// The member of that name; null if there is none, or if this is no object.
    const CReport* Find(std::string_view name) const;
    /// The same for a member that must exist; throws std::out_of_range.
    const CReport& operator[](std::string_view name) const;

    const Value& Get() const { return m_value; }
    /// The value as one of the types above; throws std::bad_variant_access if it has another.
    template <typename Type>
    const Type& As() const {
        return std::get<Type>(m_value);
    }

    bool operator==(const CReport& other) const { return m_value == other.m_value; }

private:
    Value m_value = nullptr;
};

}  // namespace vantrel
