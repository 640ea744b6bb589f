#include "panel/recipes/recipe.h"

#include <QtCore/QRegularExpression>

#include <algorithm>

#include "values/value_bits.h"
#include "values/visible_text.h"

namespace plc::panel {

using values::Value;

namespace {

constexpr int kLongestName = 64; ///< Characters.

bool isSameValue(const Value& a, const Value& b)
{
    if (a.index() != b.index())
        return false;
    const auto* text = std::get_if<QString>(&a);
    return text ? *text == std::get<QString>(b) : values::valueBits(a) == values::valueBits(b);
}

} // namespace

bool operator==(const RecipeType& a, const RecipeType& b)
{
    return a.type == b.type && a.stringLength == b.stringLength && a.elements == b.elements;
}

QString recipeTypeText(const RecipeType& type)
{
    QString text = QString::fromLatin1(type.type->name);
    if (values::isText(*type.type))
        text += QStringLiteral("(%1)").arg(type.stringLength);
    if (type.elements > 1)
        text += QStringLiteral("*%1").arg(type.elements);
    return text;
}

std::optional<RecipeType> parseRecipeType(const QString& text)
{
    static const QRegularExpression form(
        QStringLiteral("\\A([A-Z]+)(?:\\(([0-9]{1,7})\\))?(?:\\*([0-9]{1,7}))?\\z"));
    const QRegularExpressionMatch match = form.match(text);
    const values::IecType* type = values::findIecType(match.captured(1));
    if (!match.hasMatch() || !type || values::isText(*type) == match.captured(2).isEmpty())
        return {};
    RecipeType found;
    found.type = type;
    found.stringLength = match.captured(2).toInt();
    found.elements = match.captured(3).isEmpty() ? 1 : match.captured(3).toInt();
    return recipeTypeText(found) == text ? std::optional<RecipeType>(found) : std::nullopt;
}

bool isSameContent(const RecipeContent& a, const RecipeContent& b)
{
    return a.type == b.type && std::equal(a.values.begin(), a.values.end(), b.values.begin(),
                                          b.values.end(), isSameValue);
}

QString recipeNameProblem(const QString& name)
{
    if (name.isEmpty() || name != name.trimmed())
        return QStringLiteral("expected a name without blanks around it");
    if (name.size() > kLongestName)
        return QStringLiteral("expected a name of at most %1 characters").arg(kLongestName);
    for (int i = 0; i < int(name.size()); ++i) {
        if (values::isObeyed(name[i].unicode()) || values::isLoneSurrogate(name, i))
            return QStringLiteral("expected a name of characters that can be shown");
    }
    return {};
}

} // namespace plc::panel
