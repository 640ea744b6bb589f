#ifndef PLC_TESTS_MODEL_LABEL_MODEL_H
#define PLC_TESTS_MODEL_LABEL_MODEL_H

#include <map>

#include "model/records.h"

namespace plc::model {

/// Where a label leads; what the walk did not write is left as the caller set it.
struct Place {
    std::uint8_t dataType = 0;
    std::int32_t address = 0;
    std::int32_t areaIndex = 0;
};

/// The symbol table and the resolution of labels.
class LabelModel {
public:
    /// Takes the records into the table; the last of each name stays.
    void pass(const std::vector<Symbol>& records);

    /// Resolves a label; 0 means resolved.
    int resolve(const std::u16string& label, Place& place) const;

    const std::map<std::u16string, Symbol>& scopes() const { return m_scopes; }

private:
    std::map<std::u16string, Symbol> m_scopes;
};

} // namespace plc::model

#endif
