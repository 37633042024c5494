#include "file_size_limit.h"
#include "files.h"
#include "log_capture.h"
#include "log_line.h"
#include "log_line_hook.h"
#include "run_context_backup.h"
#include "test_main.h"

#include "plugin_helper_functions.h"
#include "plugin_static_function.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTest>
#include <QVariant>

#include <optional>

#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace {

// An SQLite connection that closes with its scope.
class connection
{
public:
    explicit connection(const QString &path) : name(path)
    {
        database = QSqlDatabase::addDatabase(u"QSQLITE"_s, name);
        database.setDatabaseName(path);
        database.open();
    }
    ~connection()
    {
        database = QSqlDatabase();
        QSqlDatabase::removeDatabase(name);
    }
    Q_DISABLE_COPY_MOVE(connection)

    QStringList run(const QString &command) const
    {
        QSqlQuery query(command, database);
        QStringList values;
        while (query.next())
            values.append(query.value(0).toString());
        return values;
    }

private:
    QString name;
    QSqlDatabase database;
};

} // namespace

// Working copies of evidence files.
class tst_adhoc_copies : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void live_database_is_read_back_from_its_copy();
    void copy_of_a_read_only_database_is_writable();
    void only_companions_that_exist_are_copied();
    void name_is_free_for_the_companions_too_data();
    void name_is_free_for_the_companions_too();
    void regular_file_is_copied_without_companions();
    void copies_of_like_names_stand_side_by_side();
    void copy_is_refused_data();
    void copy_is_refused();
    void copy_is_refused_when_cancelled();
    void failed_copy_is_silent_and_leaves_nothing();
    void failed_companion_is_logged_and_the_copy_kept_data();
    void failed_companion_is_logged_and_the_copy_kept();
    void cancel_between_the_parts_leaves_nothing();
    void file_that_does_not_fit_leaves_nothing();
    void pipe_is_refused_without_waiting_for_it();

private:
    QString source(const QString &name) const { return folder->filePath(name); }
    QStringList copies() const
    {
        return QDir(folder->filePath(u"adhoc"_s)).entryList(QDir::Files | QDir::Hidden);
    }

    std::optional<test_support::run_context_backup> context;
    std::optional<QTemporaryDir> folder;
    std::optional<plugin_helper_functions> helper;
};

void tst_adhoc_copies::init()
{
    context.emplace();
    folder.emplace();
    helper.emplace();
    helper->set_adhoc_parent_path(folder->filePath(u"adhoc"_s) + u'/');
}

void tst_adhoc_copies::cleanup()
{
    helper.reset();
    folder.reset();
    context.reset();
}

void tst_adhoc_copies::live_database_is_read_back_from_its_copy()
{
    const connection live(source(u"live.sqlite"_s));
    live.run(u"PRAGMA journal_mode=WAL"_s);
    live.run(u"CREATE TABLE fruit (name TEXT)"_s);
    live.run(u"INSERT INTO fruit VALUES ('apple'), ('pear')"_s);
    QVERIFY(QFileInfo(source(u"live.sqlite-wal"_s)).size() > 0);
    QVERIFY(QFileInfo::exists(source(u"live.sqlite-shm"_s)));

    const QString copy = helper->get_adhoc_path_for_database(source(u"live.sqlite"_s));
    QCOMPARE(copy, source(u"adhoc/live.sqlite"_s));
    QCOMPARE(copies(), (QStringList{u"live.sqlite"_s, u"live.sqlite-shm"_s, u"live.sqlite-wal"_s}));
    QCOMPARE(evidence::read_file(copy + u"-wal"_s),
             evidence::read_file(source(u"live.sqlite-wal"_s)));
    const connection copied(copy);
    QCOMPARE(copied.run(u"SELECT name FROM fruit"_s), (QStringList{u"apple"_s, u"pear"_s}));
    QCOMPARE(copied.run(u"PRAGMA integrity_check"_s), QStringList{u"ok"_s});
}

