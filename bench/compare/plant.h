#ifndef PLC_BENCH_COMPARE_PLANT_H
#define PLC_BENCH_COMPARE_PLANT_H

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <vector>

namespace plc::bench {

/// What all sides do.
enum class Work {
    Block,     ///< Read 16-bit values that lie one behind the other.
    Scattered, ///< Read 16-bit values whose neighbours do not exist: no two can share a read.
    Clusters,  ///< Read values of several types that lie in clusters.
    Writes,    ///< Write 16-bit values whose neighbours must not be touched.
    ReadBacks  ///< Write a value, have it confirmed, and read it back; then the next one.
};
const std::vector<Work>& allWorks();
/// "a" to "e", as users choose them.
char letterOf(Work work);
/// As it stands in the report.
QString titleOf(Work work);
bool isRead(Work work);

constexpr int kBlockValues = 10000;
constexpr int kScatteredValues = 10000;
constexpr int kClusters = 20;
constexpr int kSettings = 1000;

/// Values that are read or written in one pass.
int valuesIn(Work work);

/// One element of each cluster's members of a type.
struct ClusterType {
    const char* name; ///< IEC type; also the member's name, followed by a number.
    int members;
    int registers; ///< 16-bit registers of one member.
};
/// The members of a cluster, in the order in which they lie.
const std::vector<ClusterType>& clusterTypes();
int valuesInCluster();
int registersInCluster();

/// What the plants hold at the start; whole numbers that every type can show.
int blockValue(int index);
int scatteredValue(int index);
int clusterValue(int cluster, int member);

/// The project of the plant for the host and the simulator.
QByteArray projectJson();
/// Labels in it.
QString blockLabel(int index);
QString scatteredLabel(int index);
QString clusterLabel(int cluster, int member);
QString settingLabel(int index);

} // namespace plc::bench

#endif
