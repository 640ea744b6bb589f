#include "database/sqlite_database.h"

#include <sqlite3.h>

#include <QtCore/QFile>

#include <cerrno>
#include <cstring>

namespace plc::database {
namespace {

/// Others that have the database open hold it for moments only.
constexpr int kBusyTimeout = 1000; // ms

} // namespace

SqliteDatabase::~SqliteDatabase()
{
    close();
}

bool SqliteDatabase::open(const QString& path, bool create)
{
    m_path = path;
    const int flags = SQLITE_OPEN_READWRITE | (create ? SQLITE_OPEN_CREATE : 0);
    const QByteArray name = QFile::encodeName(path);
    if (::sqlite3_open_v2(name.constData(), &m_handle, flags, nullptr) != SQLITE_OK)
        return false;
    ::sqlite3_busy_timeout(m_handle, kBusyTimeout);
    return true;
}

void SqliteDatabase::close()
{
    ::sqlite3_close(m_handle);
    m_handle = nullptr;
}

bool SqliteDatabase::execute(const char* statements)
{
    return ::sqlite3_exec(m_handle, statements, nullptr, nullptr, nullptr) == SQLITE_OK;
}

std::optional<qint64> SqliteDatabase::number(const char* query)
{
    SqliteStatement statement(*this, query);
    if (!statement.isPrepared() || statement.step() != SqliteStatement::Row)
        return {};
    return statement.number(0);
}

void SqliteDatabase::interrupt()
{
    m_isInterrupted = true;
    ::sqlite3_interrupt(m_handle);
}

QString SqliteDatabase::error() const
{
    if (m_isInterrupted)
        return QStringLiteral("%1: interrupted").arg(m_path);
    QString text =
        QStringLiteral("%1: %2").arg(m_path, QString::fromUtf8(::sqlite3_errmsg(m_handle)));
    const int reason = ::sqlite3_system_errno(m_handle);
    const int result = ::sqlite3_errcode(m_handle);
    const bool isOfSystem = result == SQLITE_CANTOPEN || result == SQLITE_IOERR;
    if (isOfSystem && reason != 0)
        text += QStringLiteral(" (%1)").arg(QString::fromLocal8Bit(std::strerror(reason)));
    return text;
}

bool SqliteDatabase::isMediumFailing() const
{
    const int result = ::sqlite3_errcode(m_handle);
    const int reason = ::sqlite3_system_errno(m_handle);
    const bool isFileRefused = result == SQLITE_CANTOPEN && (reason == ENOSPC || reason == EDQUOT);
    return result == SQLITE_FULL || result == SQLITE_IOERR || isFileRefused;
}

bool SqliteDatabase::isDamaged() const
{
    const int result = ::sqlite3_errcode(m_handle);
    return result == SQLITE_CORRUPT || result == SQLITE_NOTADB;
}

bool SqliteDatabase::isHeldByAnother() const
{
    const int result = ::sqlite3_errcode(m_handle);
    return result == SQLITE_BUSY || result == SQLITE_LOCKED;
}

void SqliteDatabase::growInSteps(int bytes)
{
    ::sqlite3_file_control(m_handle, "main", SQLITE_FCNTL_CHUNK_SIZE, &bytes);
}

bool SqliteDatabase::reserve(qint64 bytes)
{
    sqlite3_int64 size = bytes;
    return ::sqlite3_file_control(m_handle, "main", SQLITE_FCNTL_SIZE_HINT, &size) == SQLITE_OK;
}

int SqliteDatabase::changedRows() const
{
    return ::sqlite3_changes(m_handle);
}

qint64 SqliteDatabase::insertedRow() const
{
    return ::sqlite3_last_insert_rowid(m_handle);
}

SqliteStatement::SqliteStatement(SqliteDatabase& database, const char* statement)
    : m_database(database)
{
    ::sqlite3_prepare_v2(database.handle(), statement, -1, &m_handle, nullptr);
}

SqliteStatement::~SqliteStatement()
{
    ::sqlite3_finalize(m_handle);
}

SqliteStatement& SqliteStatement::bind(int parameter, const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    ::sqlite3_bind_text(m_handle, parameter + 1, bytes.constData(), int(bytes.size()),
                        SQLITE_TRANSIENT);
    return *this;
}

SqliteStatement& SqliteStatement::bind(int parameter, qint64 number)
{
    ::sqlite3_bind_int64(m_handle, parameter + 1, number);
    return *this;
}

SqliteStatement& SqliteStatement::bind(int parameter, const std::optional<double>& number)
{
    if (number)
        ::sqlite3_bind_double(m_handle, parameter + 1, *number);
    else
        ::sqlite3_bind_null(m_handle, parameter + 1);
    return *this;
}

SqliteStatement& SqliteStatement::bind(int parameter, const QByteArray& bytes)
{
    // Of a null pointer SQLite would make NULL.
    const char* begin = bytes.isEmpty() ? "" : bytes.constData();
    ::sqlite3_bind_blob(m_handle, parameter + 1, begin, int(bytes.size()), SQLITE_TRANSIENT);
    return *this;
}

SqliteStatement::Step SqliteStatement::step()
{
    const int result = m_database.isInterrupted() ? SQLITE_INTERRUPT : ::sqlite3_step(m_handle);
    if (result == SQLITE_ROW)
        return Row;
    ::sqlite3_reset(m_handle);
    return result == SQLITE_DONE ? Done : Failed;
}

void SqliteStatement::reset()
{
    ::sqlite3_reset(m_handle);
}

QString SqliteStatement::text(int column) const
{
    const auto* bytes = reinterpret_cast<const char*>(::sqlite3_column_text(m_handle, column));
    return QString::fromUtf8(bytes, ::sqlite3_column_bytes(m_handle, column));
}

qint64 SqliteStatement::number(int column) const
{
    return ::sqlite3_column_int64(m_handle, column);
}

double SqliteStatement::real(int column) const
{
    return ::sqlite3_column_double(m_handle, column);
}

QByteArray SqliteStatement::bytes(int column) const
{
    const auto* bytes = static_cast<const char*>(::sqlite3_column_blob(m_handle, column));
    return {bytes, ::sqlite3_column_bytes(m_handle, column)};
}

} // namespace plc::database
