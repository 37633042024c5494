#include "run_context_backup.h"
#include "test_main.h"
#include "workspace.h"

#include "plugin_static_function.h"

#include <QFileInfo>
#include <QTest>

#include <optional>

using namespace Qt::StringLiterals;
using test_support::workspace;

namespace {

using library = plugin_static_function;

const QString home = u"macOS_Home_Directory"_s;

} // namespace

class tst_paths : public QObject
{
    Q_OBJECT

private slots:
    void init() { context.emplace(); }
    void cleanup() { context.reset(); }
    void source_file_is_shown_relative_data();
    void source_file_is_shown_relative();
    void complete_path_data();
    void complete_path();
    void user_name_is_the_first_folder_below_the_prefix_data();
    void user_name_is_the_first_folder_below_the_prefix();
    void user_name_is_empty_without_accounts();
    void size_is_shown_data();
    void size_is_shown();
    void available_file_counts_up();
    void available_file_makes_its_folder();
    void available_file_is_none_when_cancelled();
    void file_is_found_in_its_folder_data();
    void file_is_found_in_its_folder();
    void file_is_not_found_when_cancelled();
    void size_text_is_mined_data();
    void size_text_is_mined();
    void scan_version_is_told_by_the_version_data();
    void scan_version_is_told_by_the_version();
    void scan_version_of_an_ios_source_is_told_by_the_scheme();

private:
    std::optional<test_support::run_context_backup> context;
};

void tst_paths::source_file_is_shown_relative_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("prefix");
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QString>("complete");
    QTest::newRow("an ordinary path gets its slash")
        << u"Windows/x"_s << u"/mnt"_s << QString() << u"/Windows/x"_s << QString();
    QTest::newRow("an ordinary path with a slash stays")
        << u"/Windows/x"_s << u"/mnt"_s << QString() << u"/Windows/x"_s << QString();
    QTest::newRow("the prefix of an ordinary path stays")
        << u"/mnt/Windows/x"_s << u"/mnt"_s << QString() << u"/mnt/Windows/x"_s << QString();
    QTest::newRow("an empty path stays empty")
        << QString() << u"/mnt"_s << QString() << QString() << QString();
    QTest::newRow("blanks stay without a slash")
        << u"   "_s << u"/mnt"_s << QString() << u"   "_s << QString();
    QTest::newRow("a home path loses its prefix")
        << u"/mnt/home/Library/x"_s << u"/mnt/home"_s << home << u"/Library/x"_s
        << u"/mnt/home/Library/x"_s;
    QTest::newRow("a home path loses all before its prefix too")
        << u"/a/mnt/b/mnt/c"_s << u"/mnt"_s << home << u"/b/mnt/c"_s << u"/a/mnt/b/mnt/c"_s;
    QTest::newRow("a home path cut at a slash gets it back")
        << u"/mnt/x"_s << u"/mnt/"_s << home << u"/x"_s << u"/mnt/x"_s;
    QTest::newRow("a home path without the prefix stays")
        << u"Library/x"_s << u"/mnt"_s << home << u"/Library/x"_s << u"Library/x"_s;
    QTest::newRow("a kind in other letters is ordinary")
        << u"/mnt/x"_s << u"/mnt"_s << home.toLower() << u"/mnt/x"_s << QString();
}

void tst_paths::source_file_is_shown_relative()
{
    QFETCH(const QString, path);
    QFETCH(const QString, prefix);
    QFETCH(const QString, kind);
    const auto record = library::get_final_artifact_source_file(path, prefix, kind);
    QTEST(record.display_path, "shown");
    QTEST(record.complete_path, "complete");
    QTEST(library::get_relative_file_path(path, prefix, kind), "shown");
}

void tst_paths::complete_path_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("complete");
    QTest::newRow("the user of a home path is replaced")
        << u"/Users/alice/Library/x"_s << home << u"/Users/bob/Library/x"_s;
    QTest::newRow("a home folder itself is put behind the user")
        << u"/Users/alice"_s << home << u"/Users/bob/Users/alice"_s;
    QTest::newRow("a home path elsewhere stays") << u"/Library/x"_s << home << u"/Library/x"_s;
    QTest::newRow("a home path elsewhere gets its slash")
        << u"Library/x"_s << home << u"/Library/x"_s;
    QTest::newRow("an ordinary path stays")
        << u"/Users/alice/x"_s << QString() << u"/Users/alice/x"_s;
    QTest::newRow("an ordinary path gets its slash") << u"Users/x"_s << QString() << u"/Users/x"_s;
    QTest::newRow("blanks stay without a slash") << u" "_s << QString() << u" "_s;
}

