#ifndef PLC_STREAMS_INPUT_FILE_H
#define PLC_STREAMS_INPUT_FILE_H

#include <QtCore/QByteArray>

#include "values/expected.h"

namespace plc::streams {

/// What a file that users name is to be.
struct InputFileKind {
    const char* expected; ///< "a project file"
    qint64 mostBytes;     ///< A whole number of MiB.
    const char* advice;   ///< What is said of one that has more: "a project file has less"; or "".
};

/// The bytes of a file, also of a pipe. An error names it.
Expected<QByteArray> readInputFile(const QString& path, const InputFileKind& kind);

/// Whether bytes that came another way are not too many; `name` stands for the file.
Expected<void> checkInputSize(const QByteArray& bytes, const QString& name,
                              const InputFileKind& kind);

} // namespace plc::streams

#endif
