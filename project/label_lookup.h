#ifndef PLC_PROJECT_LABEL_LOOKUP_H
#define PLC_PROJECT_LABEL_LOOKUP_H

#include <QtCore/QHash>
#include <QtCore/QString>

#include "project/label_syntax.h"
#include "project/symbols.h"
#include "values/expected.h"
#include "values/export.h"

namespace plc::project {

/// What a label leads to.
struct LabelTarget {
    /// The variable or member named last; its `type` is set. Owned by the project.
    const Variable* variable = nullptr;
    int area = 0;
    qint64 address = 0;  ///< Bytes within the area; bits for BIT.
    qint64 size = 0;     ///< Bytes of one element; a BIT has none of its own.
    qint64 elements = 1; ///< Elements of the array named last, from this one to its end.
};

/// Whether an error says which name may have been meant. Each that there is is compared, which
/// takes 0.1 us or less.
enum class Hints { Given, None };

/// Follows labels through the declarations of a project, which must outlive it unchanged. A scope
/// is searched from its first variable on until so many labels of it were asked for that an index
/// pays: one thread at a time.
class PLC_HOST_EXPORT LabelFinder {
public:
    explicit LabelFinder(const Symbols& symbols);

    /// An error if the label does not lead to a value; subscripts out of bounds are refused.
    Expected<LabelTarget> find(const QString& label, Hints hints = Hints::Given) const;

    /// As above for a label already taken apart; of a range the first number counts.
    Expected<LabelTarget> find(const QVector<LabelPart>& parts, Hints hints = Hints::Given) const;

private:
    /// Of several variables of one name the first counts.
    class Scope {
    public:
        explicit Scope(const QVector<Variable>* variables = nullptr) : m_variables(variables) {}
        const Variable* find(const QString& name) const;
        QStringList names() const;

    private:
        void makeIndex() const;

        const QVector<Variable>* m_variables;
        mutable int m_searches = 0;
        mutable QHash<QString, const Variable*> m_index;
    };

    Expected<const Variable*> findVariable(const QVector<LabelPart>& parts, Hints hints) const;

    QHash<QString, Scope> m_scopes;
};

} // namespace plc::project

#endif