void tst_paths::complete_path()
{
    QFETCH(const QString, path);
    QFETCH(const QString, kind);
    QTEST(library::get_complete_file_path(path, u"bob"_s, kind), "complete");
}

void tst_paths::user_name_is_the_first_folder_below_the_prefix_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("prefix");
    QTest::addColumn<QString>("user");
    QTest::newRow("a file of a user")
        << u"/mnt/src/Users/alice/NTUSER.DAT"_s << u"/mnt/src/Users"_s << u"alice"_s;
    QTest::newRow("the prefix is cut by its length alone")
        << u"/xxx/xxx/Xxxxx/alice/NTUSER.DAT"_s << u"/mnt/src/Users"_s << u"alice"_s;
    QTest::newRow("a prefix with its slash gives the next folder")
        << u"/mnt/Users/alice/AppData/x"_s << u"/mnt/Users/"_s << u"AppData"_s;
    QTest::newRow("nothing below the prefix") << u"/mnt"_s << u"/mnt"_s << QString();
    QTest::newRow("a prefix longer than the path") << u"/m"_s << u"/mnt"_s << QString();
    QTest::newRow("an empty folder name is kept") << u"/mnt//alice"_s << u"/mnt"_s << QString();
}

void tst_paths::user_name_is_the_first_folder_below_the_prefix()
{
    QFETCH(const QString, path);
    QFETCH(const QString, prefix);
    library::system_account_QStringList = {{u"anyone"_s, {}}};
    QTEST(library::extract_user_name_from_sourcefile(path, prefix), "user");
}

void tst_paths::user_name_is_empty_without_accounts()
{
    library::system_account_QStringList.clear();
    QCOMPARE(library::extract_user_name_from_sourcefile(u"/mnt/alice/x"_s, u"/mnt"_s), QString());
}

void tst_paths::size_is_shown_data()
{
    QTest::addColumn<QString>("bytes");
    QTest::addColumn<QString>("shown");
    QTest::newRow("nothing") << QString() << QString();
    QTest::newRow("blanks") << u" "_s << QString();
    QTest::newRow("zero") << u"0"_s << u"0 B"_s;
    QTest::newRow("a word counts as zero") << u"big"_s << u"0 B"_s;
    QTest::newRow("a negative number counts as zero") << u"-1"_s << u"0 B"_s;
    QTest::newRow("the last of the bytes") << u"1023"_s << u"1023 B"_s;
    QTest::newRow("the first of the kilobytes") << u" 1024 "_s << u"1.00 KB"_s;
    QTest::newRow("half a kilobyte more") << u"1536"_s << u"1.50 KB"_s;
    QTest::newRow("the last of the kilobytes") << u"1048575"_s << u"1024.00 KB"_s;
    QTest::newRow("the first of the megabytes") << u"1048576"_s << u"1.00 MB"_s;
    QTest::newRow("the last below a gigabyte") << u"1073741823"_s << u"1024.00 MB"_s;
    QTest::newRow("a gigabyte is shown in megabytes") << u"1073741824"_s << u"1024.00 MB"_s;
    QTest::newRow("two gigabytes are shown in megabytes") << u"2147483648"_s << u"2048.00 MB"_s;
    QTest::newRow("the greatest number") << u"18446744073709551615"_s << u"17592186044416.00 MB"_s;
}

void tst_paths::size_is_shown()
{
    QFETCH(const QString, bytes);
    QTEST(library::human_readable_size(bytes), "shown");
}

void tst_paths::available_file_counts_up()
{
    const workspace work;
    evidence::make_folder(work.path(u"copies"_s));
    const auto next = [&work] {
        return library::get_available_file(u"/evidence/x.sqlite"_s, work.path(u"copies"_s),
                                           u"void caller()"_s);
    };
    for (const QString &name : {u"x.sqlite"_s, u"1_x.sqlite"_s, u"2_x.sqlite"_s}) {
        QCOMPARE(next(), name);
        work.file(u"copies/"_s + name);
    }
    QVERIFY(QFile::remove(work.path(u"copies/1_x.sqlite"_s)));
    QCOMPARE(next(), u"1_x.sqlite"_s);
}

