#include "file_size_limit.h"
#include "files.h"
#include "log_capture.h"
#include "log_line.h"
#include "run_context_backup.h"
#include "test_main.h"
#include "workspace.h"

#include "plugin_static_function.h"
#include "whole_file_copy.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QTest>

#include <optional>

using namespace Qt::StringLiterals;
using test_support::workspace;

namespace {

using library = plugin_static_function;

QString copy_line(const QString &message)
{
    return test_support::library_line(u"copy_directory"_s, u"[copy_directory]"_s + message);
}

} // namespace

// Removing and copying directories.
class tst_directories : public QObject
{
    Q_OBJECT

private slots:
    void init() { context.emplace(); }
    void cleanup() { context.reset(); }
    void removes_a_directory_with_all_below_it();
    void removes_links_without_following_them();
    void removes_a_given_link_without_following_it_data();
    void removes_a_given_link_without_following_it();
    void removes_what_the_file_system_finds_behind_a_link_data();
    void removes_what_the_file_system_finds_behind_a_link();
    void removes_no_link_that_leads_to_no_directory_data();
    void removes_no_link_that_leads_to_no_directory();
    void removes_nothing_for_a_blank_path_data();
    void removes_nothing_for_a_blank_path();
    void removes_nothing_for_a_missing_path_or_a_file();
    void copies_a_tree_with_hidden_entries();
    void copy_replaces_files_and_keeps_others();
    void copy_of_a_missing_directory_logs_it_data();
    void copy_of_a_missing_directory_logs_it();
    void copy_leaves_links_out_of_the_tree();
    void copy_follows_a_link_to_a_file_inside_the_tree();
    void copy_leaves_special_files_out();
    void copy_into_itself_ends();
    void copy_onto_itself_changes_nothing();
    void copy_logs_a_source_that_does_not_open();
    void copy_logs_a_destination_that_does_not_open();
    void copy_leaves_no_part_of_a_file_that_does_not_fit();
    void copy_follows_links_in_the_destination();
    void copy_makes_the_folder_alone_when_cancelled();
    void cancelled_file_copy_leaves_the_destination_as_it_was_data();
    void cancelled_file_copy_leaves_the_destination_as_it_was();

private:
    std::optional<test_support::run_context_backup> context;
};

void tst_directories::removes_a_directory_with_all_below_it()
{
    const workspace work;
    work.file(u"gone/a/b/deep.txt"_s);
    work.file(u"gone/.hidden/.file"_s);
    work.file(u"kept.txt"_s);
    work.pipe(u"gone/pipe"_s);
    library::remove_directory(work.path(u"gone"_s));
    QCOMPARE(work.entries(QString()), QStringList{u"kept.txt"_s});
}

void tst_directories::removes_links_without_following_them()
{
    const workspace work;
    work.file(u"evidence/file.txt"_s);
    work.file(u"gone/a/file.txt"_s);
    work.link(u"gone/a/to_directory"_s, work.path(u"evidence"_s));
    work.link(u"gone/a/to_file"_s, work.path(u"evidence/file.txt"_s));
    work.link(u"gone/dangling"_s, work.path(u"absent"_s));
    work.link(u"gone/a/to_ancestor"_s, work.path(u"gone"_s));
    library::remove_directory(work.path(u"gone"_s));
    QVERIFY(!work.exists(u"gone"_s));
    QCOMPARE(work.entries(u"evidence"_s), QStringList{u"file.txt"_s});
}

void tst_directories::removes_a_given_link_without_following_it_data()
{
    QTest::addColumn<QString>("given");
    QTest::newRow("the link") << u"link"_s;
    QTest::newRow("the link with a slash behind it") << u"link/"_s;
    QTest::newRow("the link with slashes behind it") << u"link//"_s;
    QTest::newRow("the link with a slash and a dot behind it") << u"link/."_s;
    QTest::newRow("the link with dots and slashes behind it") << u"link/././"_s;
}

void tst_directories::removes_a_given_link_without_following_it()
{
    QFETCH(const QString, given);
    const workspace work;
    work.file(u"evidence/file.txt"_s);
    work.link(u"link"_s, work.path(u"evidence"_s));
    library::remove_directory(work.path(given));
    QCOMPARE(work.entries(QString()), (QStringList{u"evidence"_s, u"evidence/file.txt"_s}));
}

