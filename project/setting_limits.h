#ifndef PLC_PROJECT_SETTING_LIMITS_H
#define PLC_PROJECT_SETTING_LIMITS_H

namespace plc::project {

constexpr int kHighestPort = 65535;
/// Stations are numbers of one byte.
constexpr int kHighestStation = 255;
/// A reply carries at most 65535 bytes behind its length field: status, entry count and the leading
/// byte of the one block come first.
constexpr int kMostReadBytes = 65535 - 2 - 4 - 1;

} // namespace plc::project

#endif