void tst_adhoc_copies::copy_of_a_read_only_database_is_writable()
{
    const QString path = source(u"evidence.sqlite"_s);
    evidence::write_file(path, "bytes");
    QVERIFY(QFile::setPermissions(path, QFileDevice::ReadOwner));
    const QString copy = helper->get_adhoc_path_for_database(path);
    QVERIFY(QFile::permissions(copy).testFlag(QFileDevice::WriteOwner));
    QVERIFY(!QFile::permissions(path).testFlag(QFileDevice::WriteOwner));
}

void tst_adhoc_copies::only_companions_that_exist_are_copied()
{
    evidence::write_file(source(u"a.sqlite"_s), "main");
    evidence::write_file(source(u"a.sqlite-shm"_s), "shared");
    helper->get_adhoc_path_for_database(source(u"a.sqlite"_s));
    QCOMPARE(copies(), (QStringList{u"a.sqlite"_s, u"a.sqlite-shm"_s}));
}

void tst_adhoc_copies::name_is_free_for_the_companions_too_data()
{
    QTest::addColumn<QString>("occupant");
    QTest::newRow("a write-ahead log") << u"a.sqlite-wal"_s;
    QTest::newRow("a shared-memory file") << u"a.sqlite-shm"_s;
    QTest::newRow("the database") << u"a.sqlite"_s;
}

// A file there may be somebody's copy, and a stale log would be replayed into ours.
void tst_adhoc_copies::name_is_free_for_the_companions_too()
{
    QFETCH(const QString, occupant);
    evidence::write_file(source(u"a.sqlite"_s), "main");
    evidence::write_file(source(u"a.sqlite-wal"_s), "log");
    evidence::make_folder(source(u"adhoc"_s));
    evidence::write_file(source(u"adhoc/"_s + occupant), "somebody's");
    QCOMPARE(helper->get_adhoc_path_for_database(source(u"a.sqlite"_s)),
             source(u"adhoc/1_a.sqlite"_s));
    QCOMPARE(copies(), (QStringList{u"1_a.sqlite"_s, u"1_a.sqlite-wal"_s, occupant}));
    QCOMPARE(evidence::read_file(source(u"adhoc/"_s + occupant)), QByteArray("somebody's"));
}

void tst_adhoc_copies::regular_file_is_copied_without_companions()
{
    evidence::write_file(source(u"a.sqlite"_s), "main");
    evidence::write_file(source(u"a.sqlite-wal"_s), "log");
    const QString copy = helper->get_adhoc_path_for_regular_file(source(u"a.sqlite"_s));
    QCOMPARE(copy, source(u"adhoc/a.sqlite"_s));
    QCOMPARE(copies(), QStringList{u"a.sqlite"_s});
    QCOMPARE(evidence::read_file(copy), QByteArray("main"));
}

void tst_adhoc_copies::copies_of_like_names_stand_side_by_side()
{
    const QString path = source(u"a.bin"_s);
    evidence::write_file(path, "first");
    QCOMPARE(helper->get_adhoc_path_for_regular_file(path), source(u"adhoc/a.bin"_s));
    evidence::write_file(path, "second");
    QCOMPARE(helper->get_adhoc_path_for_regular_file(path), source(u"adhoc/1_a.bin"_s));
    QCOMPARE(evidence::read_file(source(u"adhoc/a.bin"_s)), QByteArray("first"));
    QCOMPARE(evidence::read_file(source(u"adhoc/1_a.bin"_s)), QByteArray("second"));
}

void tst_adhoc_copies::copy_is_refused_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("parent");
    QTest::newRow("an empty path") << QString() << u"/adhoc/"_s;
    QTest::newRow("a blank path") << u"  "_s << u"/adhoc/"_s;
    QTest::newRow("a path without a file name") << u"/Users/"_s << u"/adhoc/"_s;
    QTest::newRow("no folder to copy into") << u"/a.bin"_s << QString();
}

