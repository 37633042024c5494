#include "files.h"
#include "result_database.h"
#include "test_main.h"

#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

class tst_result_database_reader : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void reads_rows_in_the_order_of_their_ids();
    void tells_null_from_the_empty_text();
    void reads_expressions_and_single_columns();
    void counts_rows();
    void names_tables_and_columns_in_order();
    void gives_the_statement_that_created_a_table();
    void checks_the_integrity();
    void finds_damage();
    void leaves_the_file_as_it_is();
    void reads_two_files_at_once();
    void throws_for_what_cannot_be_read();
    void leaves_no_connection_behind();

private:
    void run(const QStringList &statements) const;

    QTemporaryDir m_folder;
    QString m_path;
};

void tst_result_database_reader::run(const QStringList &statements) const
{
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"writer"_s);
        database.setDatabaseName(m_path);
        QVERIFY(database.open());
        for (const QString &statement : statements)
            QVERIFY(QSqlQuery(database).exec(statement));
    }
    QSqlDatabase::removeDatabase(u"writer"_s);
}

void tst_result_database_reader::init()
{
    m_path = m_folder.filePath(u"result.sqlite"_s);
    QFile::remove(m_path);
    run({u"create table zebra(bookmark integer,INT INTEGER PRIMARY KEY,name varchar(10))"_s,
         u"create table apple(x)"_s,
         u"insert into zebra(bookmark,INT,name) values(0,2,'second'),(0,1,''),(7,3,NULL)"_s});
}

void tst_result_database_reader::reads_rows_in_the_order_of_their_ids()
{
    const result_database database(m_path);
    QCOMPARE(database.rows(u"zebra"_s, {u"INT"_s, u"bookmark"_s, u"name"_s}),
             (QList<QStringList>{{u"1"_s, u"0"_s, u""_s},
                                 {u"2"_s, u"0"_s, u"second"_s},
                                 {u"3"_s, u"7"_s, null_text}}));
}

void tst_result_database_reader::tells_null_from_the_empty_text()
{
    QVERIFY(!null_text.isEmpty());
    const QStringList names = result_database(m_path).column(u"zebra"_s, u"name"_s);
    QCOMPARE(names.at(0), u""_s);
    QCOMPARE(names.at(2), null_text);
}

void tst_result_database_reader::reads_expressions_and_single_columns()
{
    const result_database database(m_path);
    QCOMPARE(database.column(u"zebra"_s, u"typeof(name)"_s),
             (QStringList{u"text"_s, u"text"_s, u"null"_s}));
    QCOMPARE(database.query(u"select max(INT), 'a' from zebra"_s),
             (QList<QStringList>{{u"3"_s, u"a"_s}}));
}

void tst_result_database_reader::counts_rows()
{
    const result_database database(m_path);
    QCOMPARE(database.row_count(u"zebra"_s), 3);
    QCOMPARE(database.row_count(u"apple"_s), 0);
    QCOMPARE(database.rows(u"apple"_s, {u"x"_s}).size(), 0);
}

void tst_result_database_reader::names_tables_and_columns_in_order()
{
    const result_database database(m_path);
    QCOMPARE(database.tables(), (QStringList{u"zebra"_s, u"apple"_s}));
    QCOMPARE(database.columns(u"zebra"_s), (QStringList{u"bookmark"_s, u"INT"_s, u"name"_s}));
    QCOMPARE(database.columns(u"none"_s), QStringList());
}

void tst_result_database_reader::gives_the_statement_that_created_a_table()
{
    QCOMPARE(result_database(m_path).create_statement(u"zebra"_s),
             u"CREATE TABLE zebra(bookmark integer,INT INTEGER PRIMARY KEY,name varchar(10))"_s);
}

void tst_result_database_reader::checks_the_integrity()
{
    QCOMPARE(result_database(m_path).integrity_check(), u"ok"_s);
}

void tst_result_database_reader::finds_damage()
{
    run({u"create index by_name on zebra(name)"_s, u"pragma writable_schema=1"_s,
         u"update sqlite_master set sql='create index by_name on zebra(bookmark)' "
         "where name='by_name'"_s});
    QVERIFY(result_database(m_path).integrity_check() != u"ok"_s);
}

void tst_result_database_reader::leaves_the_file_as_it_is()
{
    const QByteArray before = read_file(m_path);
    {
        const result_database database(m_path);
        database.rows(u"zebra"_s, {u"name"_s});
        QVERIFY_THROWS_EXCEPTION(std::runtime_error, database.query(u"delete from zebra"_s));
    }
    QVERIFY(read_file(m_path) == before);
}

void tst_result_database_reader::reads_two_files_at_once()
{
    const result_database first(m_path);
    m_path = m_folder.filePath(u"other.sqlite"_s);
    run({u"create table other(y)"_s});
    const result_database second(m_path);
    QCOMPARE(first.tables().value(0), u"zebra"_s);
    QCOMPARE(second.tables(), QStringList{u"other"_s});
    QFile::remove(m_path);
}

void tst_result_database_reader::throws_for_what_cannot_be_read()
{
    QVERIFY_THROWS_EXCEPTION(std::runtime_error,
                             result_database(m_folder.filePath(u"none.sqlite"_s)));
    QVERIFY(!QFileInfo::exists(m_folder.filePath(u"none.sqlite"_s)));
    const result_database database(m_path);
    QVERIFY_THROWS_EXCEPTION(std::runtime_error, database.rows(u"none"_s, {u"x"_s}));
    QVERIFY_THROWS_EXCEPTION(std::runtime_error, database.rows(u"zebra"_s, {u"none"_s}));
    QVERIFY_THROWS_EXCEPTION(std::runtime_error, database.row_count(u"none"_s));
    QVERIFY_THROWS_EXCEPTION(std::runtime_error, database.create_statement(u"none"_s));
}

void tst_result_database_reader::leaves_no_connection_behind()
{
    const QStringList before = QSqlDatabase::connectionNames();
    {
        const result_database database(m_path);
        QCOMPARE(QSqlDatabase::connectionNames().size(), before.size() + 1);
    }
    QVERIFY_THROWS_EXCEPTION(std::runtime_error, result_database(m_folder.path()));
    QCOMPARE(QSqlDatabase::connectionNames(), before);
}

TEST_MAIN(tst_result_database_reader)
#include "tst_result_database_reader.moc"
