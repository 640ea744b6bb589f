#include "model/label_model.h"

#include <QtCore/QString>

namespace plc::model {

namespace {

typedef std::vector<std::u16string> Parts;

Parts split(const std::u16string& text, char16_t separator)
{
    Parts parts(1);
    for (char16_t character : text) {
        if (character == separator)
            parts.push_back(std::u16string());
        else
            parts.back().push_back(character);
    }
    return parts;
}

/// Cuts "[…]" off the part. The subscript is what stands between the last "[" and the last
/// character, whatever that is.
bool cutSubscript(std::u16string& part, std::u16string& subscript)
{
    if (part.find(u'[') == std::u16string::npos || part.find(u']') == std::u16string::npos)
        return false;
    const std::size_t bracket = part.rfind(u'[');
    const std::size_t behind = part.size() - bracket - 1;
    subscript = behind == 0 ? std::u16string() : part.substr(bracket + 1, behind - 1);
    part.resize(bracket);
    return true;
}

int elementSize(int code)
{
    switch (code) {
        case 1:
        case 2:
        case 13:
        case 14:
        case 15:
            return 1;
        case 3:
        case 4:
        case 16:
            return 2;
        case 5:
        case 6:
        case 7:
        case 17:
            return 4;
        case 8:
        case 9:
            return 8;
        default: // 10 and 11
            return 255;
    }
}

/// Position of the element in its array, counted from 0.
int linearIndex(const std::u16string& subscript, const Symbol& array, std::uint32_t& index)
{
    const Parts pieces = split(subscript, u',');
    if (array.dimCount < 1 || std::int64_t(pieces.size()) != array.dimCount)
        return 1;
    const std::size_t dimensions = pieces.size();
    if (array.arrayBounds.size() < 1 + 2 * dimensions)
        return 1;
    std::vector<std::int64_t> position;
    std::vector<std::int64_t> extent;
    for (std::size_t k = 0; k < dimensions; ++k) {
        bool isNumber = false;
        const QString piece(reinterpret_cast<const QChar*>(pieces[k].data()),
                            int(pieces[k].size()));
        // Qt 6 would take digits beyond z.
        const int base = array.arrayBounds[0];
        const bool isBase = base == 0 || (base >= 2 && base <= 36);
        const std::int64_t value = isBase ? piece.toInt(&isNumber, base) : 0;
        const std::int64_t lower = array.arrayBounds[2 * k + 1];
        const std::int64_t upper = array.arrayBounds[2 * k + 2];
        if (!isNumber || value - lower < 0)
            return 3;
        position.push_back(value - lower);
        extent.push_back(upper - lower);
    }
    index = std::uint32_t(position[dimensions - 1]);
    for (std::size_t d = 0; d + 1 < dimensions; ++d) {
        std::uint32_t stride = 1;
        for (std::size_t later = d + 1; later < dimensions; ++later)
            stride *= std::uint32_t(extent[later]);
        index += std::uint32_t(position[d]) * stride;
    }
    return 0;
}

const Symbol* findMember(const Symbol& record, const std::u16string& name)
{
    for (std::size_t i = 0; i < record.memberCount && i < record.members.size(); ++i) {
        if (record.members[i].name == name)
            return &record.members[i];
    }
    return nullptr;
}

int resolvePart(const Symbol& record, const Parts& parts, std::size_t index, Place& place)
{
    if (index >= parts.size())
        return 1;
    std::u16string name = parts[index];
    std::u16string subscript;
    std::uint32_t n = 0;
    int result = cutSubscript(name, subscript) ? 1 : 0;
    if (record.typeFlags & 0x100) {
        result = linearIndex(subscript, record, n);
        if (result != 0)
            return result;
    }
    if (record.typeFlags & 0x200) {
        const Symbol* member = findMember(record, name);
        if (!member)
            return 7;
        place.address = stored(std::int64_t(place.address) + member->offset);
        return resolvePart(*member, parts, index, place);
    }
    const int code = record.typeFlags % 256;
    if (code == 0 || code > 17)
        return result;
    if (code == 12) {
        if (record.typeDef.empty())
            return 1;
        const Symbol& structure = record.typeDef[0];
        place.address = stored(place.address + std::int64_t(n) * structure.offset);
        return resolvePart(structure, parts, index + 1, place);
    }
    place.dataType = std::uint8_t(code);
    place.address = stored(place.address + std::int64_t(n) * elementSize(code));
    return result;
}

} // namespace

void LabelModel::pass(const std::vector<Symbol>& records)
{
    for (const Symbol& record : records)
        m_scopes[record.name] = record;
}

int LabelModel::resolve(const std::u16string& label, Place& place) const
{
    if (label.empty())
        return 6;
    const Parts parts = split(label, u'.');
    if (parts.size() < 2)
        return 11;
    std::u16string ignored;
    std::u16string scopeName = parts[0];
    cutSubscript(scopeName, ignored);
    const auto scope = m_scopes.find(scopeName);
    if (scope == m_scopes.end())
        return 2;
    if (scope->second.typeDef.empty())
        return 10;
    std::u16string variableName = parts[1];
    cutSubscript(variableName, ignored);
    const Symbol* variable = findMember(scope->second.typeDef[0], variableName);
    if (!variable)
        return 1;
    if (variable->areaInfo.empty())
        return 12;
    place.areaIndex = variable->areaInfo[0];
    place.address = variable->offset;
    return resolvePart(*variable, parts, 1, place);
}

} // namespace plc::model