void tst_adhoc_copies::copy_is_refused()
{
    QFETCH(const QString, path);
    QFETCH(const QString, parent);
    evidence::write_file(source(u"a.bin"_s), "content");
    const QString previous = QDir::currentPath();
    QVERIFY(QDir::setCurrent(folder->path()));
    helper->set_adhoc_parent_path(parent.isEmpty() ? parent : folder->path() + parent);
    const QString given = path.trimmed().isEmpty() ? path : folder->path() + path;
    const QString database_copy = helper->get_adhoc_path_for_database(given);
    const QString file_copy = helper->get_adhoc_path_for_regular_file(given);
    QVERIFY(QDir::setCurrent(previous));
    QCOMPARE(database_copy, QString());
    QCOMPARE(file_copy, QString());
    QCOMPARE(QDir(folder->path()).entryList(QDir::Files), QStringList{u"a.bin"_s});
    QCOMPARE(copies(), QStringList());
}

void tst_adhoc_copies::copy_is_refused_when_cancelled()
{
    evidence::write_file(source(u"a.bin"_s), "content");
    helper->set_cancel_extraction(true);
    QCOMPARE(helper->get_adhoc_path_for_regular_file(source(u"a.bin"_s)), QString());
    helper->set_cancel_extraction(false);
    plugin_static_function::set_cancel_extraction(true);
    QCOMPARE(helper->get_adhoc_path_for_regular_file(source(u"a.bin"_s)), QString());
    QCOMPARE(copies(), QStringList());
}

void tst_adhoc_copies::failed_copy_is_silent_and_leaves_nothing()
{
    const test_support::log_capture log;
    QCOMPARE(helper->get_adhoc_path_for_database(source(u"absent.sqlite"_s)), QString());
    QCOMPARE(log.lines(), QStringList());
    QCOMPARE(copies(), QStringList());
}

void tst_adhoc_copies::failed_companion_is_logged_and_the_copy_kept_data()
{
    QTest::addColumn<QString>("failing");
    QTest::addColumn<QString>("other");
    QTest::newRow("the write-ahead log") << u"-wal"_s << u"-shm"_s;
    QTest::newRow("the shared-memory file") << u"-shm"_s << u"-wal"_s;
}

void tst_adhoc_copies::failed_companion_is_logged_and_the_copy_kept()
{
    QFETCH(const QString, failing);
    QFETCH(const QString, other);
    const QString path = source(u"a.sqlite"_s);
    evidence::write_file(path, "main");
    evidence::make_folder(path + failing);
    evidence::write_file(path + other, "other");
    const test_support::log_capture log;
    QCOMPARE(helper->get_adhoc_path_for_database(path), source(u"adhoc/a.sqlite"_s));
    QCOMPARE(copies(), (QStringList{u"a.sqlite"_s, u"a.sqlite"_s + other}));
    const QString tag = u"[get_adhoc_path_for_database]"_s;
    QCOMPARE(log.lines(), test_support::log_lines(
                              u"plugin_helper_functions::get_adhoc_path_for_database"_s,
                              {tag + u" companion file copy ----FAILED---- :"_s + path + failing,
                               tag + u" Error:Not a regular file"_s}));
}

// The failure line of one companion is when the user cancels.
void tst_adhoc_copies::cancel_between_the_parts_leaves_nothing()
{
    const QString path = source(u"a.sqlite"_s);
    evidence::write_file(path, "main");
    evidence::make_folder(path + u"-shm"_s);
    evidence::write_file(path + u"-wal"_s, "log");
    const test_support::log_capture log;
    const test_support::log_line_hook hook(
        [this](const QString & /*line*/) { helper->set_cancel_extraction(true); });
    QCOMPARE(helper->get_adhoc_path_for_database(path), QString());
    QCOMPARE(copies(), QStringList());
}

void tst_adhoc_copies::file_that_does_not_fit_leaves_nothing()
{
    evidence::write_file(source(u"big.bin"_s), QByteArray(100000, 'x'));
    const test_support::file_size_limit limit(50000);
    QCOMPARE(helper->get_adhoc_path_for_regular_file(source(u"big.bin"_s)), QString());
    QCOMPARE(copies(), QStringList());
}

void tst_adhoc_copies::pipe_is_refused_without_waiting_for_it()
{
    const QString pipe = source(u"pipe"_s);
    QCOMPARE(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    QCOMPARE(helper->get_adhoc_path_for_regular_file(pipe), QString());
    QCOMPARE(copies(), QStringList());
}

TEST_MAIN(tst_adhoc_copies)
#include "tst_adhoc_copies.moc"
