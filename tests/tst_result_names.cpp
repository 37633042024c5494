#include "artifact_list.h"
#include "characters.h"
#include "created_tables.h"
#include "derivations.h"
#include "known_names.h"
#include "program_names.h"
#include "program_paths.h"
#include "result_database.h"
#include "table_descriptions.h"
#include "test_main.h"
#include "time_texts.h"

#include <QTemporaryDir>
#include <QTest>

#include <limits>

using namespace Qt::StringLiterals;
using namespace results;

// What is derived of stored values.
class tst_result_names : public QObject
{
    Q_OBJECT

private slots:
    void programs_data();
    void programs();
    void packages_data();
    void packages();
    void known_folders_are_distinct();
    void times_data();
    void times();
    void days_data();
    void days();
    void written_times_data();
    void written_times();
    void runs_data();
    void runs();
    void comparable_paths_data();
    void comparable_paths();
    void comparable_names_data();
    void comparable_names();
    void folders_of_commands_data();
    void folders_of_commands();
    void shared_folders_data();
    void shared_folders();
    void escapes_data();
    void escapes();
    void characters();
    void every_column_of_the_plug_in_is_described();
};

namespace {

QString qt(std::string_view text)
{
    return QString::fromUtf8(text.data(), qsizetype(text.size()));
}

QString qt(const std::optional<std::string> &text)
{
    return text ? qt(std::string_view(*text)) : u"none"_s;
}

} // namespace

void tst_result_names::programs_data()
{
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QString>("resolved");
    QTest::addColumn<QString>("form");
    const auto below_known = u"path below a known folder"_s;
    QTest::newRow("program files") << u"{6D809377-6AF0-444B-8957-A3773F02200E}/7-Zip/7zFM.exe"_s
                                   << u"%ProgramFiles%\\7-Zip\\7zFM.exe"_s << below_known;
    QTest::newRow("both slashes") << u"{7C5A40EF-A0FB-4BFC-874A-C0F2E0B9FA8E}\\A/B.exe"_s
                                  << u"%ProgramFiles(x86)%\\A\\B.exe"_s << below_known;
    QTest::newRow("small letters") << u"{1ac14e77-02e7-4e5d-b744-2eb1ae5198b7}/cmd.exe"_s
                                   << u"%SystemRoot%\\System32\\cmd.exe"_s << below_known;
    QTest::newRow("folder alone") << u"{F38BF404-1D43-42F2-9305-67DE0B28FC23}"_s
                                  << u"%SystemRoot%"_s << below_known;
    QTest::newRow("folder without a place") << u"{82A74AEB-AEB4-465C-A014-D097EE346D63}/x"_s
                                            << u"[ControlPanelFolder]\\x"_s << below_known;
    QTest::newRow("unknown folder")
        << u"{00000000-1111-2222-3333-444444444444}/x.exe"_s
        << u"{00000000-1111-2222-3333-444444444444}\\x.exe"_s << u"path below an unknown folder"_s;
    QTest::newRow("cut GUID") << u"{6D809377-6AF0-444B"_s << u"{6D809377-6AF0-444B"_s
                              << u"application id"_s;
    QTest::newRow("GUID that goes on")
        << u"{F38BF404-1D43-42F2-9305-67DE0B28FC23}x"_s
        << u"{F38BF404-1D43-42F2-9305-67DE0B28FC23}x"_s << u"application id"_s;
    QTest::newRow("path") << u"C:/Games/chess.exe"_s << u"C:\\Games\\chess.exe"_s << u"path"_s;
    QTest::newRow("network") << u"//server/share/a.exe"_s << u"\\\\server\\share\\a.exe"_s
                             << u"path"_s;
    QTest::newRow("shortcut")
        << u"{0139D44E-6AFE-49F2-8690-3DAFCAE6FFB8}/Firefox.LNK"_s
        << u"%ProgramData%\\Microsoft\\Windows\\Start Menu\\Programs\\Firefox.LNK"_s
        << u"shortcut"_s;
    QTest::newRow("Firefox") << u"308046B0AF4A39CB"_s << u"Firefox"_s
                             << u"hash of a known application"_s;
    QTest::newRow("Firefox of 32 bits")
        << u"E7CF176E110C211B"_s << u"Firefox"_s << u"hash of a known application"_s;
    QTest::newRow("unknown hash") << u"0123456789ABCDEF"_s << u"0123456789ABCDEF"_s
                                  << u"hash of an unknown application"_s;
    QTest::newRow("small letters are no hash")
        << u"308046b0af4a39cb"_s << u"308046b0af4a39cb"_s << u"application id"_s;
    QTest::newRow("application id") << u"Microsoft.Windows.Explorer"_s
                                    << u"Microsoft.Windows.Explorer"_s << u"application id"_s;
    QTest::newRow("package") << u"Microsoft.WindowsCalculator_8wekyb3d8bbwe!App"_s
                             << u"Microsoft.WindowsCalculator_8wekyb3d8bbwe!App"_s
                             << u"application of a package"_s;
    QTest::newRow("Windows XP") << u"UEME_RUNPATH:C:\\Program Files\\a.exe"_s
                                << u"C:\\Program Files\\a.exe"_s << u"path"_s;
    QTest::newRow("Windows XP, nothing behind")
        << u"UEME_RUNPATH:"_s << u"UEME_RUNPATH:"_s << u"application id"_s;
    QTest::newRow("other scripts") << u"C:/Büro/会計.exe"_s << u"C:\\Büro\\会計.exe"_s << u"path"_s;
    QTest::newRow("empty") << u""_s << u""_s << u"application id"_s;
}