void tst_directories::removes_what_the_file_system_finds_behind_a_link_data()
{
    QTest::addColumn<QString>("given");
    QTest::addColumn<QStringList>("left");
    QTest::newRow("a directory beside the one that the link leads to")
        << u"x/link/../d"_s << QStringList{u"x"_s, u"x/d"_s, u"x/d/own.txt"_s, u"x/link"_s,
                                           u"y"_s, u"y/z"_s, u"y/z/d"_s,       u"y/z/d/deep.txt"_s};
    QTest::newRow("a directory in the one that the link leads to")
        << u"x/link/d/"_s << QStringList{u"x"_s, u"x/d"_s, u"x/d/own.txt"_s,   u"x/link"_s,
                                         u"y"_s, u"y/d"_s, u"y/d/other.txt"_s, u"y/z"_s};
    QTest::newRow("a directory that is given with detours")
        << u"x/./d/../../x//d"_s << QStringList{u"x"_s,     u"x/link"_s,        u"y"_s,
                                                u"y/d"_s,   u"y/d/other.txt"_s, u"y/z"_s,
                                                u"y/z/d"_s, u"y/z/d/deep.txt"_s};
}

void tst_directories::removes_what_the_file_system_finds_behind_a_link()
{
    QFETCH(const QString, given);
    const workspace work;
    work.file(u"x/d/own.txt"_s);
    work.file(u"y/d/other.txt"_s);
    work.file(u"y/z/d/deep.txt"_s);
    work.link(u"x/link"_s, work.path(u"y/z"_s));
    library::remove_directory(work.path(given));
    QTEST(work.entries(QString()), "left");
}

void tst_directories::removes_no_link_that_leads_to_no_directory_data()
{
    QTest::addColumn<QString>("target");
    QTest::newRow("a link to a file") << u"kept.txt"_s;
    QTest::newRow("a link to nothing") << u"absent"_s;
    QTest::newRow("a link to itself") << u"link"_s;
}

void tst_directories::removes_no_link_that_leads_to_no_directory()
{
    QFETCH(const QString, target);
    const workspace work;
    work.file(u"kept.txt"_s);
    work.link(u"link"_s, work.path(target));
    library::remove_directory(work.path(u"link"_s));
    library::remove_directory(work.path(u"link/"_s));
    QVERIFY(work.exists(u"link"_s));
    QVERIFY(work.exists(u"kept.txt"_s));
}

void tst_directories::removes_nothing_for_a_blank_path_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("a null path") << QString();
    QTest::newRow("an empty path") << u""_s;
    QTest::newRow("blanks") << u"  "_s;
}

void tst_directories::removes_nothing_for_a_blank_path()
{
    QFETCH(const QString, path);
    const workspace work;
    work.file(u"kept.txt"_s);
    work.file(u"  /kept.txt"_s);
    const QString previous = QDir::currentPath();
    QVERIFY(QDir::setCurrent(work.path(QString())));
    library::remove_directory(path);
    QVERIFY(QDir::setCurrent(previous));
    QCOMPARE(work.entries(QString()), (QStringList{u"  "_s, u"  /kept.txt"_s, u"kept.txt"_s}));
}

void tst_directories::removes_nothing_for_a_missing_path_or_a_file()
{
    const workspace work;
    work.file(u"kept.txt"_s);
    const test_support::log_capture log;
    library::remove_directory(work.path(u"absent"_s));
    library::remove_directory(work.path(u"kept.txt"_s));
    QCOMPARE(work.entries(QString()), QStringList{u"kept.txt"_s});
    QCOMPARE(log.lines(), QStringList());
}

void tst_directories::copies_a_tree_with_hidden_entries()
{
    const workspace work;
    work.file(u"from/a.txt"_s, "first");
    work.file(u"from/.hidden"_s, "second");
    work.file(u"from/b/c/deep.bin"_s, QByteArray(3 * 1024 * 1024 + 1, '\x7f'));
    work.file(u"from/.folder/empty"_s, {});
    const test_support::log_capture log;
    library::copy_directory(work.path(u"from"_s), work.path(u"new/to"_s));
    QCOMPARE(work.entries(u"new/to"_s), work.entries(u"from"_s));
    QCOMPARE(evidence::read_file(work.path(u"new/to/a.txt"_s)), QByteArray("first"));
    QCOMPARE(evidence::read_file(work.path(u"new/to/b/c/deep.bin"_s)),
             QByteArray(3 * 1024 * 1024 + 1, '\x7f'));
    QCOMPARE(log.lines(), QStringList());
}

