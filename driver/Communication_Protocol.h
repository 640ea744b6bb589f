#ifndef PLC_DRIVER_COMMUNICATION_PROTOCOL_H
#define PLC_DRIVER_COMMUNICATION_PROTOCOL_H

#include <QtCore/QHash>
#include <QtCore/QMap>
#include <QtCore/QMutex>

#include "driver/plc_driver.h"
#include "image/data_image.h"
#include "symbols/label_resolution.h"
#include "symbols/symbol_index.h"

namespace plc {

/// Entries that a batch can hold.
const int kBatchCapacity = PLC_MOST_WRITE_ENTRIES;

/// `result` of the head of the cyclic list from its issue until it is settled.
const int kIssued = -1;

/// Which list the last batch was taken from.
enum BatchKind {
    kCyclicRead = 0,
    kWrite = 1,
    kOneShotRead = 2,
    /// Matches no list, so that a reply before any batch settles none.
    kNoBatch = 100
};

} // namespace plc

/// All state of the driver. The library holds one object of it, PLC_driver.
///
/// `listMutex` guards the variable lists and the batch, `dataMutex` the image, `stationMutex` the
/// switched-off stations. `listMutex` may be held when one of the others is taken, never the other
/// way round. Members that no mutex guards belong to the communication thread, or are written
/// during set-up only.
class Communication_Protocol {
public:
    Communication_Protocol() : labels(symbolTable, symbolIndex) {}

    ComInfo* settings = nullptr; ///< Owned by the host; null until it is handed over.
    QList<RW_VAR> readList;  ///< Cyclic reads; the head is next, a settled batch goes to the end.
    QList<RW_VAR> writeList; ///< Pending writes.
    QList<RW_VAR> onceReadList;   ///< One-shot reads.
    QList<RW_VAR> spareList;      ///< Held for hosts; not used.
    QList<Protocol> requestQueue; ///< Frames of the transaction under way; the head is sent next.
    QList<EXTENDVAR> extendList;  ///< Held for hosts; not used.
    PlcResultCallback resultCallback = nullptr;
    PlcFailureCallback failureCallback = nullptr;
    QMutex listMutex;
    QMutex dataMutex;
    QMutex stationMutex;
    QMap<int, int> disabledStations;   ///< Keys: stations switched off; the values are always 0.
    RW_VAR reply;                      ///< What DataCom() returns.
    int lastKind = plc::kNoBatch;      ///< A plc::BatchKind.
    int writeTries = 0;                ///< Write batches in a row.
    int onceTries = 0;                 ///< One-shot read batches in a row.
    int cycleCount = 0;                ///< Local transactions completed since the last full pass.
    quint8 failed = 0;                 ///< 1 from a final failure to the next good reply.
    quint8 spareFlag = 0;              ///< Not used.
    int loggedIn = 0;                  ///< Not 0 after the login.
    int batchCount = 0;                ///< Entries of `batch` that belong to the current batch.
    quint8 plcInfo1 = 0;               ///< Byte 25 of the second login reply; ends every request.
    quint8 plcInfo2 = 0;               ///< Byte 24 of the second login reply; ends every request.
    RW_VAR batch[plc::kBatchCapacity]; ///< The current batch; entry 0 is its head.
    plc::SymbolTable symbolTable;      ///< Top-level records by name.
    plc::DataImage localImage;         ///< PLC memory as last read or written.
    plc::SymbolIndex symbolIndex;    ///< Finds the variables of `symbolTable`; follows its filling.
    const plc::LabelResolver labels; ///< Resolves labels against these two.

private:
    Q_DISABLE_COPY(Communication_Protocol)
};

/// The driver object: made when the library is loaded, destroyed when it is unloaded.
PLC_DRIVER_EXPORT extern Communication_Protocol PLC_driver;

namespace plc {

/// Entries of the current batch, within the bounds of the array whatever the counter says.
inline int batchSize()
{
    return qBound(0, PLC_driver.batchCount, kBatchCapacity);
}

} // namespace plc

#endif