void tst_result_names::programs()
{
    QFETCH(const QString, stored);
    const program_name name = resolve_program_name(stored.toStdString());
    QTEST(qt(std::string_view(name.resolved)), "resolved");
    QTEST(qt(text_of(name.form)), "form");
}

void tst_result_names::packages_data()
{
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("publisher");
    QTest::newRow("family") << u"SpotifyAB.SpotifyMusic_zpdnekdrzrea0"_s
                            << u"SpotifyAB.SpotifyMusic"_s << u"zpdnekdrzrea0"_s;
    QTest::newRow("full name") << u"Microsoft.Paint_10.1.2.0_x64__8wekyb3d8bbwe"_s
                               << u"Microsoft.Paint"_s << u"8wekyb3d8bbwe"_s;
    QTest::newRow("short publisher") << u"A_8wekyb3d8bbw"_s << u""_s << u""_s;
    QTest::newRow("publisher in capitals") << u"A_8WEKYB3D8BBWE"_s << u""_s << u""_s;
    QTest::newRow("no publisher") << u"Packages"_s << u""_s << u""_s;
    QTest::newRow("blank in the name") << u"A B_8wekyb3d8bbwe"_s << u""_s << u""_s;
}

void tst_result_names::packages()
{
    QFETCH(const QString, stored);
    const std::string text = stored.toStdString();
    const auto parts = split_package_name(text).value_or(package_name{});
    QTEST(qt(parts.name), "name");
    QTEST(qt(parts.publisher_id), "publisher");
}

void tst_result_names::known_folders_are_distinct()
{
    const known_folder *x64 = known_folder_of("{6D809377-6AF0-444B-8957-A3773F02200E}");
    QVERIFY(x64 != nullptr);
    QCOMPARE(qt(x64->name), u"ProgramFilesX64"_s);
    QVERIFY(known_folder_of("") == nullptr);
    QVERIFY(known_folder_of("{}") == nullptr);
    const known_application *firefox = known_application_of("308046B0AF4A39CB");
    QVERIFY(firefox != nullptr);
    QCOMPARE(qt(firefox->folder), u"C:\\Program Files\\Mozilla Firefox"_s);
    QCOMPARE(qt(display_name_of("firefox")), u"Mozilla Firefox"_s);
    QCOMPARE(qt(display_name_of("opera")), QString());
}

void tst_result_names::times_data()
{
    QTest::addColumn<qint64>("seconds");
    QTest::addColumn<QString>("text");
    QTest::newRow("today's") << qint64(1703752244) << u"2023-12-28T08:30:44Z"_s;
    QTest::newRow("first") << qint64(0) << u"1970-01-01T00:00:00Z"_s;
    QTest::newRow("before") << qint64(-1) << u"1969-12-31T23:59:59Z"_s;
    QTest::newRow("leap day") << qint64(951825599) << u"2000-02-29T11:59:59Z"_s;
    QTest::newRow("no leap year") << qint64(4107542400) << u"2100-03-01T00:00:00Z"_s;
    QTest::newRow("last of four digits") << qint64(253402300799) << u"9999-12-31T23:59:59Z"_s;
    QTest::newRow("five digits") << qint64(253402300800) << u"+10000-01-01T00:00:00Z"_s;
    QTest::newRow("last of Windows") << qint64(910692730085) << u"+30828-09-14T02:48:05Z"_s;
    QTest::newRow("year 0") << qint64(-62167219200) << u"0000-01-01T00:00:00Z"_s;
    QTest::newRow("year -1") << qint64(-62167219201) << u"-0001-12-31T23:59:59Z"_s;
    QTest::newRow("last") << std::numeric_limits<qint64>::max()
                          << u"+292277026596-12-04T15:30:07Z"_s;
    QTest::newRow("least") << std::numeric_limits<qint64>::min()
                           << u"-292277022657-01-27T08:29:52Z"_s;
}

