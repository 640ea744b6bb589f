#ifndef PLC_TESTS_GATEWAY_STORE_STORE_TEST_H
#define PLC_TESTS_GATEWAY_STORE_STORE_TEST_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QtCore/QFileInfo>

#include "gateway/store/sqlite_change_store.h"
#include "tests/support/file_test.h"

namespace plc::gateway {
namespace test {

/// 2026-11-22T00:00:00Z: 20779 days of 86400 s since 1970.
constexpr qint64 kStart = 20779LL * 86400 * 1000;

/// Stores in a folder of their own.
class StoreTest : public plc::test::FileTest {
protected:
    std::unique_ptr<SqliteChangeStore> open(qint64 limit = 16 * 1024 * 1024)
    {
        Expected<std::unique_ptr<SqliteChangeStore>> store = SqliteChangeStore::open(file, limit);
        EXPECT_TRUE(succeeds(store)) << error.toStdString();
        return store ? std::move(*store) : nullptr;
    }
    static StoredChange change(const char* metric, qint64 time, const QByteArray& bytes)
    {
        StoredChange change;
        change.device = QStringLiteral("Press 1");
        change.metric = QString::fromUtf8(metric);
        change.type = QStringLiteral("DINT");
        change.time = kStart + time;
        change.bytes = bytes;
        return change;
    }
    /// `count` changes of 100 values with four bytes each, which tell `first` and what follows.
    static QVector<StoredChange> changes(int first, int count, int length = 4)
    {
        QVector<StoredChange> list;
        for (int i = first; i < first + count; ++i) {
            const QByteArray name = "Plant/tank/" + QByteArray::number(i % 100) + "/level";
            QByteArray bytes(length, '\0');
            for (int byte = 0; byte < 4; ++byte)
                bytes[byte] = char(i >> (24 - 8 * byte));
            list.append(change(name.constData(), i, bytes));
        }
        return list;
    }
    /// Which of changes() this is.
    static int indexOf(const StoredChange& change) { return int(change.time - kStart); }
    void append(SqliteChangeStore& store, const QVector<StoredChange>& list)
    {
        EXPECT_TRUE(succeeds(store.append(list))) << error.toStdString();
    }
    /// Database and journal.
    qint64 bytesOnDisk() const
    {
        return QFileInfo(file).size() + QFileInfo(file + QStringLiteral("-wal")).size();
    }

    QString file = path("changes.sqlite");
};

} // namespace test
} // namespace plc::gateway

#endif
