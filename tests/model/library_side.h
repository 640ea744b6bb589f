#ifndef PLC_TESTS_MODEL_LIBRARY_SIDE_H
#define PLC_TESTS_MODEL_LIBRARY_SIDE_H

#include "driver/Communication_Protocol.h"
#include "model/records.h"

namespace plc::model {

// The records of the driver's interface from those of the model, and back.

QString toQt(const std::u16string& text);
QByteArray toQt(const Bytes& bytes);
RW_VAR toQt(const Variable& var);
Protocol toQt(const Request& request);
QList<Label_Type_Info> toQt(const std::vector<Symbol>& records);
QList<HostVarItem> toQt(const std::vector<HostItem>& items);
QList<RW_VAR> toQt(const std::vector<Variable>& list);

std::u16string fromQt(const QString& text);
Bytes fromQt(const QByteArray& bytes);
Variable fromQt(const RW_VAR& var);
std::vector<Variable> fromQt(const QList<RW_VAR>& list);
std::vector<Symbol> fromQt(const QList<Label_Type_Info>& records);
Settings fromQt(const ComInfo& record);

/// Whether a record of the driver equals one of the model, without a copy of either.
bool isSame(const RW_VAR& actual, const Variable& expected);
bool isSame(const Protocol& actual, const Request& expected);

} // namespace plc::model

#endif
