#ifndef PLC_DOCS_EXAMPLES_ENTRY_POINTS_H
#define PLC_DOCS_EXAMPLES_ENTRY_POINTS_H

#include <QtCore/QHash>
#include <QtCore/QPair>
#include <QtCore/QStringList>

#include "plc_driver.h"

namespace example {

/// Outcome of the requests that are finished, by category and operation tag: true is done.
extern QHash<QPair<int, int>, bool> finished;
/// Set by the failure callback, cleared by whoever acts on it.
extern bool transactionWasAbandoned;
extern ComInfo settings;

QList<Label_Type_Info> plantSymbols();

void handOverSettings();
void handOverCallbacks();
void handOverSymbols();
void** handOverMemories(void* bits, void* words, void* indexed);
bool isFinished();
void switchAllStationsOn();
QStringList unknownLabels(const QStringList& labels);
int readCyclically(const QStringList& labels);
int readRangeCyclically(int area, int address, int bytes);
int readOnce(const QString& label, int count, int tag);
int writeRange(int area, int address, const QByteArray& bytes, int tag);
void switchStation(int station, bool on);
quint16 speed();
float flow(int pump);
QString name();
bool isRunning();
void setSpeed(quint16 value, int tag);
void setState(int pump, quint8 value, int tag);
void setRunning(bool on, int tag);

} // namespace example

#endif
