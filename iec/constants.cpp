#include "iec/constants.h"

#include <limits>

#include "iec/token_reader.h"
#include "values/nearest_name.h"

namespace plc::iec {
namespace {

constexpr int kDeepestExpression = 20; // parentheses
constexpr int kDeepestConstant = 20;   // constants made of constants

QString keyOf(const QString& scope, const QString& name)
{
    return scope.toLower() + QLatin1Char('.') + name.toLower();
}

/// The value of 10, 1_000, 16#FF or INT#5.
std::optional<qint64> numberOf(const Token& token)
{
    QString text = token.text;
    text.remove(QLatin1Char('_'));
    int base = 10;
    const QStringList parts = text.split(QLatin1Char('#'));
    if (parts.size() > 1) {
        bool isBase = false;
        base = parts[parts.size() - 2].toInt(&isBase, 10);
        if (!isBase)
            base = 10;
        if (base != 2 && base != 8 && base != 10 && base != 16)
            return {};
    }
    bool ok = false;
    const qint64 number = parts.last().toLongLong(&ok, base);
    return ok ? std::optional<qint64>(number) : std::nullopt;
}

} // namespace

/// Reads one expression from the left to the right: + and - of products, products of factors.
class Constants::Evaluation {
public:
    Evaluation(Constants* constants, const Expression& expression, const QString& scope)
        : m_constants(constants), m_expression(expression), m_scope(scope)
    {
    }

    std::optional<qint64> run()
    {
        const qint64 value = sum();
        if (m_isGood && m_at < int(m_expression.size()))
            fail(QStringLiteral("the end of the expression or one of + - * / MOD"));
        return m_isGood ? std::optional<qint64>(value) : std::nullopt;
    }

private:
    bool at(const char* sign) const
    {
        return m_at < int(m_expression.size()) && m_expression[m_at].is(sign);
    }
    bool skip(const char* sign)
    {
        const bool isThere = m_isGood && at(sign);
        m_at += isThere ? 1 : 0;
        return isThere;
    }
    qint64 fail(const QString& expected)
    {
        const bool isBehind = m_at >= int(m_expression.size());
        const Token& token = isBehind ? m_expression.last() : m_expression[m_at];
        report(token.position,
               QStringLiteral("found %1, expected %2")
                   .arg(isBehind ? QStringLiteral("nothing behind ") + shownToken(token)
                                 : shownToken(token),
                        expected));
        return 0;
    }
    void report(const Position& position, const QString& text)
    {
        if (m_isGood)
            m_constants->m_diagnostics->error(position, text);
        m_isGood = false;
    }

    qint64 sum()
    {
        qint64 value = product();
        while (m_isGood && (at("+") || at("-"))) {
            const Token sign = m_expression[m_at++];
            const qint64 other = product();
            const bool overflows = sign.is("+") ? __builtin_add_overflow(value, other, &value)
                                                : __builtin_sub_overflow(value, other, &value);
            if (overflows)
                reportOverflow(sign);
        }
        return value;
    }
    qint64 product()
    {
        qint64 value = factor();
        while (m_isGood && (at("*") || at("/") || at("MOD"))) {
            const Token sign = m_expression[m_at++];
            value = multiplied(value, sign, factor());
        }
        return value;
    }
    qint64 multiplied(qint64 value, const Token& sign, qint64 other)
    {
        qint64 result = 0;
        if (sign.is("*")) {
            if (__builtin_mul_overflow(value, other, &result))
                reportOverflow(sign);
            return result;
        }
        if (other == 0) {
            report(sign.position, QStringLiteral("found a division by zero"));
            return 0;
        }
        if (other == -1) {
            if (__builtin_sub_overflow(qint64(0), value, &result))
                reportOverflow(sign);
            return sign.is("/") ? result : 0;
        }
        return sign.is("/") ? value / other : value % other;
    }
    void reportOverflow(const Token& sign)
    {
        report(sign.position, QStringLiteral("found a value of more than 64 bits"));
    }

