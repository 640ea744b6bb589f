#ifndef PLC_BENCH_PANEL_BROWSERS_H
#define PLC_BENCH_PANEL_BROWSERS_H

#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>

#include <memory>
#include <vector>

namespace plc::bench {

/// Chromium without a window, one for each page: pages of one browser share six connections.
class Browsers {
public:
    Browsers() = default;
    ~Browsers();
    Browsers(const Browsers&) = delete;
    Browsers& operator=(const Browsers&) = delete;

    /// Empty where there is no Chromium.
    static QString program();

    void open(const QString& address);

private:
    const QTemporaryDir m_folder;
    std::vector<std::unique_ptr<QProcess>> m_processes;
};

} // namespace plc::bench

#endif
