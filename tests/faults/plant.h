#ifndef PLC_TESTS_FAULTS_PLANT_H
#define PLC_TESTS_FAULTS_PLANT_H

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QVector>

#include "project/project.h"
#include "support/random.h"
#include "values/value_text.h"

namespace plc::faults {

/// Settings of the host, in milliseconds where they are times.
struct HostSettings {
    int maxReadBytes = 200;
    int retryLimit = 2;
    int connectTimeout = 100;
    int replyTimeout = 80;
    int reconnectDelay = 5;
    int reconnectDelayLimit = 40;
    int staleAfter = 60000;
};

/// With read sizes and retries of which each run has others.
HostSettings randomSettings(test::Random* random);

/// An array of the plant and where its first element lies in the PLC's memory, by hand.
struct Array {
    const char* name;
    enum Type { Bit, Word, Long } type;
    int area;
    int address; ///< In bytes.
    int elements;
};
/// Of the plant behind a faulty wire. Its values take several requests, some of which ask for
/// equally many bytes.
extern const QVector<Array> kArrays;
/// Of the plant whose memory is another one in each reply: values on both sides of every place
/// where a merged range may be cut, as large as one request carries and larger.
extern const QVector<Array> kStampedArrays;

/// The project file of a plant with these arrays, all of which are read cyclically.
QByteArray projectJson(const HostSettings& settings, const QVector<Array>& arrays);
project::Project projectOf(const HostSettings& settings, const QVector<Array>& arrays);

/// All elements of an array as the host names them.
QString wholeArray(const Array& array);
/// What the host has to show of an array when the PLC's memory from its address on is this.
QVector<values::Value> expectedValues(const Array& array, const QByteArray& memory);
/// Bytes of PLC memory that an array takes.
int memorySize(const Array& array);
/// The same as the PLC's bytes, the other way round than expectedValues().
QByteArray memoryOf(const Array& array, const QVector<values::Value>& values);

/// Part of a value that a write request carries.
struct WritePiece {
    int area;
    quint32 address; ///< In bits for a bit.
    bool isBit;
    QByteArray data;
};

/// A write to try: what the host is told, and what has to reach the PLC.
struct PlannedWrite {
    QString target; ///< As the host names it.
    QVector<values::Value> values;
    QVector<WritePiece> pieces;
    int elementSize = 0; ///< In bytes; of a bit, which has one byte of data, 1.
    /// Nothing else in the run writes these bytes.
    bool isUnmistakable = false;
};

/// Any write to an array that both plants have; `number` marks its value.
PlannedWrite anyWrite(test::Random* random, int number);
/// Writes to each kind of place, with values marked by the numbers from `number` on.
QVector<PlannedWrite> writesOfEachKind(int number);

} // namespace plc::faults

#endif
