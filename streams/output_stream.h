#ifndef PLC_STREAMS_OUTPUT_STREAM_H
#define PLC_STREAMS_OUTPUT_STREAM_H

#include <QtCore/QByteArray>
#include <QtCore/QString>

namespace plc::streams {

/// A file that is written through its descriptor, such as the standard output. What is written has
/// left the program when the call returns.
class OutputStream {
public:
    /// The descriptor stays open when the stream goes.
    explicit OutputStream(int descriptor) : m_descriptor(descriptor) {}

    /// Writes all bytes; waits for a reader that is slow. Returns false when they cannot be
    /// written; nothing is written any more from then on.
    bool write(const QByteArray& bytes);
    /// Closes the descriptor, where some file systems tell what they could not keep. Returns false
    /// when anything was not written.
    bool close();
    /// What went wrong; empty while all could be written.
    const QString& error() const { return m_error; }

private:
    const int m_descriptor;
    QString m_error;
};

/// To be called before anything else is opened: a closed pipe and a file that may not get larger
/// are told by the call that writes to them and end no program, and no file gets the number of a
/// standard stream that the program was started without.
void secureStandardStreams();

} // namespace plc::streams

#endif
