#ifndef PLC_SYMBOLS_LABEL_RESOLUTION_H
#define PLC_SYMBOLS_LABEL_RESOLUTION_H

#include "driver/plc_driver.h"
#include "symbols/symbol_index.h"

/// Where a label leads. Valid only when the resolution returned 0: failing walks leave some members
/// written.
struct ControlInformationM {
    quint8 dataType;  ///< Type code; left alone for elements that have no basic type.
    qint32 address;   ///< Byte address in the area (bit address for type code 13).
    qint32 areaIndex; ///< Memory area index.
};

namespace plc {

/// Results of label resolution.
enum ResolutionResult {
    kResolved = 0,
    kNoElement = 1,
    kNoScope = 2,
    kBadSubscript = 3,
    kEmptyLabel = 6,
    kNoMember = 7,
    kScopeWithoutType = 10,
    kNoVariablePart = 11,
    kVariableWithoutArea = 12
};

/// Resolves labels against a symbol table. It only points at both parts, which belong to the
/// caller: made for one label or for many, it costs nothing.
class LabelResolver {
public:
    /// `index` follows `table`, see SymbolIndex::insertInto().
    LabelResolver(const SymbolTable& table, const SymbolIndex& index)
        : m_table(table), m_index(index)
    {
    }

    /// Resolves `label` into `place`. Returns a ResolutionResult.
    int resolve(const QString& label, ControlInformationM& place) const;

    /// Begins to load what resolve() will look at first. Large symbol tables lie in no cache; who
    /// resolves many labels need not wait for each.
    void prefetch(const QString& label) const;

private:
    const SymbolTable& m_table;
    const SymbolIndex& m_index;
};

} // namespace plc

/// Resolves the parts from `index` on against `record` and adds to the address in `info`. Returns a
/// plc::ResolutionResult.
PLC_DRIVER_EXPORT int get_label_address_1(const Label_Type_Info& record, const QStringList& parts,
                                          int index, ControlInformationM& info);

/// Linear index of `subscript` ("2,3") in an array of these bounds. Returns 0, or 1 for a wrong
/// number of subscripts, or 3 for one that is no number or below its lower bound.
PLC_DRIVER_EXPORT int get_label_address_array_memory_index(QString subscript, int dimCount,
                                                           const QList<int>& arrayBounds,
                                                           unsigned int& linearIndex);

#endif