void tst_result_names::times()
{
    QFETCH(const qint64, seconds);
    QTEST(qt(std::string_view(utc_text(seconds))), "text");
}

void tst_result_names::days_data()
{
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QString>("day");
    QTest::newRow("day") << u"06/11/2023"_s << u"2023-11-06"_s;
    QTest::newRow("leap day") << u"29/02/2024"_s << u"2024-02-29"_s;
    for (const auto &none : {u""_s, u"29/02/2023"_s, u"31/04/2023"_s, u"2023-11-06"_s,
                             u"23//6//11/"_s, u"6/11/2023"_s, u"06/11/2023 "_s, u"aa/bb/cccc"_s})
        QTest::newRow(qPrintable(u"none: \"%1\""_s.arg(none))) << none << u"none"_s;
}

void tst_result_names::days()
{
    QFETCH(const QString, stored);
    QTEST(qt(iso_day(stored.toStdString())), "day");
}

void tst_result_names::written_times_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<qint64>("first");
    QTest::addColumn<qint64>("last");
    const qint64 day = 1703721600;
    const qint64 none = -1;
    QTest::newRow("a day is all of it") << u"2023-12-28"_s << day << day + 86399;
    QTest::newRow("so is a minute") << u"2023-12-28T08:30"_s << day + 30600 << day + 30659;
    QTest::newRow("a second") << u"2023-12-28 08:30:44"_s << day + 30644 << day + 30644;
    QTest::newRow("UTC") << u"2023-12-28T08:30:44Z"_s << day + 30644 << day + 30644;
    QTest::newRow("east") << u"2023-12-28T09:30:44+01:00"_s << day + 30644 << day + 30644;
    QTest::newRow("west") << u"2023-12-28T03:00:44-05:30"_s << day + 30644 << day + 30644;
    for (const auto &text : {u""_s, u"yesterday"_s, u"2023-13-01"_s, u"2023-12-28T25:00"_s,
                             u"2023-12-28T08"_s, u"1703752244"_s, u"2023-12-28Z"_s})
        QTest::newRow(qPrintable(u"none: \"%1\""_s.arg(text))) << text << none << none;
}

void tst_result_names::written_times()
{
    QFETCH(const QString, text);
    const time_span span = written_time(text).value_or(time_span{-1, -1});
    QTEST(span.first, "first");
    QTEST(span.last, "last");
}

void tst_result_names::runs_data()
{
    QTest::addColumn<qint64>("count");
    QTest::addColumn<qint64>("time");
    QTest::addColumn<QString>("meaning");
    QTest::newRow("both") << qint64(3) << qint64(5) << u"counted"_s;
    QTest::newRow("count alone") << qint64(3) << qint64(0) << u"counted, without a time"_s;
    QTest::newRow("time alone") << qint64(0) << qint64(5) << u"used at that time, not counted"_s;
    QTest::newRow("neither") << qint64(0) << qint64(0) << u"listed, never counted"_s;
}

void tst_result_names::runs()
{
    QFETCH(const qint64, count);
    QFETCH(const qint64, time);
    QTEST(qt(meaning_of_runs(count, time)), "meaning");
}

void tst_result_names::comparable_paths_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("comparable");
    QTest::newRow("variable") << u"%ProgramFiles%\\7-Zip\\7zFM.exe"_s
                              << u"c:\\program files\\7-zip\\7zfm.exe"_s;
    QTest::newRow("profile") << u"%APPDATA%\\a.exe"_s
                             << u"c:\\users\\anna\\appdata\\roaming\\a.exe"_s;
    QTest::newRow("quotes and slashes")
        << u"\"C:/Program Files/Git/\" "_s << u"c:\\program files\\git"_s;
    QTest::newRow("network") << u"\\\\Server\\Share\\"_s << u"\\\\server\\share"_s;
    QTest::newRow("name") << u"Microsoft.Windows.Explorer"_s << QString();
    QTest::newRow("empty") << QString() << QString();
}

void tst_result_names::comparable_paths()
{
    QFETCH(const QString, path);
    QTEST(comparable_path(path, u"Anna"_s), "comparable");
}

void tst_result_names::comparable_names_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("comparable");
    QTest::newRow("version") << u"GIMP 2.10.36-1"_s << u"gimp"_s;
    QTest::newRow("number in front") << u"7-Zip 23.01 (x64)"_s << u"7-zip"_s;
    QTest::newRow("parentheses") << u"Mozilla Firefox (x64 en-US)"_s << u"mozilla firefox"_s;
    QTest::newRow("word before the version") << u"PuTTY release 0.80 (64-bit)"_s << u"putty"_s;
    QTest::newRow("version behind the name") << u"Wireshark 4.2.0 x64"_s << u"wireshark"_s;
    QTest::newRow("empty") << QString() << QString();
}

