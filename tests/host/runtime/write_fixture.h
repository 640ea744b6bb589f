#ifndef PLC_TESTS_HOST_RUNTIME_WRITE_FIXTURE_H
#define PLC_TESTS_HOST_RUNTIME_WRITE_FIXTURE_H

#include "tests/host/host_fixture.h"

namespace plc::host {
namespace test {

/// Nothing is read cyclically, so that each request carries what the test queues.
class WriteTest : public HostTest {
protected:
    void connectAndLogInFor(const char* label, const char* value)
    {
        connect();
        write(label, value);
        logIn();
    }
    /// The entries of the request that went out.
    QVector<FrameEntry> entries() { return parseRequest(request()).entries; }
    /// Answers requests until the first one-shot read is settled, and calls `before` each. Returns
    /// how many of them were writes.
    template <typename Before>
    int writesUntilRead(Before before)
    {
        int writeRequests = 0;
        for (int i = 0; i < 100 && reads.empty(); ++i) {
            before();
            const RequestContent content = parseRequest(request());
            const bool isWrite = content.service == Service::Write;
            writeRequests += isWrite ? 1 : 0;
            answer(isWrite ? writeReply()
                           : readReply({QByteArray(int(content.entries[0].length), '\5')}));
        }
        return writeRequests;
    }
    std::vector<std::string> settledLabels() const
    {
        std::vector<std::string> labels;
        for (const Settled& write : writes)
            labels.push_back(write.label.toStdString());
        return labels;
    }
};

} // namespace test
} // namespace plc::host

#endif
