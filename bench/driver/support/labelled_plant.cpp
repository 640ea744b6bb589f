#include "support/labelled_plant.h"

#include "support/shuffle.h"
#include "support/symbols.h"

namespace plc::bench {

namespace {

constexpr int kAreaIndex = 3;
constexpr int kLargestElement = 8;
constexpr int kArrayLength = 10;

// A line holds motors, a motor drives; each has eight members, the searched one in their midst.
constexpr int kMembers = 8;
constexpr int kSearchedMember = 4;
constexpr int kLines = 2;
constexpr int kMotors = 4;
constexpr int kDrives = 2;

int typeCodeOf(int registers)
{
    switch (registers) {
        case 2:
            return kDoubleWordCode;
        case 4:
            return kQuadWordCode;
        default:
            return kWordCode;
    }
}

/// A structure of single values around `searched`, which takes `size` bytes.
Label_Type_Info structureAround(Label_Type_Info searched, int size)
{
    QList<Label_Type_Info> members;
    int offset = 0;
    for (int i = 0; i < kMembers; ++i) {
        if (i == kSearchedMember) {
            searched.offset = offset;
            members.append(searched);
            offset += size;
        } else {
            members.append(
                variable(QLatin1String("Setting") + QString::number(i), kWordCode, offset));
            offset += kLargestElement;
        }
    }
    return structure(offset, members);
}

/// An array of a nested structure; `size` receives the bytes that it takes.
Label_Type_Info nestedLines(int typeCode, int& size)
{
    const Label_Type_Info drive =
        structureAround(variable(QLatin1String("Speed"), typeCode, 0), kLargestElement);
    const int drives = kDrives * drive.offset;
    const Label_Type_Info motor =
        structureAround(arrayOf(structured(QLatin1String("Drive"), 0, drive), kDrives), drives);
    const int motors = kMotors * motor.offset;
    const Label_Type_Info line =
        structureAround(arrayOf(structured(QLatin1String("Motor"), 0, motor), kMotors), motors);
    size = kLines * line.offset;
    return arrayOf(structured(QString(), 0, line), kLines);
}

/// A variable of this kind without its name and place; `size` receives the bytes that it takes.
Label_Type_Info prototypeOf(LabelKind kind, int typeCode, int& size)
{
    switch (kind) {
        case LabelKind::Scalar:
            size = kLargestElement;
            return variable(QString(), typeCode, 0);
        case LabelKind::ArrayElement:
            size = kArrayLength * kLargestElement;
            return arrayOf(variable(QString(), typeCode, 0), kArrayLength);
        default:
            return nestedLines(typeCode, size);
    }
}

QString subscript(int number, int upper)
{
    return QLatin1Char('[') + QString::number(number % upper + 1) + QLatin1Char(']');
}

/// What a label has behind the name of its variable.
QString pathOf(LabelKind kind, int number)
{
    switch (kind) {
        case LabelKind::Scalar:
            return QString();
        case LabelKind::ArrayElement:
            return subscript(number, kArrayLength);
        default:
            return subscript(number, kLines) + QLatin1String(".Motor") +
                   subscript(number / 3, kMotors) + QLatin1String(".Drive") +
                   subscript(number / 7, kDrives) + QLatin1String(".Speed");
    }
}

} // namespace

const char* nameOf(LabelKind kind)
{
    switch (kind) {
        case LabelKind::Scalar:
            return "scalar";
        case LabelKind::ArrayElement:
            return "array_element";
        default:
            return "nested_member";
    }
}

std::string PlantShape::name() const
{
    return std::string(nameOf(kind)) + '/' + std::to_string(registers) + "_registers/" +
           std::to_string(variables);
}

LabelledPlant::LabelledPlant(const PlantShape& shape) : m_shape(shape)
{
    int size = 0;
    Label_Type_Info record = prototypeOf(shape.kind, typeCodeOf(shape.registers), size);
    record.areaInfo = QList<int>() << kAreaIndex;
    QList<Label_Type_Info> variables;
    for (int i = 0; i < shape.variables; ++i) {
        record.name = QString::fromLatin1("Station%1_Value").arg(i, 6, kDecimal, QLatin1Char('0'));
        record.offset = i * size;
        variables.append(record);
        m_labels.push_back(QLatin1String("Plant.") + record.name + pathOf(shape.kind, i));
    }
    m_scopes.append(scope(QLatin1String("Plant"), variables));
    shuffle(m_labels);
}

Driver& LabelledPlant::driver()
{
    if (!m_driver) {
        m_driver = std::make_unique<Driver>();
        m_driver->passVarName(&m_scopes);
        QByteArray value;
        for (const QString& label : m_labels)
            m_driver->getRegisterData(label, 0, 0, 0, &value, m_shape.registers);
    }
    return *m_driver;
}

baseline::StraightforwardDriver& LabelledPlant::straightforward()
{
    if (!m_straightforward) {
        m_straightforward = std::make_unique<baseline::StraightforwardDriver>();
        m_straightforward->passSymbols(m_scopes);
    }
    return *m_straightforward;
}

const QHash<QString, int>& LabelledPlant::table()
{
    if (m_table.isEmpty()) {
        for (int i = 0; i < int(m_labels.size()); ++i)
            m_table.insert(m_labels[size_t(i)], i);
    }
    return m_table;
}

} // namespace plc::bench