void tst_result_names::comparable_names()
{
    QFETCH(const QString, name);
    QTEST(comparable_name(name), "comparable");
}

void tst_result_names::folders_of_commands_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("folder");
    QTest::newRow("quoted") << u"\"C:\\Program Files\\Git\\unins000.exe\" /S"_s
                            << u"c:\\program files\\git"_s;
    QTest::newRow("bare") << u"C:\\Program Files\\Git\\unins000.exe /S"_s
                          << u"c:\\program files\\git"_s;
    QTest::newRow("installer") << u"MsiExec.exe /X{4640FDE1}"_s << QString();
    QTest::newRow("installer with its path")
        << u"C:\\Windows\\System32\\msiexec.exe /X{4640FDE1}"_s << QString();
    QTest::newRow("no program") << u"rundll32 something"_s << QString();
}

void tst_result_names::folders_of_commands()
{
    QFETCH(const QString, command);
    QTEST(folder_of_command(command), "folder");
}

void tst_result_names::shared_folders_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<bool>("is_shared");
    for (const auto &folder :
         {u"c:"_s, u"c:\\program files"_s, u"c:\\windows\\system32"_s, u"c:\\users\\anna"_s,
          u"c:\\users\\anna\\downloads"_s, u"c:\\users\\anna\\appdata\\local\\programs"_s,
          u"\\\\server\\share"_s, QString()})
        QTest::newRow(qPrintable("shared: "_L1 + folder)) << folder << true;
    for (const auto &folder :
         {u"c:\\program files\\git"_s, u"d:\\tools"_s,
          u"c:\\users\\anna\\appdata\\local\\programs\\code"_s, u"\\\\server\\share\\tool"_s})
        QTest::newRow(qPrintable("own: "_L1 + folder)) << folder << false;
}

void tst_result_names::shared_folders()
{
    QFETCH(const QString, folder);
    QTEST(is_shared_folder(folder), "is_shared");
}

void tst_result_names::escapes_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("escaped_text");
    QTest::newRow("plain") << QByteArray("Büro 会計 😀") << QByteArray("Büro 会計 😀");
    QTest::newRow("controls") << QByteArray("a\x1b[2J\r\n\x7f", 8)
                              << QByteArray("a\\x1b[2J\\x0d\\x0a\\x7f");
    QTest::newRow("NUL") << QByteArray("a\0b", 3) << QByteArray("a\\x00b");
    QTest::newRow("C1") << QByteArray("\xc2\x9b") << QByteArray("\\x9b");
    QTest::newRow("order of writing") << QByteArray("\xe2\x80\xae") << QByteArray("\\u202e");
    QTest::newRow("tag") << QByteArray("\xf3\xa0\x81\x81") << QByteArray("\\U000e0041");
    QTest::newRow("no UTF-8") << QByteArray("a\xff\xc3") << QByteArray("a\\xff\\xc3");
    QTest::newRow("surrogate") << QByteArray("\xed\xa0\x80") << QByteArray("\\xed\\xa0\\x80");
    QTest::newRow("overlong") << QByteArray("\xc0\xaf") << QByteArray("\\xc0\\xaf");
}

void tst_result_names::escapes()
{
    QFETCH(const QByteArray, text);
    QFETCH(const QByteArray, escaped_text);
    const std::string made = escaped({text.constData(), size_t(text.size())});
    QCOMPARE(QByteArray::fromStdString(made), escaped_text);
    // The long way, eight bytes and more before the character in question.
    const std::string longer = "0123456789" + text.toStdString();
    QCOMPARE(is_utf_8(longer), QString::fromUtf8(text).toUtf8() == text);
}

void tst_result_names::characters()
{
    for (char32_t character = 0; character <= 0x10ffff; character += character < 0x3000 ? 1 : 61) {
        if (character >= 0xd800 && character < 0xe000)
            continue;
        std::string text;
        append_character(text, character);
        QCOMPARE(qt(std::string_view(text)), QString::fromUcs4(&character, 1));
        const char *at = text.data();
        QCOMPARE(next_character(at, text.data() + text.size()), character);
        QVERIFY(at == text.data() + text.size());
    }
}

void tst_result_names::every_column_of_the_plug_in_is_described()
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(u"tables.sqlite"_s);
    test_support::create_tables(file);
    const test_support::result_database database(file);
    for (const artifact *extracted : artifact_list()) {
        const QString table = extracted->table.name;
        QVERIFY2(!title_of(table).isEmpty(), qPrintable(table));
        for (const QString &name : database.columns(table))
            QVERIFY2(!described_column(table, name).meaning.isEmpty(),
                     qPrintable(table + u'.' + name));
    }
}

TEST_MAIN(tst_result_names)
#include "tst_result_names.moc"
