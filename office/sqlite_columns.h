#pragma once

#include "office/practice.h"
#include "office/time_text.h"

#include <cstdint>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

#include <boost/describe/enum_from_string.hpp>
#include <boost/describe/enum_to_string.hpp>
#include <boost/describe/members.hpp>
#include <boost/mp11/algorithm.hpp>
#include <sqlite3.h>

// A described record as the columns of a table: one column for each field, in the order of its description.
namespace zelkovanta::office::columns {

template <class T>
using Fields = boost::describe::describe_members<T, boost::describe::mod_public>;

template <class T>
inline constexpr bool isOptional = false;
template <class T>
inline constexpr bool isOptional<std::optional<T>> = true;

/// Lists are kept as JSON.
[[nodiscard]] std::string packed(const std::vector<std::string>& texts);
[[nodiscard]] std::string packed(const std::vector<Department>& departments);
[[nodiscard]] bool unpack(const std::string& text, std::vector<std::string>& texts);
[[nodiscard]] bool unpack(const std::string& text, std::vector<Department>& departments);

template <class T>
constexpr const char* typeOf() {
    if constexpr (isOptional<T>) {
        return typeOf<typename T::value_type>();
    } else if constexpr (std::is_same_v<T, bool> || std::is_same_v<T, std::int64_t> || std::is_same_v<T, Timestamp>) {
        return "INTEGER";
    } else {
        return "TEXT";
    }
}

template <class T>
[[nodiscard]] std::string definitions() {
    std::string text;
    boost::mp11::mp_for_each<Fields<T>>([&text](auto field) {
        using Value = std::remove_cvref_t<decltype(std::declval<T>().*field.pointer)>;
        text += text.empty() ? "" : ", ";
        text += '"' + std::string(field.name) + "\" " + typeOf<Value>();
        text += isOptional<Value> ? "" : " NOT NULL";
        text += std::string_view(field.name) == "id" ? " PRIMARY KEY" : "";
    });
    return text;
}

template <class T>
[[nodiscard]] std::string names() {
    std::string text;
    boost::mp11::mp_for_each<Fields<T>>(
        [&text](auto field) { text += (text.empty() ? "\"" : ", \"") + std::string(field.name) + '"'; });
    return text;
}

template <class T>
[[nodiscard]] std::string placeholders() {
    std::string text;
    boost::mp11::mp_for_each<Fields<T>>([&text](auto) { text += text.empty() ? "?" : ", ?"; });
    return text;
}

template <class T>
void bindValue(sqlite3_stmt* statement, int position, const T& value) {
    if constexpr (isOptional<T>) {
        if (value) {
            bindValue(statement, position, *value);
        } else {
            sqlite3_bind_null(statement, position);
        }
    } else if constexpr (std::is_same_v<T, Timestamp>) {
        sqlite3_bind_int64(statement, position, value.time_since_epoch().count());
    } else if constexpr (std::is_integral_v<T>) {
        sqlite3_bind_int64(statement, position, static_cast<sqlite3_int64>(value));
    } else if constexpr (std::is_enum_v<T>) {
        sqlite3_bind_text(statement, position, boost::describe::enum_to_string(value, ""), -1, SQLITE_STATIC);
    } else if constexpr (std::is_same_v<T, std::string>) {
        sqlite3_bind_text64(statement, position, value.data(), value.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
    } else {
        bindValue(statement, position, packed(value));
    }
}

template <class T>
void bindAll(sqlite3_stmt* statement, const T& record) {
    int position = 0;
    boost::mp11::mp_for_each<Fields<T>>([&](auto field) { bindValue(statement, ++position, record.*field.pointer); });
}

[[nodiscard]] std::string textAt(sqlite3_stmt* row, int column);

template <class T>
[[nodiscard]] bool readValue(sqlite3_stmt* row, int column, T& value) {
    if constexpr (isOptional<T>) {
        if (sqlite3_column_type(row, column) == SQLITE_NULL) {
            value.reset();
            return true;
        }
        return readValue(row, column, value.emplace());
    } else if constexpr (std::is_same_v<T, Timestamp>) {
        value = Timestamp(std::chrono::milliseconds(sqlite3_column_int64(row, column)));
        return true;
    } else if constexpr (std::is_same_v<T, bool>) {
        value = sqlite3_column_int64(row, column) != 0;
        return true;
    } else if constexpr (std::is_integral_v<T>) {
        value = sqlite3_column_int64(row, column);
        return true;
    } else if constexpr (std::is_enum_v<T>) {
        return boost::describe::enum_from_string(textAt(row, column).c_str(), value);
    } else if constexpr (std::is_same_v<T, std::string>) {
        value = textAt(row, column);
        return true;
    } else {
        return unpack(textAt(row, column), value);
    }
}

template <class T>
[[nodiscard]] bool readAll(sqlite3_stmt* row, T& record) {
    int column = 0;
    bool good = true;
    boost::mp11::mp_for_each<Fields<T>>(
        [&](auto field) { good = readValue(row, column++, record.*field.pointer) && good; });
    return good;
}

}  // namespace zelkovanta::office::columns
