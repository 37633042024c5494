#ifndef RECORDING_DRIVER_H
#define RECORDING_DRIVER_H

#include "scripted_driver.h"

#include <QList>
#include <QSqlDatabase>
#include <QStringList>

namespace test_support {

/// What a driver is given: the statements that are prepared, and the bound values of each row.
struct driver_record
{
    QString encoding; ///< the answer to any statement that is not prepared
    QStringList statements;
    QList<QStringList> rows;
};

class recording_result : public scripted_result
{
public:
    recording_result(const QSqlDriver *driver, driver_record &record)
        : scripted_result(driver, {record.encoding}, [](qsizetype) {}), m_record(record)
    {
    }

protected:
    bool prepare(const QString &query) override
    {
        m_record.statements.append(query);
        return true;
    }
    bool reset(const QString &query) override
    {
        m_record.statements.append(query);
        return scripted_result::exec();
    }
    bool exec() override
    {
        QStringList row;
        for (const QVariant &value : boundValues())
            row.append(value.toString());
        m_record.rows.append(row);
        return true;
    }

private:
    driver_record &m_record;
};

class recording_driver : public scripted_driver
{
public:
    explicit recording_driver(driver_record &record) : scripted_driver({}, {}), m_record(record) {}
    bool hasFeature(DriverFeature feature) const override
    {
        return feature == NamedPlaceholders || scripted_driver::hasFeature(feature);
    }
    QSqlResult *createResult() const override { return new recording_result(this, m_record); }

private:
    driver_record &m_record;
};

/// For as long as it lives, every "QSQLITE" connection that is made is a recording one.
class recording_driver_registration
{
    class creator : public QSqlDriverCreatorBase
    {
    public:
        explicit creator(driver_record &record) : m_record(record) {}
        QSqlDriver *createObject() const override { return new recording_driver(m_record); }

    private:
        driver_record &m_record;
    };

public:
    explicit recording_driver_registration(const QString &encoding) : m_record{encoding, {}, {}}
    {
        QSqlDatabase::registerSqlDriver(QStringLiteral("QSQLITE"), new creator(m_record));
        // Qt owns the creator. NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks)
    }
    ~recording_driver_registration()
    {
        QSqlDatabase::registerSqlDriver(QStringLiteral("QSQLITE"), nullptr);
    }
    Q_DISABLE_COPY_MOVE(recording_driver_registration)

    QStringList statements() const { return m_record.statements; }
    QList<QStringList> rows() const { return m_record.rows; }

private:
    driver_record m_record;
};

} // namespace test_support

#endif
