#ifndef PLC_TESTS_THREADS_SCRIPTED_PLC_H
#define PLC_TESTS_THREADS_SCRIPTED_PLC_H

#include <QtCore/QByteArray>

#include <map>
#include <utility>

#include "support/random.h"

namespace plc::test {

/// A PLC in memory that answers request frames, and now and then does not. Used by one thread.
class ScriptedPlc {
public:
    explicit ScriptedPlc(std::uint32_t seed) : m_random(seed) {}

    /// One request in this many gets no answer, and as many a refusal; 0: all are served.
    void setFaultsOneIn(int requests) { m_faultsOneIn = requests; }

    /// The reply to a request frame; empty when none comes.
    QByteArray answer(const QByteArray& request);

    /// The bytes of its memory from `address` on.
    QByteArray memory(int area, int address, int length) const;

private:
    QByteArray read(const QByteArray& request) const;
    void write(const QByteArray& request);

    test::Random m_random;
    int m_faultsOneIn = 0;
    std::map<std::pair<int, int>, char> m_memory;
};

} // namespace plc::test

#endif