void tst_directories::copy_replaces_files_and_keeps_others()
{
    const workspace work;
    work.file(u"from/a.txt"_s, "new");
    work.file(u"to/a.txt"_s, "older and longer");
    work.file(u"to/b.txt"_s, "kept");
    library::copy_directory(work.path(u"from"_s), work.path(u"to"_s));
    QCOMPARE(evidence::read_file(work.path(u"to/a.txt"_s)), QByteArray("new"));
    QCOMPARE(evidence::read_file(work.path(u"to/b.txt"_s)), QByteArray("kept"));
}

void tst_directories::copy_of_a_missing_directory_logs_it_data()
{
    QTest::addColumn<QString>("source");
    QTest::newRow("an absent directory") << u"/absent/directory"_s;
    QTest::newRow("a file") << QCoreApplication::applicationFilePath();
    QTest::newRow("an empty path") << QString();
}

void tst_directories::copy_of_a_missing_directory_logs_it()
{
    QFETCH(const QString, source);
    const workspace work;
    const test_support::log_capture log;
    library::copy_directory(source, work.path(u"to"_s));
    QCOMPARE(log.lines(), QStringList{copy_line(
                              u" source diectory does not exist ----FAILED---- :"_s + source)});
    QVERIFY(!work.exists(u"to"_s));
}

void tst_directories::copy_leaves_links_out_of_the_tree()
{
    const workspace work;
    work.file(u"secret/file.txt"_s);
    work.file(u"from/a.txt"_s);
    work.file(u"from-beside/file.txt"_s);
    work.link(u"from/1_file"_s, work.path(u"secret/file.txt"_s));
    work.link(u"from/2_like_named"_s, work.path(u"from-beside/file.txt"_s));
    work.link(u"from/3_directory"_s, work.path(u"secret"_s));
    work.link(u"from/4_loop"_s, work.path(u"from"_s));
    work.link(u"from/5_dangling"_s, work.path(u"absent"_s));
    const test_support::log_capture log;
    library::copy_directory(work.path(u"from"_s), work.path(u"to"_s));
    QCOMPARE(work.entries(u"to"_s), QStringList{u"a.txt"_s});
    QStringList lines = log.lines();
    lines.sort();
    QCOMPARE(lines,
             (QStringList{copy_line(u" link out of the directory passed over :1_file"_s),
                          copy_line(u" link out of the directory passed over :2_like_named"_s),
                          copy_line(u" link to a directory passed over :3_directory"_s),
                          copy_line(u" link to a directory passed over :4_loop"_s)}));
}

void tst_directories::copy_follows_a_link_to_a_file_inside_the_tree()
{
    const workspace work;
    work.file(u"from/a/file.txt"_s, "inside");
    work.link(u"from/link.txt"_s, u"a/file.txt"_s);
    library::copy_directory(work.path(u"from"_s), work.path(u"to"_s));
    QVERIFY(!QFileInfo(work.path(u"to/link.txt"_s)).isSymLink());
    QCOMPARE(evidence::read_file(work.path(u"to/link.txt"_s)), QByteArray("inside"));
}

void tst_directories::copy_leaves_special_files_out()
{
    const workspace work;
    work.file(u"from/a.txt"_s);
    work.pipe(u"from/pipe"_s);
    work.link(u"from/to_pipe"_s, u"pipe"_s);
    const test_support::log_capture log;
    library::copy_directory(work.path(u"from"_s), work.path(u"to"_s));
    QCOMPARE(work.entries(u"to"_s), QStringList{u"a.txt"_s});
    QCOMPARE(log.lines(),
             QStringList{copy_line(u" link to a special file passed over :to_pipe"_s)});
}

void tst_directories::copy_into_itself_ends()
{
    const workspace work;
    work.file(u"from/a/file.txt"_s);
    library::copy_directory(work.path(u"from"_s), work.path(u"from/a/to"_s));
    QCOMPARE(work.entries(u"from/a/to"_s), (QStringList{u"a"_s, u"a/file.txt"_s}));
}

void tst_directories::copy_onto_itself_changes_nothing()
{
    const workspace work;
    work.file(u"from/file.txt"_s);
    evidence::set_modification_time(work.path(u"from/file.txt"_s), 1500000000);
    library::copy_directory(work.path(u"from"_s), work.path(u"from/"_s));
    QCOMPARE(QFileInfo(work.path(u"from/file.txt"_s)).lastModified().toSecsSinceEpoch(),
             1500000000);
}

