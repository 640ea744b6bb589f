#ifndef PLC_IEC_CONSTANTS_H
#define PLC_IEC_CONSTANTS_H

#include <QtCore/QHash>
#include <QtCore/QStringList>

#include <optional>

#include "iec/declarations.h"
#include "iec/diagnostics.h"

namespace plc::iec {

/// The whole numbers that constant expressions stand for. Constants may stand in any order; letter
/// case does not count.
class Constants {
public:
    /// Takes the constants of the global variables and of programs, and the values of enumerations.
    /// Both arguments must outlive this.
    Constants(const Declarations& declarations, Diagnostics* diagnostics);

    /// The value of an expression in this scope. Returns nothing after reporting what is wrong.
    std::optional<qint64> value(const Expression& expression, const QString& scope);

private:
    struct Constant {
        QString name;
        Position position;
        QString scope;         ///< In which `value` is to be read.
        Expression expression; ///< Empty: `offset` alone counts.
        qint64 offset = 0;     ///< Added to the expression.
        bool isAmbiguous = false;
    };
    class Evaluation;

    void addScope(const Scope& scope);
    void addEnumeration(const TypeDefinition& type);
    void add(const QString& scope, const Constant& constant);
    std::optional<qint64> valueOf(const Token& token, const QString& qualifier,
                                  const QString& scope);
    std::optional<qint64> evaluate(const QString& key, const Constant& constant,
                                   const Token& token);

    QHash<QString, Constant> m_constants;
    QHash<QString, std::optional<qint64>> m_values; ///< Those that were asked for.
    Diagnostics* m_diagnostics;
    QStringList m_underWay; ///< Keys of the constants being read, the outermost first.
};

} // namespace plc::iec

#endif
