#ifndef PLC_TESTS_MODEL_DIFFERENCES_H
#define PLC_TESTS_MODEL_DIFFERENCES_H

#include <sstream>
#include <string>

#include "driver/Communication_Protocol.h"
#include "model/records.h"

namespace plc::model {

/// Compares what the model expects with what the driver has, and tells each difference in a line or
/// a few.
class Differences {
public:
    void clear() { m_text.str(std::string()); }
    /// All since clear(); empty without any.
    std::string text() const { return m_text.str(); }

    template <typename Expected, typename Actual>
    void check(const char* what, const Expected& expected, const Actual& actual)
    {
        if (Actual(expected) == actual)
            return;
        m_text << what << ": model ";
        show(expected);
        m_text << ", driver ";
        show(actual);
        m_text << '\n';
    }
    void checkRecord(const char* what, const Variable& expected, const RW_VAR& actual);
    void checkList(const char* what, const std::vector<Variable>& expected,
                   const QList<RW_VAR>& actual);
    void checkRequest(int index, const Request& expected, const Protocol& actual);
    /// For a difference in words of its own; they end with a newline.
    std::ostream& add() { return m_text; }

private:
    void show(const QByteArray& text) { m_text << text.constData(); }
    template <typename Number>
    void show(const Number& number)
    {
        m_text << number;
    }

    std::ostringstream m_text;
};

} // namespace plc::model

#endif