void tst_paths::available_file_makes_its_folder()
{
    const workspace work;
    QCOMPARE(library::get_available_file(u"x"_s, work.path(u"a/b"_s), QString()), u"x"_s);
    QVERIFY(QFileInfo(work.path(u"a/b"_s)).isDir());
}

void tst_paths::available_file_is_none_when_cancelled()
{
    const workspace work;
    library::set_cancel_extraction(true);
    QCOMPARE(library::get_available_file(u"x"_s, work.path(u"a"_s), QString()), QString());
}

void tst_paths::file_is_found_in_its_folder_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("found");
    QTest::newRow("a file") << u"file.txt"_s << true;
    QTest::newRow("a name with blanks around it") << u" file.txt "_s << true;
    QTest::newRow("an entry with a blank behind it") << u"blank"_s << true;
    QTest::newRow("a hidden file") << u".hidden"_s << true;
    QTest::newRow("a folder") << u"folder"_s << true;
    QTest::newRow("a dangling link") << u"dangling"_s << true;
    QTest::newRow("another letter case") << u"FILE.txt"_s << false;
    QTest::newRow("a file of a subfolder") << u"deep.txt"_s << false;
    QTest::newRow("an absent name") << u"absent"_s << false;
    QTest::newRow("the folder itself") << u"."_s << false;
}

void tst_paths::file_is_found_in_its_folder()
{
    QFETCH(const QString, name);
    const workspace work;
    work.file(u"file.txt"_s);
    work.file(u"blank "_s);
    work.file(u".hidden"_s);
    work.file(u"folder/deep.txt"_s);
    work.link(u"dangling"_s, u"absent"_s);
    QTEST(library::is_file_exist_in_dir(work.path(QString()), name, QString()), "found");
}

void tst_paths::file_is_not_found_when_cancelled()
{
    const workspace work;
    work.file(u"file.txt"_s);
    library::set_cancel_extraction(true);
    QVERIFY(!library::is_file_exist_in_dir(work.path(QString()), u"file.txt"_s, QString()));
}

void tst_paths::size_text_is_mined_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("size");
    QTest::addColumn<QString>("suffix");
    QTest::newRow("kilobytes") << u"1.50 KB"_s << u"1.50"_s << u"KB"_s;
    QTest::newRow("no blank between") << u"64GB"_s << u"64"_s << u"GB"_s;
    QTest::newRow("words around it") << u"Size: 1,024 bytes on disk"_s << u"1,024"_s << u"bytes"_s;
    QTest::newRow("a number alone") << u"2048"_s << u"2048"_s << QString();
    QTest::newRow("no number") << u"KB"_s << QString() << QString();
    QTest::newRow("nothing") << QString() << QString() << QString();
}

void tst_paths::size_text_is_mined()
{
    QFETCH(const QString, text);
    QTEST(library::mining_size(text), "size");
    QTEST(library::mining_suffix(text), "suffix");
}

void tst_paths::scan_version_is_told_by_the_version_data()
{
    QTest::addColumn<QString>("version");
    QTest::addColumn<QString>("scan_version");
    QTest::newRow("before 11 both numbers tell") << u"10.15.7"_s << u"10.15"_s;
    QTest::newRow("an 11 behind the first number") << u"macOS 10.11.6"_s << u"10.11"_s;
    QTest::newRow("11 itself") << u"macOS 11.2.3"_s << u"11"_s;
    QTest::newRow("later versions are as 11") << u"14.2"_s << u"11"_s;
    QTest::newRow("a phone") << u"iOS 15.1"_s << u"iOS"_s;
    QTest::newRow("no version") << u"unknown"_s << QString();
    QTest::newRow("nothing") << QString() << QString();
}

void tst_paths::scan_version_is_told_by_the_version()
{
    QFETCH(const QString, version);
    library::examiner_machine_os_version_full = version;
    library::source_os_version_full = QString();
    QTEST(library::get_examiner_machine_os_scan_version(), "scan_version");
    library::examiner_machine_os_version_full = QString();
    library::source_os_version_full = version;
    QTEST(library::get_source_os_scan_version(u"macOS"_s), "scan_version");
}

void tst_paths::scan_version_of_an_ios_source_is_told_by_the_scheme()
{
    library::source_os_version_full = u"15.1"_s;
    QCOMPARE(library::get_source_os_scan_version(u"iOS_UID"_s), u"iOS"_s);
}

TEST_MAIN(tst_paths)
#include "tst_paths.moc"
