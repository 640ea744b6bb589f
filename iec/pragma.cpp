#include "iec/pragma.h"

#include <QtCore/QRegularExpression>

namespace plc::iec {
namespace {

/// attribute 'name' or attribute 'name' := 'value'
constexpr char kAttribute[] =
    R"(^\s*attribute\s+['"]\s*([^'"]*?)\s*['"]\s*(?::=\s*['"]?\s*([^'"]*?)\s*['"]?\s*)?$)";

/// Attributes and other pragmas with these in their names are known to move variables in one
/// programming system or another.
bool mayMoveVariables(const QString& name)
{
    for (const char* part : {"pack", "align", "offset", "layout"}) {
        if (name.contains(QLatin1String(part), Qt::CaseInsensitive))
            return true;
    }
    return false;
}

QString firstWord(const QString& text)
{
    static const QRegularExpression word(QStringLiteral("^\\s*(\\w*)"));
    return word.match(text).captured(1);
}

} // namespace

PragmaMeaning meaningOf(const Pragma& pragma)
{
    static const QRegularExpression attribute(QString::fromLatin1(kAttribute),
                                              QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch match = attribute.match(pragma.text);
    const QString name = match.hasMatch() ? match.captured(1) : firstWord(pragma.text);
    PragmaMeaning meaning;
    if (match.hasMatch() && name.compare(QLatin1String("pack_mode"), Qt::CaseInsensitive) == 0) {
        meaning.kind = PragmaMeaning::PackMode;
        meaning.value = match.captured(2);
    } else if (!match.hasMatch() && name.compare(QLatin1String("if"), Qt::CaseInsensitive) == 0) {
        meaning.kind = PragmaMeaning::Conditional;
    } else if (mayMoveVariables(name)) {
        meaning.kind = PragmaMeaning::Unknown;
    }
    return meaning;
}

std::optional<int> packAlignment(const QString& value)
{
    // 0 and 1 both leave no gaps.
    if (value == QLatin1String("0"))
        return 1;
    for (const int alignment : {1, 2, 4, 8}) {
        if (value == QString::number(alignment))
            return alignment;
    }
    return {};
}

} // namespace plc::iec