    qint64 factor()
    {
        bool isNegative = false;
        while (at("-") || at("+"))
            isNegative = m_expression[m_at++].is("-") != isNegative;
        const int start = m_at;
        const qint64 value = primary();
        if (isNegative && value == std::numeric_limits<qint64>::min())
            reportOverflow(m_expression[qMin(start, int(m_expression.size()) - 1)]);
        return m_isGood && isNegative ? -value : value;
    }
    qint64 primary()
    {
        if (skip("("))
            return inParentheses();
        const bool isThere = m_at < int(m_expression.size());
        if (isThere && m_expression[m_at].kind == Token::Number) {
            const std::optional<qint64> number = numberOf(m_expression[m_at]);
            if (!number)
                return fail(QStringLiteral("a whole number of at most 64 bits"));
            ++m_at;
            return *number;
        }
        if (!isThere || m_expression[m_at].kind != Token::Name)
            return fail(QStringLiteral("a whole number or the name of a constant"));
        return named();
    }
    qint64 inParentheses()
    {
        if (++m_depth > kDeepestExpression) {
            return fail(
                QStringLiteral("at most %1 parentheses in each other").arg(kDeepestExpression));
        }
        const qint64 value = sum();
        --m_depth;
        if (m_isGood && !skip(")"))
            fail(QStringLiteral("\")\""));
        return value;
    }
    /// A constant, also with the list, program or enumeration before it: Limits.most.
    qint64 named()
    {
        QString qualifier;
        while (m_at + 2 < int(m_expression.size()) && m_expression[m_at + 1].is(".")) {
            qualifier = m_expression[m_at].text;
            m_at += 2;
        }
        const Token& name = m_expression[m_at++];
        const std::optional<qint64> value = m_constants->valueOf(name, qualifier, m_scope);
        m_isGood = m_isGood && value.has_value();
        return value.value_or(0);
    }

    Constants* m_constants;
    const Expression& m_expression;
    const QString m_scope;
    int m_at = 0;
    int m_depth = 0;
    bool m_isGood = true;
};

Constants::Constants(const Declarations& declarations, Diagnostics* diagnostics)
    : m_diagnostics(diagnostics)
{
    addScope(declarations.globals);
    for (const Scope& program : declarations.programs)
        addScope(program);
    for (const TypeDefinition& type : declarations.types)
        addEnumeration(type);
}

void Constants::addScope(const Scope& scope)
{
    for (const Declaration& variable : scope.variables) {
        if (variable.isConstant && !variable.initial.isEmpty())
            add(scope.name, {variable.name, variable.position, scope.name, variable.initial});
    }
}

/// The values of an enumeration are known by their names alone and by those behind the type's.
void Constants::addEnumeration(const TypeDefinition& type)
{
    Constant constant;
    constant.offset = -1;
    for (const Enumerator& enumerator : type.type->enumerators) {
        ++constant.offset;
        if (!enumerator.value.isEmpty()) {
            constant.expression = enumerator.value;
            constant.offset = 0;
        }
        constant.name = enumerator.name;
        constant.position = enumerator.position;
        constant.scope = type.name;
        add(type.name, constant);
        add(QString(), constant);
    }
}

void Constants::add(const QString& scope, const Constant& constant)
{
    const QString key = keyOf(scope, constant.name);
    const auto known = m_constants.find(key);
    if (known == m_constants.end())
        m_constants.insert(key, constant);
    else
        known->isAmbiguous = true;
}

std::optional<qint64> Constants::value(const Expression& expression, const QString& scope)
{
    return Evaluation(this, expression, scope).run();
}

/// The one of the own scope comes before the global one.
std::optional<qint64> Constants::valueOf(const Token& token, const QString& qualifier,
                                         const QString& scope)
{
    QString key;
    for (const QString& where : {qualifier.isEmpty() ? scope : qualifier, QString()}) {
        key = keyOf(where, token.text);
        if (m_constants.contains(key))
            break;
    }
    const auto found = m_constants.constFind(key);
    if (found == m_constants.constEnd()) {
        QStringList names;
        for (const Constant& constant : m_constants)
            names.append(constant.name);
        m_diagnostics->error(
            token.position,
            QStringLiteral("found %1, expected a whole number or the name of a "
                           "constant that is declared%2")
                .arg(shownToken(token), values::nearestNameHint(token.text, names)));
        return {};
    }
    // Constants are made of others again and again: each is worked out, and complained about, once.
    if (!m_values.contains(key)) {
        const std::optional<qint64> value = evaluate(key, *found, token);
        m_values.insert(key, value);
    }
    return m_values.value(key);
}

std::optional<qint64> Constants::evaluate(const QString& key, const Constant& constant,
                                          const Token& token)
{
    QString error;
    if (constant.isAmbiguous)
        error = QStringLiteral(
            "%1 is declared more than once; put its enumeration and a dot "
            "before it");
    else if (m_underWay.contains(key))
        error = QStringLiteral("constant %1 is made of itself");
    else if (m_underWay.size() >= kDeepestConstant)
        error = QStringLiteral(
                    "constant %1 lies too deep: constants are made of others in at "
                    "most %2 steps")
                    .arg(QStringLiteral("%1"), QString::number(kDeepestConstant));
    if (!error.isEmpty()) {
        m_diagnostics->error(token.position, error.arg(shownToken(token)));
        return {};
    }
    if (constant.expression.isEmpty())
        return constant.offset;
    m_underWay.append(key);
    const std::optional<qint64> base = value(constant.expression, constant.scope);
    m_underWay.removeLast();
    qint64 sum = 0;
    if (!base || __builtin_add_overflow(*base, constant.offset, &sum))
        return {};
    return sum;
}

} // namespace plc::iec
