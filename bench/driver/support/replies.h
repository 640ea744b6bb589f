#ifndef PLC_BENCH_SUPPORT_REPLIES_H
#define PLC_BENCH_SUPPORT_REPLIES_H

#include <QtCore/QByteArray>

#include <vector>

namespace plc::bench {

/// A reply of open length is handed over twice: its size is recorded, then it is consumed.
constexpr int kPassesOfAReply = 2;

/// RW_VAR::result of a reply that was accepted.
constexpr int kReplyAccepted = 1;

/// Where the first data block of a read reply begins.
constexpr int kReadReplyDataOffset = 12;

QByteArray identificationReply();
QByteArray fileReply();

/// Lengths of the entries that a read request asks for.
std::vector<int> readLengths(const QByteArray& request);

/// A good reply to a read of entries of these lengths.
QByteArray readReply(const std::vector<int>& lengths);

/// A good acknowledgement of a write.
QByteArray writeReply();

} // namespace plc::bench

#endif
