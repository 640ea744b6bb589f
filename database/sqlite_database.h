#ifndef PLC_DATABASE_SQLITE_DATABASE_H
#define PLC_DATABASE_SQLITE_DATABASE_H

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <atomic>
#include <memory>
#include <optional>

struct sqlite3;
struct sqlite3_stmt;

namespace plc::database {

/// An SQLite database in a file. Each call that fails returns false and leaves its reason in
/// error(), which begins with the file's name.
class SqliteDatabase {
public:
    SqliteDatabase() = default;
    ~SqliteDatabase();
    SqliteDatabase(const SqliteDatabase&) = delete;
    SqliteDatabase& operator=(const SqliteDatabase&) = delete;

    /// Creates the file if `create` and it does not exist.
    bool open(const QString& path, bool create);
    /// No statement is left of it. Without a file all calls fail.
    void close();
    /// Carries out statements that give no rows.
    bool execute(const char* statements);
    /// The number in the first column of the first row.
    std::optional<qint64> number(const char* query);

    /// What runs fails soon, and all statements from now on do at once. For any thread, as long as
    /// this object is there and open.
    void interrupt();
    bool isInterrupted() const { return m_isInterrupted; }

    QString error() const;
    /// Whether the last call failed because the disk is full or does not work.
    bool isMediumFailing() const;
    /// Whether the last call failed because the file is no database, or a damaged one.
    bool isDamaged() const;
    /// Whether the last call failed because another process holds the database.
    bool isHeldByAnother() const;
    /// The file grows by so many bytes at a time.
    void growInSteps(int bytes);
    /// Makes the file at least so large on the disk, also where nothing uses all of it yet. Returns
    /// false if the disk is full; error() does not tell that.
    bool reserve(qint64 bytes);
    /// Rows that the last statement changed.
    int changedRows() const;
    /// Number of the row that was inserted last.
    qint64 insertedRow() const;
    sqlite3* handle() const { return m_handle; }

private:
    QString m_path;
    sqlite3* m_handle = nullptr;
    std::atomic<bool> m_isInterrupted{false};
};

/// A prepared statement of a database that outlives it, whose parameters and columns count from 0.
class SqliteStatement {
public:
    SqliteStatement(SqliteDatabase& database, const char* statement);
    ~SqliteStatement();
    SqliteStatement(const SqliteStatement&) = delete;
    SqliteStatement& operator=(const SqliteStatement&) = delete;

    bool isPrepared() const { return bool(m_handle); }

    SqliteStatement& bind(int parameter, const QString& text);
    SqliteStatement& bind(int parameter, qint64 number);
    SqliteStatement& bind(int parameter, const std::optional<double>& number);
    /// Bytes, which may be none, but are never null.
    SqliteStatement& bind(int parameter, const QByteArray& bytes);

    enum Step { Row, Done, Failed };
    /// Goes on to the next row, or to the end, behind which the statement is ready to run again.
    Step step();
    /// Makes it ready to run again before its end.
    void reset();

    QString text(int column) const;
    qint64 number(int column) const;
    double real(int column) const;
    QByteArray bytes(int column) const;

private:
    const SqliteDatabase& m_database;
    sqlite3_stmt* m_handle = nullptr;
};

} // namespace plc::database

#endif
