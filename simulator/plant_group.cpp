#include "simulator/plant_group.h"

namespace plc::simulator {

PlantGroup::PlantGroup(const project::Project& project, const Options& options,
                       std::function<void()> stop)
    : m_options(options), m_projectPort(project.port)
{
    for (int number = 1; number <= options.plants; ++number)
        m_plants.push_back(std::make_unique<SimulatedPlant>(project, options, number, stop));
}

Expected<void> PlantGroup::listen()
{
    const quint16 first = m_options.port.value_or(m_projectPort);
    for (size_t i = 0; i < m_plants.size(); ++i) {
        const size_t port = first == 0 ? 0 : first + i;
        if (port > kHighestPort)
            return Error{QStringLiteral("there is no port %1; begin with a lower one").arg(port)};
        const Expected<void> listens =
            m_plants[i]->server().listen(m_options.address, quint16(port));
        if (!listens)
            return listens.error();
    }
    return {};
}

QString PlantGroup::execute(const QString& line)
{
    const QStringList words = line.simplified().split(QLatin1Char(' '));
    if (words.first() == QLatin1String("plant") && words.size() == 2)
        return choose(words.last());
    QString answer = m_plants[m_chosen]->commands().execute(line);
    const bool hasOthers = m_plants.size() > 1;
    if (words.first() == QLatin1String("help") && hasOthers)
        return answer + QStringLiteral("\nplant N: what follows is for plant number N");
    return answer;
}

QString PlantGroup::choose(const QString& number)
{
    const uint chosen = number.toUInt();
    if (chosen < 1 || chosen > m_plants.size())
        return QStringLiteral("error: expected a plant from 1 to %1").arg(m_plants.size());
    m_chosen = chosen - 1;
    return QStringLiteral("ok");
}

} // namespace plc::simulator
