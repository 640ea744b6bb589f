#ifndef PLC_PROJECT_JSON_NODE_H
#define PLC_PROJECT_JSON_NODE_H

#include <QtCore/QJsonValue>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVector>

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

/// A value of a JSON document that knows its path. Every reader reports what does not fit and then
/// returns a value that does.
class JsonNode {
public:
    JsonNode(const QJsonValue& value, const QString& path, DocumentErrors* errors)
        : m_value(value), m_path(path), m_errors(errors)
    {
    }

    const QJsonValue& value() const { return m_value; }
    const QString& path() const { return m_path; }
    DocumentErrors* errors() const { return m_errors; }

    void fail(const QString& text) const { m_errors->report(m_path, text); }
    /// Reports that the value is not what is `expected`.
    void failExpecting(const QString& expected) const;

    /// Reports keys that are in neither list and keys of `required` that are missing.
    void checkKeys(const QStringList& required, const QStringList& optional) const;
    bool has(const char* key) const;
    JsonNode member(const char* key) const;
    /// Elements of an array; none if it is not an array.
    QVector<JsonNode> elements() const;

    QString text() const;
    bool boolean() const;
    qint64 integer(qint64 minimum, qint64 maximum) const;
    double number() const;

    /// The value as an error text shows it.
    QString shown() const;

private:
    QJsonValue m_value;
    QString m_path;
    DocumentErrors* m_errors;
};

} // namespace plc::project

#endif
