#ifndef PLC_VALUES_EXPECTED_H
#define PLC_VALUES_EXPECTED_H

#include <QtCore/QString>

#include <utility>
#include <variant>

namespace plc {

/// Why something was not to be had: one line without a full stop, for those who asked for it.
struct Error {
    QString text;
};

/// A value, or why there is none. Converts to true when there is a value.
///
///     Expected<Project> project = loadProject(path);
///     if (!project)
///         return project.error();
///     use(*project);
template <typename T>
class [[nodiscard]] Expected {
public:
    Expected(const T& value) : m_content(std::in_place_index<0>, value) {}
    Expected(T&& value) : m_content(std::in_place_index<0>, std::move(value)) {}
    Expected(Error error) : m_content(std::in_place_index<1>, std::move(error)) {}

    bool hasValue() const { return m_content.index() == 0; }
    explicit operator bool() const { return hasValue(); }

    /// Only while there is a value; else std::bad_variant_access is thrown.
    const T& operator*() const& { return std::get<0>(m_content); }
    T& operator*() & { return std::get<0>(m_content); }
    T&& operator*() && { return std::get<0>(std::move(m_content)); }
    const T* operator->() const { return &**this; }
    T* operator->() { return &**this; }

    /// Only while there is no value.
    const Error& error() const { return std::get<1>(m_content); }

    T valueOr(T other) const { return hasValue() ? **this : std::move(other); }

private:
    std::variant<T, Error> m_content;
};

/// Success, or why there is none.
template <>
class [[nodiscard]] Expected<void> {
public:
    Expected() = default;
    Expected(Error error) : m_error(std::move(error)), m_hasError(true) {}

    explicit operator bool() const { return !m_hasError; }
    /// Only after a failure.
    const Error& error() const { return m_error; }

private:
    Error m_error;
    bool m_hasError = false;
};

} // namespace plc

#endif
