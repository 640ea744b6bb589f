#include "project/signal_reader.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>

#include <cmath>

#include "project/signal_kinds.h"
#include "values/iec_types.h"
#include "values/nearest_name.h"

namespace plc::project {
namespace {

void checkText(const JsonNode& node, const Variable& variable)
{
    const QString text = node.text();
    if (text.size() > variable.stringLength) {
        node.failExpecting(QStringLiteral("at most %1 characters").arg(variable.stringLength));
    }
    for (const QChar character : text) {
        if (variable.type->format == values::ValueFormat::Text && character.unicode() > 0xff)
            node.failExpecting(QStringLiteral("characters of Latin-1; a WSTRING holds others"));
    }
}

void checkNumber(const JsonNode& node, const values::IecType& type)
{
    const double number = node.number();
    const values::IecRange range = values::iecRange(type);
    const bool mustBeWhole = type.format != values::ValueFormat::Real;
    if (number < range.lowest || number > range.highest ||
        (mustBeWhole && number != std::floor(number))) {
        node.failExpecting(QStringLiteral("a value of type %1").arg(QLatin1String(type.name)));
    }
}

void checkConstant(const JsonNode& node, const Variable& variable)
{
    if (values::isText(*variable.type))
        checkText(node, variable);
    else if (variable.type->format == values::ValueFormat::Boolean)
        node.boolean();
    else
        checkNumber(node, *variable.type);
}

void readConstant(const JsonNode& node, const Variable& variable)
{
    node.checkKeys({"kind", "value"}, {});
    const JsonNode value = node.member("value");
    if (!value.value().isList()) {
        checkConstant(value, variable);
        return;
    }
    const JsonNode::Elements list = value.elements();
    if (list.isEmpty())
        value.fail(QStringLiteral("expected at least one value"));
    for (const JsonNode element : list)
        checkConstant(element, variable);
}

void readParameters(const JsonNode& node, const SignalKind& kind)
{
    JsonKeys required{"kind"};
    JsonKeys optional;
    for (const SignalParameter* known = kind.parameters; known->name; ++known)
        (known->required ? required : optional).push_back(known->name);
    node.checkKeys(required, optional);
    for (const SignalParameter* known = kind.parameters; known->name; ++known) {
        if (!node.has(known->name))
            continue;
        const JsonNode parameter = node.member(known->name);
        if (parameter.number() < known->minimum)
            parameter.failExpecting(QStringLiteral("at least %1").arg(known->minimum));
    }
}

void checkOrder(const JsonNode& node, const char* lower, const char* upper)
{
    if (node.has(lower) && node.member(upper).number() < node.member(lower).number())
        node.member(upper).failExpecting(QStringLiteral("at least the value of %1")
                                             .arg(values::quoted(QString::fromLatin1(lower))));
}

/// Of what the checks have let through: numbers, truth values and texts.
QJsonValue plainValue(const JsonValue& value)
{
    switch (value.type()) {
        case JsonValue::Type::Boolean:
            return value.boolean();
        case JsonValue::Type::Text:
            return value.text();
        default:
            return value.number();
    }
}

QJsonObject parametersOf(const JsonValue& signal)
{
    QJsonObject parameters;
    const JsonValue end = signal.end();
    for (JsonValue key = signal.first(); key != end; key = key.nextKey()) {
        const JsonValue value = key.next();
        if (!value.isList()) {
            parameters.insert(key.text(), plainValue(value));
            continue;
        }
        QJsonArray list;
        const JsonValue listEnd = value.end();
        for (JsonValue each = value.first(); each != listEnd; each = each.next())
            list.append(plainValue(each));
        parameters.insert(key.text(), list);
    }
    return parameters;
}

} // namespace

Signal readSignal(const JsonNode& node, const Variable& variable)
{
    const QString kindName = node.value().member("kind").text();
    const SignalKind* kind = findSignalKind(kindName);
    if (variable.structure) {
        node.fail(QStringLiteral("a structure has no signal of its own; its members may have one"));
    } else if (!node.value().isObject() || !node.has("kind")) {
        node.failExpecting(QStringLiteral("an object with the key \"kind\""));
    } else if (!kind) {
        node.member("kind").failExpecting(
            QStringLiteral("one of %1%2")
                .arg(signalKindNames().join(QLatin1String(", ")),
                     values::nearestNameHint(kindName, signalKindNames())));
    } else if (kindName == QLatin1String(kConstantSignal)) {
        readConstant(node, variable);
    } else if (values::isText(*variable.type)) {
        node.member("kind").failExpecting(QStringLiteral("\"constant\" for a text"));
    } else {
        readParameters(node, *kind);
        if (kindName == QLatin1String("counter"))
            checkOrder(node, "from", "to");
        else if (kindName == QLatin1String("walk"))
            checkOrder(node, "minimum", "maximum");
    }
    return {kindName, parametersOf(node.value())};
}

} // namespace plc::project
