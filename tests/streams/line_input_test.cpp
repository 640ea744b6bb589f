#include "streams/line_input.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QStringList>

#include "tests/support/qt_printers.h"

namespace plc::streams {
namespace test {
namespace {

class LineInputTest : public ::testing::Test {
protected:
    ~LineInputTest() override
    {
        close();
        ::close(m_pipe.ends[0]);
    }

    void send(const QByteArray& bytes)
    {
        EXPECT_EQ(ssize_t(bytes.size()),
                  ::write(m_pipe.ends[1], bytes.constData(), size_t(bytes.size())));
        while (isReadable())
            QCoreApplication::processEvents();
    }
    void close()
    {
        if (m_pipe.ends[1] >= 0)
            ::close(m_pipe.ends[1]);
        m_pipe.ends[1] = -1;
        QCoreApplication::processEvents();
    }

    struct Pipe {
        Pipe() { EXPECT_EQ(0, ::pipe(ends)); }
        int ends[2];
    };

    Pipe m_pipe;
    QStringList m_lines;
    int m_refused = 0;

private:
    bool isReadable() const
    {
        int bytes = 0;
        return ::ioctl(m_pipe.ends[0], FIONREAD, &bytes) == 0 && bytes > 0;
    }

    int m_count = 1;
    char m_program[5] = "test";
    char* m_arguments[2] = {m_program, nullptr};
    QCoreApplication m_application{m_count, m_arguments};

protected:
    LineInput m_input{m_pipe.ends[0], [this](const QString& line) { m_lines.append(line); },
                      [this] { ++m_refused; }};
};

TEST_F(LineInputTest, GivesLinesAsTheyCome)
{
    send("one\ntw");
    EXPECT_EQ(QStringList{"one"}, m_lines);
    send("o\n");
    EXPECT_EQ((QStringList{"one", "two"}), m_lines);
}

TEST_F(LineInputTest, WhatStandsBehindTheLastLineEndIsALineToo)
{
    send("stop");
    EXPECT_TRUE(m_lines.isEmpty());
    close();
    EXPECT_EQ(QStringList{"stop"}, m_lines);
}

TEST_F(LineInputTest, LeavesOutALineThatIsTooLongAndGoesOnBehindIt)
{
    for (int i = 0; i <= kLongestInputLine / 4096; ++i)
        send(QByteArray(4096, 'x'));
    EXPECT_EQ(1, m_refused);
    send("rest\nnext\n");
    EXPECT_EQ(QStringList{"next"}, m_lines);
}

} // namespace
} // namespace test
} // namespace plc::streams
