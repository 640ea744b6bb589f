#include "plant.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

namespace plc::bench {
namespace {

constexpr int kBytesPerRegister = 2;
/// Farther apart than one read reaches that is made for one cluster.
constexpr int kClusterDistance = 8000;
constexpr int kSettingDistance = 12;

constexpr int kBlockArea = 1;
constexpr int kClusterArea = 2;
constexpr int kSettingArea = 3;
/// Each scattered value lies in an area of its own that ends behind it: whatever the settings,
/// nothing else can be read with it.
constexpr int kFirstScatteredArea = 100;

QJsonArray bounds(int count)
{
    QJsonArray dimensions;
    dimensions.append(QJsonArray{0, count - 1});
    return dimensions;
}

template <typename ValueOf>
QJsonObject constants(int count, ValueOf valueOf)
{
    QJsonArray values;
    for (int i = 0; i < count; ++i)
        values.append(valueOf(i));
    return {{QStringLiteral("kind"), QStringLiteral("constant")},
            {QStringLiteral("value"), values}};
}

QJsonObject variable(const QString& name, const char* type, int area, int offset)
{
    return {{QStringLiteral("name"), name},
            {QStringLiteral("type"), QString::fromLatin1(type)},
            {QStringLiteral("area"), area},
            {QStringLiteral("offset"), offset}};
}

/// The name of a member, counted over all types.
QString memberName(int member)
{
    for (const ClusterType& type : clusterTypes()) {
        if (member < type.members)
            return QString::fromLatin1(type.name).toLower() + QString::number(member);
        member -= type.members;
    }
    return QString();
}

QJsonObject clusterStructure()
{
    QJsonArray members;
    int member = 0;
    int offset = 0;
    for (const ClusterType& type : clusterTypes()) {
        for (int i = 0; i < type.members; ++i, ++member) {
            const auto value = [member](int cluster) { return clusterValue(cluster, member); };
            members.append(QJsonObject{{QStringLiteral("name"), memberName(member)},
                                       {QStringLiteral("type"), QString::fromLatin1(type.name)},
                                       {QStringLiteral("offset"), offset},
                                       {QStringLiteral("signal"), constants(kClusters, value)}});
            offset += type.registers * kBytesPerRegister;
        }
    }
    return {{QStringLiteral("name"), QStringLiteral("Cluster")},
            {QStringLiteral("size"), kClusterDistance},
            {QStringLiteral("members"), members}};
}

QJsonObject settingStructure()
{
    return {{QStringLiteral("name"), QStringLiteral("Setting")},
            {QStringLiteral("size"), kSettingDistance},
            {QStringLiteral("members"),
             QJsonArray{QJsonObject{{QStringLiteral("name"), QStringLiteral("value")},
                                    {QStringLiteral("type"), QStringLiteral("INT")},
                                    {QStringLiteral("offset"), 0}}}}};
}

QJsonArray variables()
{
    QJsonObject block = variable(QStringLiteral("block"), "INT", kBlockArea, 0);
    block.insert(QStringLiteral("array"), bounds(kBlockValues));
    block.insert(QStringLiteral("signal"), constants(kBlockValues, blockValue));
    QJsonObject clusters = variable(QStringLiteral("cluster"), "Cluster", kClusterArea, 0);
    clusters.insert(QStringLiteral("array"), bounds(kClusters));
    QJsonObject settings = variable(QStringLiteral("setting"), "Setting", kSettingArea, 0);
    settings.insert(QStringLiteral("array"), bounds(kSettings));
    QJsonArray all{block, clusters, settings};
    for (int i = 0; i < kScatteredValues; ++i) {
        QJsonObject one =
            variable(QStringLiteral("value%1").arg(i), "INT", kFirstScatteredArea + i, 0);
        one.insert(QStringLiteral("signal"), constants(1, [i](int) { return scatteredValue(i); }));
        all.append(one);
    }
    return all;
}

QJsonArray areas()
{
    const auto area = [](int index, int size) {
        return QJsonObject{{QStringLiteral("index"), index}, {QStringLiteral("size"), size}};
    };
    QJsonArray all{area(kBlockArea, kBlockValues * kBytesPerRegister),
                   area(kClusterArea, kClusters * kClusterDistance),
                   area(kSettingArea, kSettings * kSettingDistance)};
    for (int i = 0; i < kScatteredValues; ++i)
        all.append(area(kFirstScatteredArea + i, kBytesPerRegister));
    return all;
}

} // namespace

const std::vector<Work>& allWorks()
{
    static const std::vector<Work> works = {Work::Block, Work::Scattered, Work::Clusters,
                                            Work::Writes, Work::ReadBacks};
    return works;
}

char letterOf(Work work)
{
    return char('a' + int(work));
}

QString titleOf(Work work)
{
    switch (work) {
        case Work::Block:
            return QStringLiteral("10,000 values in one block");
        case Work::Scattered:
            return QStringLiteral("10,000 scattered values");
        case Work::Clusters:
            return QStringLiteral("1,000 values in 20 clusters");
        case Work::Writes:
            return QStringLiteral("1,000 single writes");
        case Work::ReadBacks:
            break;
    }
    return QStringLiteral("a value read back after a write");
}

bool isRead(Work work)
{
    return work != Work::Writes && work != Work::ReadBacks;
}

int valuesIn(Work work)
{
    switch (work) {
        case Work::Block:
            return kBlockValues;
        case Work::Scattered:
            return kScatteredValues;
        case Work::Clusters:
            return kClusters * valuesInCluster();
        case Work::Writes:
            return kSettings;
        case Work::ReadBacks:
            break;
    }
    return 1;
}

const std::vector<ClusterType>& clusterTypes()
{
    static const std::vector<ClusterType> types = {
        {"LREAL", 5, 4}, {"DINT", 10, 2}, {"REAL", 10, 2}, {"INT", 15, 1}, {"UINT", 10, 1}};
    return types;
}

int valuesInCluster()
{
    int values = 0;
    for (const ClusterType& type : clusterTypes())
        values += type.members;
    return values;
}

int registersInCluster()
{
    int registers = 0;
    for (const ClusterType& type : clusterTypes())
        registers += type.members * type.registers;
    return registers;
}

int blockValue(int index)
{
    return (37 * index + 11) % 30011;
}

int scatteredValue(int index)
{
    return (41 * index + 7) % 30013;
}

int clusterValue(int cluster, int member)
{
    return 100 * cluster + member + 1;
}

QByteArray projectJson()
{
    const QJsonObject project{
        {QStringLiteral("name"), QStringLiteral("Comparison")},
        {QStringLiteral("areas"), areas()},
        {QStringLiteral("structures"), QJsonArray{clusterStructure(), settingStructure()}},
        {QStringLiteral("scopes"),
         QJsonArray{QJsonObject{{QStringLiteral("name"), QStringLiteral("Plant")},
                                {QStringLiteral("variables"), variables()}}}}};
    return QJsonDocument(project).toJson(QJsonDocument::Compact);
}

QString blockLabel(int index)
{
    return QStringLiteral("Plant.block[%1]").arg(index);
}

QString scatteredLabel(int index)
{
    return QStringLiteral("Plant.value%1").arg(index);
}

QString clusterLabel(int cluster, int member)
{
    return QStringLiteral("Plant.cluster[%1].%2").arg(cluster).arg(memberName(member));
}

QString settingLabel(int index)
{
    return QStringLiteral("Plant.setting[%1].value").arg(index);
}

} // namespace plc::bench
