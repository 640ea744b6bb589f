#include "driver/stations.h"

#include "driver/Communication_Protocol.h"

void EnCommStation(int station, int enable)
{
    QMutexLocker lock(&PLC_driver.stationMutex);
    QMap<int, int>& off = PLC_driver.disabledStations;
    if (station < 0)
        off.clear();
    else if (enable == PLC_STATION_OFF && !off.contains(station))
        off.insert(station, 0);
    else if (enable == PLC_STATION_ON)
        off.remove(station);
}

void EnableEthernet(int station, int enable)
{
    EnCommStation(station, enable);
}

int Ethernetcontains(int station)
{
    QMutexLocker lock(&PLC_driver.stationMutex);
    return PLC_driver.disabledStations.contains(station) ? 1 : 0;
}
