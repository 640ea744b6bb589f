#include <QtCore/QStringList>

#include "baseline/straightforward_driver.h"
#include "support/symbols.h"

namespace plc::bench {
namespace baseline {

namespace {

constexpr int kTypeCodeMask = 0xFF;

/// By type code; the benchmarks use no others.
int elementSize(int code)
{
    switch (code) {
        case kWordCode:
            return 2;
        case kDoubleWordCode:
            return 4;
        case kQuadWordCode:
            return 8;
        default:
            return 1;
    }
}

bool cutSubscript(QString& part, QString& subscript)
{
    const int open = int(part.lastIndexOf(QLatin1Char('[')));
    if (open < 0 || !part.contains(QLatin1Char(']')))
        return false;
    subscript = part.mid(open + 1, part.size() - open - 2);
    part = part.left(open);
    return true;
}

bool linearIndex(const QString& subscript, const Label_Type_Info& array, int& index)
{
    const QStringList numbers = subscript.split(QLatin1Char(','));
    if (numbers.size() != array.dimCount)
        return false;
    index = 0;
    for (int k = 0; k < array.dimCount; ++k) {
        bool ok = false;
        const int value = numbers.at(k).toInt(&ok, array.arrayBounds.at(0));
        const int lower = array.arrayBounds.at(2 * k + 1);
        if (!ok || value < lower)
            return false;
        index = index * (array.arrayBounds.at(2 * k + 2) - lower) + value - lower;
    }
    return true;
}

const Label_Type_Info* findByName(const Label_Type_Info& definition, const QString& name)
{
    for (int i = 0; i < int(definition.memberCount); ++i) {
        if (definition.members.at(i).name == name)
            return &definition.members.at(i);
    }
    return nullptr;
}

} // namespace

void StraightforwardDriver::passSymbols(const QList<Label_Type_Info>& scopes)
{
    for (const Label_Type_Info& scope : scopes)
        m_symbols.insert(scope.name, scope);
}

bool StraightforwardDriver::resolve(const QString& label, Place& place) const
{
    const QStringList parts = label.split(QLatin1Char('.'));
    if (parts.size() < 2)
        return false;
    QString scopeName = parts.at(0);
    QString subscript;
    cutSubscript(scopeName, subscript);
    const auto scope = m_symbols.constFind(scopeName);
    if (scope == m_symbols.constEnd() || scope->typeDef.isEmpty())
        return false;

    QString variableName = parts.at(1);
    cutSubscript(variableName, subscript);
    const Label_Type_Info* variable = findByName(scope->typeDef.at(0), variableName);
    if (!variable || variable->areaInfo.isEmpty())
        return false;
    place.areaIndex = variable->areaInfo.at(0);
    place.address = variable->offset;
    return resolveParts(*variable, parts, 1, place);
}

bool StraightforwardDriver::resolveParts(const Label_Type_Info& record, const QStringList& parts,
                                         int index, Place& place) const
{
    if (index >= int(parts.size()))
        return false;
    QString name = parts.at(index);
    QString subscript;
    bool resolved = !cutSubscript(name, subscript);
    int element = 0;
    if (record.typeFlags & kArrayFlag) {
        if (!linearIndex(subscript, record, element))
            return false;
        resolved = true;
    }
    if (record.typeFlags & kStructureFlag) {
        const Label_Type_Info* member = findByName(record, name);
        if (!member)
            return false;
        place.address += member->offset;
        return resolveParts(*member, parts, index, place);
    }
    const int code = record.typeFlags & kTypeCodeMask;
    if (code == kStructureCode) {
        const Label_Type_Info& definition = record.typeDef.at(0);
        place.address += definition.offset * element;
        return resolveParts(definition, parts, index + 1, place);
    }
    place.dataType = code;
    place.address += element * elementSize(code);
    return resolved;
}

} // namespace baseline
} // namespace plc::bench
