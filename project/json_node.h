#ifndef PLC_PROJECT_JSON_NODE_H
#define PLC_PROJECT_JSON_NODE_H

#include <QtCore/QString>

#include <optional>
#include <string_view>
#include <vector>

#include "project/json_value.h"

namespace plc::project {

/// Keeps the first complaint about a document, so that readers can go on with defaults instead of
/// checking after every step.
class DocumentErrors {
public:
    explicit DocumentErrors(const QString& documentName) : m_documentName(documentName) {}

    /// `path` is a JSON pointer, or empty for the document as a whole.
    void report(const QString& path, const QString& text);
    bool isEmpty() const { return m_first.isEmpty(); }
    QString first() const { return m_first; }

private:
    QString m_documentName;
    QString m_first;
};

/// Names of keys as errors list them.
using JsonKeys = std::vector<std::string_view>;

/// A value of a JSON document with the place where errors go. Every reader reports what does not
/// fit and then returns a value that does.
class JsonNode {
public:
    JsonNode(const JsonValue& value, DocumentErrors* errors) : m_place(value), m_errors(errors) {}

    /// Missing where the key is.
    JsonValue value() const { return m_missingKey.empty() ? m_place : JsonValue(); }
    QString path() const;
    DocumentErrors* errors() const { return m_errors; }

    void fail(const QString& text) const;
    /// Reports that the value is not what is `expected`.
    void failExpecting(const QString& expected) const;

    /// Reports keys that are in neither list and keys of `required` that are missing. Returns how
    /// many keys there are that are not required.
    int checkKeys(const JsonKeys& required, const JsonKeys& optional) const;
    bool has(std::string_view key) const { return !value().member(key).isMissing(); }
    /// `key` is not empty and must outlive the node.
    JsonNode member(std::string_view key) const;

    /// Elements of a list, one after the other.
    class Elements {
    public:
        class Iterator {
        public:
            Iterator(const JsonValue& value, DocumentErrors* errors)
                : m_value(value), m_errors(errors)
            {
            }
            JsonNode operator*() const { return {m_value, m_errors}; }
            Iterator& operator++()
            {
                m_value = m_value.next();
                return *this;
            }
            bool operator!=(const Iterator& other) const { return m_value != other.m_value; }

        private:
            JsonValue m_value;
            DocumentErrors* m_errors;
        };

        Elements(const JsonValue& list, DocumentErrors* errors) : m_list(list), m_errors(errors) {}
        Iterator begin() const { return {m_list.first(), m_errors}; }
        Iterator end() const { return {m_list.end(), m_errors}; }
        bool isEmpty() const { return !(begin() != end()); }
        int size() const;

    private:
        JsonValue m_list;
        DocumentErrors* m_errors;
    };
    /// None if it is no list.
    Elements elements() const;

    QString text() const;
    bool boolean() const;
    qint64 integer(qint64 minimum, qint64 maximum) const;
    double number() const;

    /// The value as an error text shows it.
    QString shown() const;

private:
    JsonValue m_place;             ///< Of what lacks the key, where it is missing.
    std::string_view m_missingKey; ///< Empty: the value is there.
    DocumentErrors* m_errors;
};

/// The members of an object that may be missing. Most are, and they are only looked for until all
/// that are there were found.
class OptionalMembers {
public:
    /// Of an object that has `count` of them.
    OptionalMembers(const JsonNode& object, int count) : m_object(object), m_left(count) {}

    /// Each is taken once.
    std::optional<JsonNode> take(std::string_view key);

private:
    const JsonNode m_object;
    int m_left;
};

} // namespace plc::project

#endif
