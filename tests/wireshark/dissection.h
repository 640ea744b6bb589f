#ifndef PLC_TESTS_WIRESHARK_DISSECTION_H
#define PLC_TESTS_WIRESHARK_DISSECTION_H

#include <QtCore/QStringList>

#include <initializer_list>
#include <string>
#include <vector>

namespace plc {

/// One packet as tshark prints it: the values of the fields asked for, those of one field with
/// commas between.
using Row = std::vector<std::string>;

/// What tshark with the dissector prints about a capture file.
QByteArray dissect(const QString& file, const QStringList& arguments);

/// What `tshark -T fields` prints for the packets of the protocol, or for those of the filter among
/// `options`.
std::vector<Row> dissectedFields(const QString& file, std::initializer_list<const char*> fields,
                                 const QStringList& options = QStringList());

/// Filter option for packets.
QStringList filter(const char* expression);

} // namespace plc

#endif
