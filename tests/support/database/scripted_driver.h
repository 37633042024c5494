#ifndef SCRIPTED_DRIVER_H
#define SCRIPTED_DRIVER_H

#include <QSqlDatabase>
#include <QSqlDriver>
#include <QSqlField>
#include <QSqlRecord>
#include <QSqlResult>
#include <QStringList>
#include <QVariant>

#include <functional>

namespace test_support {

/// Takes the index of each row that is handed out, before anybody sees the row.
using row_observer = std::function<void(qsizetype)>;

/// Answers any statement with the same rows of one text.
class scripted_result : public QSqlResult
{
public:
    scripted_result(const QSqlDriver *driver, QStringList result_rows, row_observer row_watcher)
        : QSqlResult(driver), rows(std::move(result_rows)), observer(std::move(row_watcher))
    {
    }

protected:
    bool prepare(const QString & /*query*/) override { return true; }
    bool reset(const QString & /*query*/) override { return exec(); }
    bool exec() override
    {
        setSelect(true);
        setActive(true);
        setAt(QSql::BeforeFirstRow);
        return true;
    }
    bool fetch(int index) override
    {
        if (index >= rows.size())
            return false;
        observer(index);
        setAt(index);
        return true;
    }
    bool fetchFirst() override { return fetch(0); }
    bool fetchLast() override { return fetch(static_cast<int>(rows.size()) - 1); }
    QVariant data(int /*column*/) override { return rows.at(at()); }
    bool isNull(int /*column*/) override { return false; }
    int size() override { return static_cast<int>(rows.size()); }
    int numRowsAffected() override { return 0; }
    QSqlRecord record() const override
    {
        QSqlRecord columns;
        columns.append(QSqlField(QStringLiteral("text")));
        return columns;
    }

private:
    QStringList rows;
    row_observer observer;
};

/// Opens anything and hands out scripted results.
class scripted_driver : public QSqlDriver
{
public:
    scripted_driver(QStringList result_rows, row_observer row_watcher)
        : rows(std::move(result_rows)), observer(std::move(row_watcher))
    {
    }

    bool hasFeature(DriverFeature feature) const override
    {
        return feature == PreparedQueries || feature == PositionalPlaceholders;
    }
    bool open(const QString & /*database*/, const QString & /*user*/, const QString & /*password*/,
              const QString & /*host*/, int /*port*/, const QString & /*options*/) override
    {
        setOpen(true);
        return true;
    }
    void close() override { setOpen(false); }
    QSqlResult *createResult() const override { return new scripted_result(this, rows, observer); }

private:
    QStringList rows;
    row_observer observer;
};

/// For as long as it lives, every "QSQLITE" connection that is made is a scripted one.
class scripted_driver_registration
{
    class creator : public QSqlDriverCreatorBase
    {
    public:
        creator(QStringList result_rows, row_observer row_watcher)
            : rows(std::move(result_rows)), observer(std::move(row_watcher))
        {
        }
        QSqlDriver *createObject() const override { return new scripted_driver(rows, observer); }

    private:
        QStringList rows;
        row_observer observer;
    };

public:
    scripted_driver_registration(const QStringList &rows, const row_observer &observer)
    {
        QSqlDatabase::registerSqlDriver(driver_name, new creator(rows, observer));
        // Qt owns the creator. NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks)
        connection = QSqlDatabase::addDatabase(driver_name, connection_name);
        connection.open();
    }
    ~scripted_driver_registration()
    {
        connection = QSqlDatabase();
        QSqlDatabase::removeDatabase(connection_name);
        QSqlDatabase::registerSqlDriver(driver_name, nullptr);
    }
    Q_DISABLE_COPY_MOVE(scripted_driver_registration)

    /// An open connection.
    const QSqlDatabase &database() const { return connection; }

private:
    inline static const QString driver_name = QStringLiteral("QSQLITE");
    inline static const QString connection_name = QStringLiteral("scripted");
    QSqlDatabase connection;
};

} // namespace test_support

#endif
