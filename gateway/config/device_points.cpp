#include "gateway/config/device_points.h"

#include <QtCore/QHash>

#include <cmath>

#include "configuration/label_places.h"
#include "gateway/model/metric_name.h"
#include "project/label_expansion.h"
#include "values/nearest_name.h"

namespace plc::gateway {
namespace {

using host::DataPoint;
using project::CyclicLabel;

/// Finds what a device publishes, and applies to it what the configuration says of labels.
class DeviceBuilder {
public:
    DeviceBuilder(const DeviceSettings& settings, const project::Project& project,
                  const host::DataPointFinder& points)
        : m_settings(settings),
          m_project(project),
          m_points(points),
          m_expander(project),
          m_places(project)
    {
    }

    Expected<DevicePoints> build()
    {
        m_result.device.name = m_settings.name;
        const bool isDone = addAll() && checkNames() && applyDeadbands() && applyWritable();
        if (!isDone)
            return Error{
                QStringLiteral("device %1: %2").arg(values::quoted(m_settings.name), m_problem)};
        return m_result;
    }

private:
    bool fail(const QString& problem)
    {
        m_problem = problem;
        return false;
    }

    bool addAll()
    {
        for (const QString& text : m_settings.labels) {
            if (!addLabels(text))
                return false;
        }
        if (!m_settings.labels.isEmpty())
            return true;
        for (const CyclicLabel& label : m_project.cyclic) {
            if (!add(m_points.find(label.label, label.elements, label.station)))
                return false;
        }
        if (metrics().isEmpty())
            return fail(QStringLiteral("its project reads nothing all the time; name \"labels\""));
        return true;
    }

    bool addLabels(const QString& text)
    {
        const Expected<QStringList> labels = m_expander.expand(text);
        if (!labels)
            return fail(labels.error().text);
        for (const QString& label : *labels) {
            if (!add(m_points.find(label)))
                return false;
        }
        return true;
    }

    bool add(const Expected<DataPoint>& point)
    {
        if (!point)
            return fail(point.error().text);
        if (m_places.hasLabel(point->text))
            return true;
        if (metrics().size() == kMostMetrics)
            return fail(
                QStringLiteral("it has more than %1 values; name fewer labels").arg(kMostMetrics));
        m_places.append(point->text);
        Metric metric;
        metric.point = *point;
        metric.name = metricName(*point);
        metrics().append(metric);
        return true;
    }

    /// Consumers know values by their names alone.
    bool checkNames()
    {
        QHash<QString, int> folded;
        QHash<QString, int> exact;
        for (int i = 0; i < int(metrics().size()); ++i) {
            const QString name = metrics()[i].name;
            const QString label = metrics()[i].point.text;
            if (name.contains(QLatin1Char('+')) || name.contains(QLatin1Char('#')))
                return fail(QStringLiteral("%1 has a + or a #, which names of values must not have")
                                .arg(label));
            const int same = exact.value(name, -1);
            const int similar = folded.value(name.toCaseFolded(), -1);
            if (same >= 0)
                return fail(QStringLiteral("%1 and %2 would both be called %3")
                                .arg(metrics()[same].point.text, label, name));
            if (similar >= 0)
                warn(similar, i);
            exact.insert(name, i);
            folded.insert(name.toCaseFolded(), i);
        }
        return true;
    }

    void warn(int one, int other)
    {
        m_result.warnings.append(
            QStringLiteral("device %1: %2 and %3 differ only in upper and lower case, which some "
                           "consumers do not tell apart")
                .arg(values::quoted(m_settings.name), metrics()[one].name, metrics()[other].name));
    }

    bool applyDeadbands()
    {
        for (const configuration::DeadbandRule& settings : m_settings.deadbands) {
            const Expected<QVector<int>> places = m_places.fitting(settings.labels);
            if (!places)
                return fail(QStringLiteral("deadband: %1").arg(places.error().text));
            bool hasNumber = false;
            for (int place : *places) {
                if (!values::isNumeric(*metrics()[place].point.type))
                    continue;
                metrics()[place].deadband = settings.deadband;
                hasNumber = true;
            }
            if (!hasNumber)
                return fail(QStringLiteral("deadband: %1 fits no number").arg(settings.labels));
        }
        return true;
    }

    bool applyWritable()
    {
        if (!m_settings.writable.isEmpty() && m_project.settings.readOnly)
            return fail(QStringLiteral("writable: its project is read-only"));
        for (const configuration::WritableRule& settings : m_settings.writable) {
            const Expected<QVector<int>> places = m_places.fitting(settings.labels);
            if (!places)
                return fail(QStringLiteral("writable: %1").arg(places.error().text));
            for (int place : *places) {
                if (!applyWritable(settings, &metrics()[place]))
                    return false;
            }
        }
        return true;
    }

    bool applyWritable(const configuration::WritableRule& settings, Metric* metric)
    {
        const Expected<void> checked =
            configuration::checkLimits(settings, metric->point.text, *metric->point.type);
        if (!checked)
            return fail(QStringLiteral("writable: %1").arg(checked.error().text));
        metric->isWritable = true;
        metric->limits = settings.limits();
        return true;
    }

    QVector<Metric>& metrics() { return m_result.device.metrics; }

    const DeviceSettings& m_settings;
    const project::Project& m_project;
    const host::DataPointFinder& m_points;
    project::LabelExpander m_expander;
    configuration::LabelPlaces m_places; ///< Of the metrics, by DataPoint::text.
    DevicePoints m_result;
    QString m_problem;
};

} // namespace

Expected<DevicePoints> devicePoints(const DeviceSettings& settings, const project::Project& project,
                                    const host::DataPointFinder& points)
{
    return DeviceBuilder(settings, project, points).build();
}

} // namespace plc::gateway
