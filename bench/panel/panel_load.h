#ifndef PLC_BENCH_PANEL_PANEL_LOAD_H
#define PLC_BENCH_PANEL_PANEL_LOAD_H

#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>

namespace plc::bench {

/// A simulated PLC whose values all change once a second, and a panel that reads and records them
/// once a second, with an audit. Values 1 to 100 of "Load.set" may be written.
class PanelLoad {
public:
    /// `panel`: the program that is measured.
    explicit PanelLoad(int values, const QString& panel = QStringLiteral(PLC_PANEL));
    ~PanelLoad();

    void start();

    quint16 port() const { return m_port; }
    qint64 panel() const { return m_panel.processId(); }
    /// Requests that the PLC has had.
    qint64 requests();

    /// The answer to a request without events; its body.
    QByteArray ask(const QByteArray& method, const QByteArray& target,
                   const QByteArray& body = {}) const;
    /// The address of a page that shows `count` values from number `first` (from 1) on.
    QString page(int first, int count) const;
    /// Event streams that the panel sends.
    int streams() const;
    /// The id of a subscription to `count` values from number `first` (from 1) on.
    QByteArray subscribe(int first, int count) const;

private:
    QString file(const char* name, const QByteArray& content) const;
    static QByteArray lineOf(QProcess* process);

    const int m_values;
    const QString m_program;
    const QTemporaryDir m_folder;
    QProcess m_simulator;
    QProcess m_panel;
    quint16 m_port = 0;
};

} // namespace plc::bench

#endif
