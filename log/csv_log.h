#ifndef PLC_LOG_CSV_LOG_H
#define PLC_LOG_CSV_LOG_H

#include <QtCore/QByteArray>

#include <memory>

#include "log/log_writer.h"

namespace plc::log {

/// When a log goes on in a new file, and how many of the older ones stay.
struct LogRotation {
    qint64 size = 0;   ///< Bytes that a file may have; 0: any number.
    qint64 period = 0; ///< ms from the first record of a file to those of the next; 0: without end.
    int keep = 0;      ///< Older files; 0: all.
};

/// A log as comma-separated values: a line with the names of the columns and a line for each
/// record.
///
/// A program that is killed, or a disk that is full, may leave half a line at the end. It is cut
/// off when the log goes on, so that there never is one in the middle.
class CsvLog : public LogWriter {
public:
    /// Begins a log, or goes on with it where the file exists. A file that is no log is
    /// left as it is. `isMediumFailing`, unless null, tells whether an error came because nothing
    /// could be written, and not because of the path.
    static Expected<std::unique_ptr<CsvLog>> open(const QString& path, const LogRotation& rotation,
                                                  bool* isMediumFailing = nullptr);
    ~CsvLog() override;
    CsvLog(const CsvLog&) = delete;
    CsvLog& operator=(const CsvLog&) = delete;

    /// Bytes of half a line that were cut off when the log was opened.
    qint64 cutBytes() const { return m_cutBytes; }

    Expected<void> write(const QVector<LogRecord>& records) override;

private:
    CsvLog(const QString& path, const LogRotation& rotation) : m_path(path), m_rotation(rotation) {}

    Expected<void> openFile();
    Expected<void> lock();
    Expected<void> begin();
    Expected<void> goOn();
    Expected<void> append(const QByteArray& bytes);
    bool mustRotate(const LogRecord& record, qint64 bytes) const;
    Expected<void> rotate();
    Error failure(const QString& what) const;

    const QString m_path;
    const LogRotation m_rotation;
    int m_file = -1;
    qint64 m_size = 0;       ///< Bytes of whole lines in the file.
    qint64 m_firstTime = -1; ///< Of the file's first record; -1 while there is none.
    qint64 m_cutBytes = 0;
    bool m_isMediumFailing = false;
};

/// The name that a file gets when the log goes on in a new one: the number that tells its place
/// among them, counted from 1, and the time of its first record:
/// "plant.000001.20261121T060000123Z.csv".
QString rotatedName(const QString& path, qint64 number, qint64 firstTime);

} // namespace plc::log

#endif
