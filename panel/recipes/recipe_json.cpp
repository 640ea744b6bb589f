#include "panel/recipes/recipe_json.h"

#include <QtCore/QSet>

#include <algorithm>
#include <cmath>
#include <optional>

#include "project/json_document.h"
#include "project/json_node.h"
#include "values/value_bits.h"

namespace plc::panel {

using project::JsonNode;
using values::Value;

namespace {

constexpr int kVersion = 1;
const QLatin1String kUnusualNan("NAN 16#");

QString elementText(const values::IecType& type, const Value& value)
{
    QString text = values::valueText(type, value);
    const bool isReal = type.format == values::ValueFormat::Real;
    const Expected<Value> again = values::parseValue(type, 0, text);
    if (isReal && !(again && values::valueBits(*again) == values::valueBits(value)))
        text = kUnusualNan + QString::number(values::valueBits(value), 16).toUpper();
    return text;
}

/// The bits of a NaN of the type, all of its digits.
std::optional<Value> nanOfBits(const values::IecType& type, const QString& digits)
{
    const bool isHexadecimal = std::all_of(digits.begin(), digits.end(), [](QChar digit) {
        return (digit >= QLatin1Char('0') && digit <= QLatin1Char('9')) ||
               (digit >= QLatin1Char('A') && digit <= QLatin1Char('F'));
    });
    if (!isHexadecimal || digits.size() != 2 * type.size)
        return {};
    const Value value = values::valueOfBits(type, digits.toULongLong(nullptr, 16));
    const float* const real = std::get_if<float>(&value);
    const bool isNan = real ? std::isnan(*real) : std::isnan(std::get<double>(value));
    return isNan ? std::optional(value) : std::nullopt;
}

Expected<Value> parseElement(const RecipeType& type, const QString& text)
{
    if (type.type->format != values::ValueFormat::Real || !text.startsWith(kUnusualNan))
        return values::parseValue(*type.type, type.stringLength, text);
    const std::optional<Value> nan = nanOfBits(*type.type, text.mid(kUnusualNan.size()));
    if (!nan)
        return Error{QStringLiteral("expected the %1 digits of a NaN, 0-9 and A-F")
                         .arg(2 * type.type->size)};
    return *nan;
}

QString entryJson(const RecipeEntry& entry)
{
    QStringList texts;
    for (const Value& value : entry.content.values)
        texts.append(values::jsonText(elementText(*entry.content.type.type, value)));
    return QStringLiteral("    {\"label\": %1, \"type\": %2, \"values\": [%3]}")
        .arg(values::jsonText(entry.label), values::jsonText(recipeTypeText(entry.content.type)),
             texts.join(QStringLiteral(", ")));
}

RecipeContent readContent(const JsonNode& node)
{
    RecipeContent content;
    const JsonNode type = node.member("type");
    if (const std::optional<RecipeType> found = parseRecipeType(type.text())) {
        content.type = *found;
    } else {
        type.failExpecting(QStringLiteral("a type such as \"REAL\" or \"INT*3\""));
        return content;
    }
    for (const JsonNode element : node.member("values").elements()) {
        const Expected<Value> value = parseElement(content.type, element.text());
        if (value)
            content.values.append(*value);
        else
            element.fail(value.error().text);
    }
    if (content.values.size() != content.type.elements)
        node.member("values").fail(QStringLiteral("found %1 values, expected %2")
                                       .arg(content.values.size())
                                       .arg(content.type.elements));
    return content;
}

QVector<RecipeEntry> readEntries(const JsonNode& list)
{
    QVector<RecipeEntry> entries;
    QSet<QString> labels;
    for (const JsonNode node : list.elements()) {
        node.checkKeys({"label", "type", "values"}, {});
        RecipeEntry entry{node.member("label").text(), readContent(node)};
        if (labels.contains(entry.label))
            node.member("label").fail(QStringLiteral("the label stands twice"));
        labels.insert(entry.label);
        entries.append(entry);
    }
    return entries;
}

} // namespace

QByteArray recipeJson(const Recipe& recipe)
{
    QStringList entries;
    for (const RecipeEntry& entry : recipe.entries)
        entries.append(entryJson(entry));
    // Not by arg(): what a text holds may look like a place for the next one.
    const QString text = QStringLiteral("{\n  \"recipe\": ") + QString::number(kVersion) +
                         QStringLiteral(",\n  \"name\": ") + values::jsonText(recipe.name) +
                         QStringLiteral(",\n  \"plc\": ") + values::jsonText(recipe.plc) +
                         QStringLiteral(",\n  \"savedAt\": ") + QString::number(recipe.savedAt) +
                         QStringLiteral(",\n  \"savedBy\": ") + values::jsonText(recipe.savedBy) +
                         QStringLiteral(",\n  \"values\": [\n") +
                         entries.join(QStringLiteral(",\n")) + QStringLiteral("\n  ]\n}\n");
    return text.toUtf8();
}

Expected<Recipe> parseRecipe(const QByteArray& json, const QString& name)
{
    const Expected<project::JsonDocument> document = project::JsonDocument::parse(json);
    if (!document)
        return Error{QStringLiteral("%1: %2").arg(name, document.error().text)};
    project::DocumentErrors errors(name);
    const JsonNode root(document->root(), &errors);
    root.checkKeys({"recipe", "name", "plc", "savedAt", "savedBy", "values"}, {});
    root.member("recipe").integer(kVersion, kVersion);
    Recipe recipe;
    recipe.name = root.member("name").text();
    recipe.plc = root.member("plc").text();
    recipe.savedAt = root.member("savedAt").integer(0, qint64(1) << 53);
    recipe.savedBy = root.member("savedBy").text();
    recipe.entries = readEntries(root.member("values"));
    if (!errors.isEmpty())
        return Error{errors.first()};
    return recipe;
}

} // namespace plc::panel
