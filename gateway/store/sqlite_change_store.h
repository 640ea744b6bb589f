#ifndef PLC_GATEWAY_STORE_SQLITE_CHANGE_STORE_H
#define PLC_GATEWAY_STORE_SQLITE_CHANGE_STORE_H

#include "gateway/store/change_database.h"

namespace plc::gateway {

/// Changes in an SQLite database. Whatever append() has returned for outlives the end of the
/// process, however it ends; what the last seconds before a loss of power brought may be lost.
///
/// Database and journal together take `sizeLimit` bytes at most, and beyond it no more than twice
/// the bytes of the largest single append(). When they are full, the oldest changes make room,
/// about a thirtieth of all, or less of a large store, at a time.
///
/// For one thread.
class SqliteChangeStore : public ChangeStore {
public:
    static constexpr qint64 kSmallestLimit = kSmallestStore;

    /// Creates the file if it does not exist. A damaged one is set aside, see takeNotice(). Where
    /// the disk has no room for it, see problem(). An error: it cannot be created or read, another
    /// process has it open, or it is something else.
    /// A limit below kSmallestLimit is taken for that.
    static Expected<std::unique_ptr<SqliteChangeStore>> open(const QString& path, qint64 sizeLimit);

    /// How many seconds open() takes at most, which reads all of the file, and writes it anew where
    /// it has become smaller than it is: on a disk of 2 MB a second.
    static qint64 longestOpening(const QString& path);

    Expected<void> append(const QVector<StoredChange>& changes) override;
    QVector<StoredChange> oldest(qint64 behind, int count) override;
    void removeUpTo(qint64 number) override;
    void removeRange(qint64 first, qint64 last) override;
    qint64 last() const override { return m_books.state.last; }
    quint64 size() const override { return quint64(m_books.count - m_consumedRows); }
    void countDropped(quint64 changes) override;
    quint64 dropped() const override { return m_books.state.dropped; }
    int takeSessionNumber() override;

    /// Why there is no file; empty: there is. Until there is one, it has no changes and takes none.
    const QString& problem() const { return m_problem; }
    /// Opens the file where that failed. To be called now and then.
    void tryAgain();
    /// What an operator should know, one line: that a damaged file was set aside, or that the
    /// store cannot be read. Empty: nothing. Each is told once; ask after open() and now and then.
    QString takeNotice();

private:
    /// What a transaction changes; taken over when it has succeeded.
    struct Books {
        StoreState state;
        qint64 count = 0; ///< Of the changes in the file.
    };

    SqliteChangeStore(const QString& path, qint64 sizeLimit);

    Expected<void> openDatabase();
    Expected<void> openAndFit();
    ChangeDatabase::Opening openFile();
    Expected<void> setAside(const QString& reason, std::optional<qint64> changes);
    Error failed();
    /// Runs `work(Books*)`, which returns whether it succeeded, as one transaction.
    template <typename Work>
    Expected<void> transact(Work work);
    template <typename Work>
    bool attempt(Work work);
    Expected<void> removeConsumed();
    qint64 blockBytes() const;
    void tellOnce(const QString& failure);
    bool makeRoom(qint64 pages, Books* books);
    int firstThatFits(const QVector<StoredChange>& changes, qint64 pages) const;
    bool insert(const QVector<StoredChange>& changes, Books* books);

    QString m_path;
    StoreLimits m_limits;
    std::unique_ptr<ChangeDatabase> m_database; ///< Null while there is none.
    Books m_books;
    bool m_isStateKnown = false;
    qint64 m_consumed = 0;     ///< Up to here changes are at the broker.
    qint64 m_consumedRows = 0; ///< Of these the ones that the disk did not let go of.
    QString m_problem;
    bool m_isMediumFailing = false; ///< When it was opened.
    QString m_notice;
    QString m_toldFailure; ///< Empty since the last success.
};

} // namespace plc::gateway

#endif
