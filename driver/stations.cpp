#include "stations.h"

#include "Communication_Protocol.h"

void EnCommStation(int station, int enable)
{
    const int kOff = 0;
    const int kOn = 1;

    QMutexLocker lock(&PLC_driver.stationMutex);
    if (station < 0)
        PLC_driver.disabledStations.clear();
    else if (enable == kOff)
        PLC_driver.disabledStations.insert(station, 0);
    else if (enable == kOn)
        PLC_driver.disabledStations.remove(station);
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
