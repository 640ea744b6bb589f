#include "symbols/label_resolution.h"

#include <QtCore/QVarLengthArray>

#include "base/label_text.h"
#include "base/wrapped_int.h"
#include "symbols/type_codes.h"

namespace {

using plc::LabelText;

const int kLargestBase = 36;

/// Cuts a subscript off `part`. The part is taken to end with "]": the character before its end
/// closes the subscript, wherever the bracket stands. Returns whether there was one.
bool get_label_address_array_split(LabelText& part, LabelText& subscript)
{
    const int open = part.lastIndexOf(QLatin1Char('['));
    if (open < 0 || part.indexOf(QLatin1Char(']')) < 0)
        return false;
    subscript = part.mid(open + 1, qMax(0, part.size - open - 2));
    part = part.mid(0, open);
    return true;
}

/// One part of a label: a name and what stands in brackets behind it.
struct LabelPart {
    LabelText name;
    LabelText subscript;
    bool hasSubscript;

    LabelPart() : hasSubscript(false) {}
    LabelPart(const LabelText& text, bool mayHaveSubscript)
        : name(text),
          hasSubscript(mayHaveSubscript && get_label_address_array_split(name, subscript))
    {
    }
};

const int kPartsWithoutAllocation = 16;
typedef QVarLengthArray<LabelPart, kPartsWithoutAllocation> LabelParts;

void splitLabel(const LabelText& label, LabelParts& parts)
{
    int start = 0;
    bool bracket = false;
    for (int i = 0; i < label.size; ++i) {
        const ushort character = label.text[i].unicode();
        if (character == '.') {
            parts.append(LabelPart(label.mid(start, i - start), bracket));
            start = i + 1;
            bracket = false;
        } else if (character == '[') {
            bracket = true;
        }
    }
    parts.append(LabelPart(label.mid(start, label.size - start), bracket));
}

/// Subscripts are short decimal numbers; only what is not goes through a string conversion.
bool toDecimal(const LabelText& text, qint32& value)
{
    const int kDigitsThatFit = 9;
    if (text.size < 1 || text.size > kDigitsThatFit)
        return false;
    qint32 number = 0;
    for (int i = 0; i < text.size; ++i) {
        const int digit = int(text.text[i].unicode()) - '0';
        if (digit < 0 || digit > 9)
            return false;
        number = 10 * number + digit;
    }
    value = number;
    return true;
}

bool toInteger(const LabelText& text, int base, qint32& value)
{
    if (base == 10 && toDecimal(text, value))
        return true;
    if (base < 0 || base == 1 || base > kLargestBase)
        return false;
    bool ok = false;
    value = text.toString().toInt(&ok, base);
    return ok;
}

int countCommas(const LabelText& text)
{
    int commas = 0;
    for (int i = text.indexOf(QLatin1Char(',')); i >= 0; i = text.indexOf(QLatin1Char(','), i + 1))
        ++commas;
    return commas;
}

/// Linear index by bounds: base, then lower and upper of each dimension.
int linearIndexOf(const LabelText& subscript, int dimCount, const QList<int>& bounds,
                  quint32& linearIndex)
{
    if (dimCount < 1 || countCommas(subscript) + 1 != dimCount ||
        bounds.size() < 1 + 2 * qint64(dimCount))
        return plc::kNoElement;

    quint32 index = 0;
    int start = 0;
    for (int k = 0; k < dimCount; ++k) {
        const int comma = subscript.indexOf(QLatin1Char(','), start);
        const int end = comma < 0 ? subscript.size : comma;
        const qint64 lower = bounds.at(2 * k + 1);
        const qint64 upper = bounds.at(2 * k + 2);
        qint32 value = 0;
        if (!toInteger(subscript.mid(start, end - start), bounds.at(0), value) || value < lower)
            return plc::kBadSubscript;
        // No check of the upper bound, and a dimension counts upper - lower elements, not one more:
        // hosts' symbol files are laid out for both.
        index = quint32(quint64(index) * quint32(upper - lower) + quint32(value - lower));
        start = end + 1;
    }
    linearIndex = index;
    return plc::kResolved;
}

const Label_Type_Info* findMember(const Label_Type_Info& structure, const LabelText& name)
{
    const qint64 count = qMin(qint64(structure.memberCount), qint64(structure.members.size()));
    for (int i = 0; i < count; ++i) {
        const Label_Type_Info& member = structure.members.at(i);
        if (name == LabelText(member.name))
            return &member;
    }
    return nullptr;
}

/// Splits a label of two parts without a subscript, as most are. False for any other.
bool splitPlainLabel(const LabelText& label, LabelText& scope, LabelText& variable)
{
    int dot = -1;
    for (int i = 0; i < label.size; ++i) {
        const ushort character = label.text[i].unicode();
        if (character == '[')
            return false;
        if (character == '.') {
            if (dot >= 0)
                return false;
            dot = i;
        }
    }
    if (dot < 0)
        return false;
    scope = label.mid(0, dot);
    variable = label.mid(dot + 1, label.size - dot - 1);
    return true;
}

/// Walks from `record` along the parts from `index` on; each step descends into a member or into
/// the definition of a structure, so that the depth of the records bounds the walk.
int walk(const Label_Type_Info* record, const LabelParts& parts, int index,
         ControlInformationM& info)
{
    while (index >= 0 && index < int(parts.size())) {
        const LabelPart& part = parts[index];
        quint32 element = 0;
        int result = part.hasSubscript ? plc::kNoElement : plc::kResolved;
        if (record->typeFlags & PLC_TYPE_ARRAY) {
            result = linearIndexOf(part.subscript, record->dimCount, record->arrayBounds, element);
            if (result != plc::kResolved)
                return result;
        }

        if (record->typeFlags & PLC_TYPE_STRUCTURE_DEFINITION) {
            // The member applies the subscript of the same part.
            record = findMember(*record, part.name);
            if (!record)
                return plc::kNoMember;
            info.address = plc::advanced(info.address, record->offset);
            continue;
        }

        const quint8 code = quint8(record->typeFlags & PLC_TYPE_CODE_MASK);
        if (code == PLC_TYPE_STRUCTURE) {
            if (record->typeDef.isEmpty())
                return plc::kNoElement;
            record = &record->typeDef.at(0);
            info.address = plc::advanced(info.address, qint64(record->offset) * element);
            ++index;
            continue;
        }
        const int size = plc::typeInfo(code).elementSize;
        if (size != 0) {
            info.dataType = code;
            info.address = plc::advanced(info.address, qint64(element) * size);
        }
        return result;
    }
    return plc::kNoElement;
}

/// A variable that is neither an array nor structured: all that the walk would find is at hand.
bool isScalar(const plc::SymbolIndex::Variable& variable)
{
    const quint8 code = quint8(variable.typeFlags & PLC_TYPE_CODE_MASK);
    return !(variable.typeFlags & (PLC_TYPE_ARRAY | PLC_TYPE_STRUCTURE_DEFINITION)) &&
           plc::typeInfo(code).elementSize != 0;
}

/// Walks from the variable that the second part names. `parts` are all of them, or null for a label
/// that ends there and has no subscript.
int walkFromVariable(const Label_Type_Info& record, const LabelPart& scopePart,
                     const LabelPart& variablePart, const LabelParts* parts,
                     ControlInformationM& info)
{
    if (parts)
        return walk(&record, *parts, 1, info);
    LabelParts plain;
    plain.append(scopePart);
    plain.append(variablePart);
    return walk(&record, plain, 1, info);
}

/// Resolves by the index of the scope.
int resolveByIndex(const plc::SymbolIndex::Scope& scope, const LabelPart& scopePart,
                   const LabelPart& variablePart, const LabelParts* parts,
                   ControlInformationM& info)
{
    if (!scope.hasType())
        return plc::kScopeWithoutType;
    const plc::SymbolIndex::Variable* variable = scope.findVariable(variablePart.name);
    if (!variable)
        return plc::kNoElement;
    if (!variable->hasArea)
        return plc::kVariableWithoutArea;

    info.areaIndex = variable->areaIndex;
    info.address = variable->address;
    if (isScalar(*variable)) {
        info.dataType = quint8(variable->typeFlags & PLC_TYPE_CODE_MASK);
        return variablePart.hasSubscript ? plc::kNoElement : plc::kResolved;
    }
    return walkFromVariable(scope.recordOf(*variable), scopePart, variablePart, parts, info);
}

/// Resolves by the record that the table holds of the scope.
int resolveByRecord(const Label_Type_Info& scope, const LabelPart& scopePart,
                    const LabelPart& variablePart, const LabelParts* parts,
                    ControlInformationM& info)
{
    if (scope.typeDef.isEmpty())
        return plc::kScopeWithoutType;
    const Label_Type_Info* variable = findMember(scope.typeDef.at(0), variablePart.name);
    if (!variable)
        return plc::kNoElement;
    if (variable->areaInfo.isEmpty())
        return plc::kVariableWithoutArea;
    info.areaIndex = variable->areaInfo.at(0);
    info.address = variable->offset;
    return walkFromVariable(*variable, scopePart, variablePart, parts, info);
}

/// Resolves against the variable that the first two parts name; for `parts` see walkFromVariable().
int resolveParts(const plc::SymbolTable& table, const plc::SymbolIndex& index,
                 const LabelPart& scopePart, const LabelPart& variablePart, const LabelParts* parts,
                 ControlInformationM& info)
{
    const plc::SymbolIndex::Scope* scope = index.findScope(scopePart.name);
    if (!index.belongsTo(table)) {
        // Host code has changed the table: only what its records share with the index still holds.
        const plc::SymbolTable::const_iterator found = table.constFind(scopePart.name.toString());
        if (found == table.constEnd())
            return plc::kNoScope;
        if (!scope || !scope->belongsTo(found.value()))
            return resolveByRecord(found.value(), scopePart, variablePart, parts, info);
    }
    return scope ? resolveByIndex(*scope, scopePart, variablePart, parts, info) : plc::kNoScope;
}

} // namespace