void tst_directories::copy_logs_a_source_that_does_not_open()
{
    const QString folder = u"/proc/sys/net/ipv4/route"_s;
    if (!QFileInfo::exists(folder + u"/flush"_s))
        QSKIP("there is no file here that even a superuser may not read");
    const workspace work;
    const test_support::log_capture log;
    library::copy_directory(folder, work.path(u"to"_s));
    QCOMPARE(log.lines(), (QStringList{copy_line(u" source file open ----FAILED---- :flush"_s),
                                       copy_line(u" Error:Permission denied"_s)}));
    QVERIFY(!work.exists(u"to/flush"_s));
}

void tst_directories::copy_logs_a_destination_that_does_not_open()
{
    const workspace work;
    work.file(u"from/a.txt"_s);
    work.file(u"from/b.txt"_s);
    evidence::make_folder(work.path(u"to/a.txt"_s));
    const test_support::log_capture log;
    library::copy_directory(work.path(u"from"_s), work.path(u"to"_s));
    const QStringList lines = log.lines();
    QCOMPARE(lines.size(), 2);
    QCOMPARE(lines.at(0), copy_line(u" destination file open ----FAILED---- :a.txt"_s));
    QVERIFY(lines.at(1).startsWith(copy_line(u" Error:"_s)));
    QVERIFY(lines.at(1).size() > copy_line(u" Error:"_s).size());
    QCOMPARE(work.entries(u"to"_s), (QStringList{u"a.txt"_s, u"b.txt"_s}));
}

void tst_directories::copy_leaves_no_part_of_a_file_that_does_not_fit()
{
    const workspace work;
    work.file(u"from/big.bin"_s, QByteArray(100000, 'x'));
    work.file(u"from/small.bin"_s, "x");
    const test_support::log_capture log;
    {
        const test_support::file_size_limit limit(50000);
        library::copy_directory(work.path(u"from"_s), work.path(u"to"_s));
    }
    QCOMPARE(work.entries(u"to"_s), QStringList{u"small.bin"_s});
    QCOMPARE(log.lines().size(), 2);
    QCOMPARE(log.lines().first(), copy_line(u" destination file open ----FAILED---- :big.bin"_s));
}

void tst_directories::copy_follows_links_in_the_destination()
{
    const workspace work;
    work.file(u"from/a.txt"_s, "new");
    work.file(u"from/b/c.txt"_s, "new");
    work.file(u"elsewhere/target.txt"_s, "old");
    evidence::make_folder(work.path(u"to"_s));
    work.link(u"to/a.txt"_s, work.path(u"elsewhere/target.txt"_s));
    work.link(u"to/b"_s, work.path(u"elsewhere"_s));
    library::copy_directory(work.path(u"from"_s), work.path(u"to"_s));
    QVERIFY(QFileInfo(work.path(u"to/a.txt"_s)).isSymLink());
    QCOMPARE(evidence::read_file(work.path(u"elsewhere/target.txt"_s)), QByteArray("new"));
    QCOMPARE(work.entries(u"elsewhere"_s), (QStringList{u"c.txt"_s, u"target.txt"_s}));
}

void tst_directories::copy_makes_the_folder_alone_when_cancelled()
{
    const workspace work;
    work.file(u"from/a.txt"_s);
    work.file(u"from/b/c.txt"_s);
    library::set_cancel_extraction(true);
    library::copy_directory(work.path(u"from"_s), work.path(u"to"_s));
    QVERIFY(work.exists(u"to"_s));
    QCOMPARE(work.entries(u"to"_s), QStringList());
}

void tst_directories::cancelled_file_copy_leaves_the_destination_as_it_was_data()
{
    QTest::addColumn<QStringList>("before");
    QTest::newRow("an absent file stays absent") << QStringList();
    QTest::newRow("a file that was there stays") << QStringList{u"copy.txt"_s};
}

void tst_directories::cancelled_file_copy_leaves_the_destination_as_it_was()
{
    QFETCH(const QStringList, before);
    const workspace work;
    work.file(u"from.txt"_s, "new");
    evidence::make_folder(work.path(u"to"_s));
    for (const QString &name : before)
        work.file(u"to/"_s + name, "old");
    const auto result =
        copy_whole_file(work.path(u"from.txt"_s), work.path(u"to/copy.txt"_s), true);
    QCOMPARE(result.how, whole_file_copy_result::status::cancelled);
    QCOMPARE(result.error, QString());
    QCOMPARE(work.entries(u"to"_s), before);
    for (const QString &name : before)
        QCOMPARE(evidence::read_file(work.path(u"to/"_s + name)), QByteArray("old"));
}

TEST_MAIN(tst_directories)
#include "tst_directories.moc"
