#ifndef PLC_PROJECT_SYMBOLS_H
#define PLC_PROJECT_SYMBOLS_H

#include <QtCore/QString>
#include <QtCore/QVector>

#include <memory>

namespace plc::values {
struct IecType; // values/iec_types.h
}

namespace plc::project {

struct Signal; // project/signal.h
struct StructureType;

/// Bounds of one array dimension, both inclusive.
struct ArrayDimension {
    int lower = 0;
    int upper = 0;
};

/// A variable of a scope or a member of a structure. The elements of an array lie one behind the
/// other, the last subscript running fastest.
struct Variable {
    QString name;
    QString description;
    /// Exactly one of `type` and `structure` is set.
    const values::IecType* type = nullptr;
    std::shared_ptr<const StructureType> structure;
    /// Capacity in characters of a STRING or WSTRING.
    int stringLength = 0;
    /// Byte address in the area (bit address for BIT), or byte offset in the structure.
    qint32 offset = 0;
    /// Memory area; of no meaning in a member.
    int area = 0;
    QVector<ArrayDimension> dimensions;
    QString unit; ///< Shown behind the value; may be empty.
    /// Lies on purpose over memory of other variables (a status word and its bits).
    bool overlay = false;
    /// How the simulator lets the variable live; null: it does not.
    std::shared_ptr<const Signal> signal;
};

struct StructureType {
    QString name;
    QString description;
    qint32 size = 0; ///< Bytes of one element, as array elements lie apart.
    QVector<Variable> members;
};

struct ScopeDefinition {
    QString name;
    QVector<Variable> variables;
};

/// Area indexes are sent as 16-bit numbers.
constexpr int kHighestAreaIndex = 0xffff;

/// A memory area as the simulated PLC has it.
struct MemoryArea {
    int index = 0;
    qint32 size = 0; ///< bytes
};

/// The symbols of a PLC's program.
struct Symbols {
    /// Each behind those that its members are made of.
    QVector<std::shared_ptr<const StructureType>> structures;
    QVector<ScopeDefinition> scopes;
};

} // namespace plc::project

#endif