namespace plc {

int LabelResolver::resolve(const QString& label, ControlInformationM& place) const
{
    if (label.isEmpty())
        return kEmptyLabel;
    const LabelText text(label);
    LabelPart scope;
    LabelPart variable;
    if (splitPlainLabel(text, scope.name, variable.name))
        return resolveParts(m_table, m_index, scope, variable, nullptr, place);

    LabelParts parts;
    splitLabel(text, parts);
    if (parts.size() < 2)
        return kNoVariablePart;
    return resolveParts(m_table, m_index, parts[0], parts[1], &parts, place);
}

void LabelResolver::prefetch(const QString& label) const
{
    const LabelText text(label);
    const int dot = text.indexOf(QLatin1Char('.'));
    if (dot < 0)
        return;
    const SymbolIndex::Scope* scope = m_index.findScope(text.mid(0, dot));
    if (!scope)
        return;
    int end = dot + 1;
    while (end < text.size && text.text[end] != QLatin1Char('.') &&
           text.text[end] != QLatin1Char('['))
        ++end;
    scope->prefetchVariable(text.mid(dot + 1, end - dot - 1));
}

} // namespace plc

int get_label_address_1(const Label_Type_Info& record, const QStringList& parts, int index,
                        ControlInformationM& info)
{
    LabelParts texts;
    for (int i = 0; i < int(parts.size()); ++i)
        texts.append(LabelPart(LabelText(parts.at(i)), true));
    return walk(&record, texts, index, info);
}

int get_label_address_array_memory_index(QString subscript, int dimCount,
                                         const QList<int>& arrayBounds, unsigned int& linearIndex)
{
    return linearIndexOf(LabelText(subscript), dimCount, arrayBounds, linearIndex);
}
