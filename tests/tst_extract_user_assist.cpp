#include "application_keys.h"
#include "files.h"
#include "hive_damage.h"
#include "test_main.h"
#include "user_assist.h"
#include "worker_fixture.h"

#include <QRegularExpression>

#include <limits>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

using worker = windows_installed_applications_winos;

namespace {

const QString executed = u"previously_executed_apps"_s;
const QString uninstalled = u"uninstall_apps"_s;

const QString programs = u"{CEBFF5CD-ACE2-4F4F-9178-9926F41749EA}"_s;
const QString shortcuts = u"{F4E57C4B-2036-45F0-A9AB-443BCFE33D9F}"_s;

constexpr auto no_order = static_cast<worker::ENDIANS>(0);
constexpr auto third_order = static_cast<worker::ENDIANS>(3);

struct entry
{
    QString account;
    QString class_id;
    QString name;
    QString index;
    QString run_count = u"0"_s;
    QString last_run = u"0"_s;
};

QStringList row_of(const entry &entry)
{
    return {entry.account,   entry.class_id,
            entry.name,      entry.index,
            entry.run_count, u"NTUSER.DAT"_s,
            u"UserAssist"_s, user_assist_key,
            entry.last_run,  u"/Users/"_s + entry.account + u"/NTUSER.DAT"_s,
            u"Windows"_s,    u"Source3"_s};
}

hive_key &count_key(evidence_volume &volume, const QString &account,
                    const QString &class_id = programs)
{
    return volume.user(account).key(user_assist_key).key(class_id).key(u"Count"_s);
}

/// Adds entries that were never run.
void add_names(hive_key &key, const QStringList &names)
{
    for (const QString &name : names)
        key.binary(rotated_name(name), user_assist_data(0, 0));
}

/// The texts of one column after a run that fills the table.
QStringList column_of_run(worker_fixture &fixture, const QString &table, const QString &column)
{
    fixture.extract(table);
    return fixture.database().column(table, column);
}

/// The first \a size bytes of a value with a run count of 0x04030201 and a last run in 1970.
QByteArray beginning_of_data(qsizetype size)
{
    return user_assist_data(0x04030201, filetime_of_unix(1)).first(size);
}

} // namespace

class tst_extract_user_assist : public QObject
{
    Q_OBJECT

private slots:
    void init() { QTest::failOnWarning(QRegularExpression(u"."_s)); }

    void rotates_the_ascii_letters_of_names_data();
    void rotates_the_ascii_letters_of_names();
    void gives_no_name_when_cancelled();
    void reads_numbers_of_any_length_data();
    void reads_numbers_of_any_length();
    void reads_no_little_endian_number_when_cancelled();

    void writes_each_executed_program_of_each_user();
    void writes_uninstallers_alone_to_their_own_table();
    void logs_its_start_and_its_end_data();
    void logs_its_start_and_its_end();
    void skips_the_session_entry_data();
    void skips_the_session_entry();
    void tells_uninstallers_by_their_name_data();
    void tells_uninstallers_by_their_name();
    void counts_the_entries_that_it_skips();
    void reads_run_count_and_time_data();
    void reads_run_count_and_time();
    void reads_values_below_the_subkeys_of_class_ids_alone();
    void writes_nothing_without_entries_data();
    void writes_nothing_without_entries();
    void keeps_names_of_every_script();
    void loses_of_a_damaged_value_its_data_alone();
    void loses_of_damaged_class_ids_their_entries_alone();
};

void tst_extract_user_assist::rotates_the_ascii_letters_of_names_data()
{
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QString>("shown");
    QTest::newRow("no name") << u""_s << u""_s;
    QTest::newRow("upper-case letters")
        << u"ABCDEFGHIJKLMNOPQRSTUVWXYZ"_s << u"NOPQRSTUVWXYZABCDEFGHIJKLM"_s;
    QTest::newRow("lower-case letters")
        << u"abcdefghijklmnopqrstuvwxyz"_s << u"nopqrstuvwxyzabcdefghijklm"_s;
    const QString others = u"{0123456789}[]@`^~!\"#$%&'()*+,-./:;<=>?\\_| \t"_s;
    QTest::newRow("digits and punctuation") << others << others;
    QTest::newRow("letters of one byte beyond ASCII") << u"é\u00c1\u00ffa"_s << u"é\u00c1\u00ffn"_s;
    QTest::newRow("letters whose low byte is that of an ASCII letter")
        << u"\u0141\u0261\u4e41"_s << u"\u0141\u0261\u4e41"_s;
    QTest::newRow("letters outside the basic plane") << u"\U0001F600z"_s << u"\U0001F600m"_s;
    QTest::newRow("a NUL") << u"a\0b"_s << u"n\0o"_s;
    QTest::newRow("a path") << u"{1NP14R77}\\pzq.rkr"_s << u"{1AC14E77}\\cmd.exe"_s;
}

void tst_extract_user_assist::rotates_the_ascii_letters_of_names()
{
    QFETCH(const QString, stored);
    QFETCH(const QString, shown);
    winos_probe probe;
    QCOMPARE(probe.decrypt_program_name(stored), shown);
    QCOMPARE(probe.decrypt_program_name(shown), stored);
}

void tst_extract_user_assist::gives_no_name_when_cancelled()
{
    winos_probe probe;
    probe.winos_cancel_extraction();
    QCOMPARE(probe.decrypt_program_name(u"pzq.rkr"_s), QString());
}

void tst_extract_user_assist::reads_numbers_of_any_length_data()
{
    QTest::addColumn<QByteArray>("hex");
    QTest::addColumn<worker::ENDIANS>("order");
    QTest::addColumn<qint32>("four_bytes");
    QTest::addColumn<qint64>("eight_bytes");
    const auto row = [](const char *name, const char *hex, worker::ENDIANS order, qint32 four_bytes,
                        qint64 eight_bytes) {
        QTest::newRow(name) << QByteArray(hex) << order << four_bytes << eight_bytes;
    };
    constexpr qint32 largest_4 = std::numeric_limits<qint32>::max();
    constexpr qint64 largest_8 = std::numeric_limits<qint64>::max();
    row("nothing, little-endian", "", worker::little_endian, 0, 0);
    row("nothing, big-endian", "", worker::big_endian, 0, 0);
    row("a byte", "ff", worker::little_endian, 255, 255);
    row("two bytes, little-endian", "0102", worker::little_endian, 0x201, 0x201);
    row("two bytes, big-endian", "0102", worker::big_endian, 0x102, 0x102);
    row("four bytes, little-endian", "01020304", worker::little_endian, 0x04030201, 0x04030201);
    row("four bytes, big-endian", "01020304", worker::big_endian, 0x01020304, 0x01020304);
    row("the largest of four bytes", "ffffff7f", worker::little_endian, largest_4, largest_4);
    row("one more", "00000080", worker::little_endian, 0, 0x80000000);
    row("two more", "01000080", worker::little_endian, 0, 0x80000001);
    row("one more, big-endian", "80000000", worker::big_endian, 0, 0x80000000);
    row("four full bytes", "ffffffff", worker::little_endian, 0, 0xffffffff);
    row("five bytes", "0000000001", worker::little_endian, 0, 0x100000000);
    row("zeros beyond four bytes", "05000000000000000000", worker::little_endian, 5, 5);
    row("zeros before four bytes", "00000000000000000005", worker::big_endian, 5, 5);
    row("eight bytes", "0102030405060708", worker::little_endian, 0, 0x0807060504030201);
    row("the largest of eight bytes", "ffffffffffffff7f", worker::little_endian, 0, largest_8);
    row("one more than that", "0000000000000080", worker::little_endian, 0, 0);
    row("two more than that", "0100000000000080", worker::little_endian, 0, 0);
    row("eight full bytes", "ffffffffffffffff", worker::big_endian, 0, 0);
    row("nine bytes", "000000000000000001", worker::little_endian, 0, 0);
    row("twenty full bytes", "ffffffffffffffffffffffffffffffffffffffff", worker::little_endian, 0,
        0);
    row("no order", "01", no_order, 0, 0);
    row("a third order", "01", third_order, 0, 0);
}

void tst_extract_user_assist::reads_numbers_of_any_length()
{
    QFETCH(const QByteArray, hex);
    QFETCH(const worker::ENDIANS, order);
    const QByteArray bytes = QByteArray::fromHex(hex);
    winos_probe probe;
    QTEST(probe.hex_to_decimal_fourbytes(bytes, order), "four_bytes");
    QTEST(probe.hex_to_decimal_eight_bytes(bytes, order), "eight_bytes");
}

void tst_extract_user_assist::reads_no_little_endian_number_when_cancelled()
{
    winos_probe probe;
    probe.winos_cancel_extraction();
    const QByteArray bytes("\x05\0\0\0", 4);
    QCOMPARE(probe.hex_to_decimal_fourbytes(bytes, worker::little_endian), 0);
    QCOMPARE(probe.hex_to_decimal_eight_bytes(bytes, worker::little_endian), 0);
    QCOMPARE(probe.hex_to_decimal_fourbytes(bytes, worker::big_endian), 0x05000000);
    QCOMPARE(probe.hex_to_decimal_eight_bytes(bytes, worker::big_endian), 0x05000000);
}

void tst_extract_user_assist::writes_each_executed_program_of_each_user()
{
    worker_fixture fixture;
    add_names(count_key(fixture.volume, u"eve"_s, shortcuts), {u"C:\\Tools\\b.lnk"_s});
    count_key(fixture.volume, u"eve"_s, programs)
        .binary(rotated_name(u"{1AC14E77}\\cmd.exe"_s),
                user_assist_data(5, filetime_of_unix(1600000000)))
        .binary(rotated_name(u"C:\\a.exe"_s), user_assist_data(1, 0));
    add_names(count_key(fixture.volume, u"ann"_s), {u"Microsoft.Windows.Explorer"_s});
    fixture.find_files();
    fixture.extract(executed);
    QCOMPARE(
        fixture.rows(executed),
        (QList<QStringList>{
            row_of({u"eve"_s, programs, u"{1AC14E77}/cmd.exe"_s, u"0"_s, u"5"_s, u"1600000000"_s}),
            row_of({u"eve"_s, programs, u"C:/a.exe"_s, u"1"_s, u"1"_s}),
            row_of({u"eve"_s, shortcuts, u"C:/Tools/b.lnk"_s, u"2"_s}),
            row_of({u"ann"_s, programs, u"Microsoft.Windows.Explorer"_s, u"0"_s})}));
    QCOMPARE(fixture.database().column(executed, u"typeof(entry_index) || typeof(runcount) || "
                                                 "typeof(lastruntime)"_s),
             QStringList(4, u"integerintegerinteger"_s));
}

void tst_extract_user_assist::writes_uninstallers_alone_to_their_own_table()
{
    worker_fixture fixture;
    add_names(count_key(fixture.volume, u"eve"_s), {u"C:\\a.exe"_s, u"UEME_CTLSESSION"_s});
    count_key(fixture.volume, u"eve"_s)
        .binary(rotated_name(u"C:\\App\\uninstall.exe"_s),
                user_assist_data(2, filetime_of_unix(1600000000)));
    add_names(count_key(fixture.volume, u"ann"_s), {u"C:\\uninstaller\\x.exe"_s});
    fixture.find_files();
    fixture.extract(uninstalled);
    QCOMPARE(
        fixture.rows(uninstalled),
        (QList<QStringList>{row_of({u"eve"_s, programs, u"C:\\App\\uninstall.exe"_s, u"2"_s, u"2"_s,
                                    u"1600000000"_s}),
                            row_of({u"ann"_s, programs, u"C:\\uninstaller\\x.exe"_s, u"0"_s})}));
    fixture.extract(executed);
    QCOMPARE(fixture.database().column(executed, u"exename"_s),
             (QStringList{u"C:/a.exe"_s, u"C:/App/uninstall.exe"_s, u"C:/uninstaller/x.exe"_s}));
}

void tst_extract_user_assist::logs_its_start_and_its_end_data()
{
    QTest::addColumn<QString>("table");
    QTest::addColumn<QString>("operation");
    QTest::newRow("executed programs") << executed << u"extract_previously_executed_programs"_s;
    QTest::newRow("uninstallers") << uninstalled << u"extract_uninstall_applications"_s;
}

void tst_extract_user_assist::logs_its_start_and_its_end()
{
    QFETCH(const QString, table);
    QFETCH(const QString, operation);
    worker_fixture fixture;
    add_names(count_key(fixture.volume, u"ann"_s), {u"a"_s, u"UEME_CTLSESSION"_s});
    fixture.find_files();
    fixture.extract(table);
    QCOMPARE(fixture.log.lines(), whole_run_log(operation));
}

void tst_extract_user_assist::skips_the_session_entry_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("is_skipped");
    QTest::newRow("the session entry") << u"UEME_CTLSESSION"_s << true;
    QTest::newRow("its name at both ends") << u"UEME_CTLSESSION x UEME_CTLSESSION"_s << true;
    QTest::newRow("its name at the beginning") << u"UEME_CTLSESSION:x"_s << false;
    QTest::newRow("its name at the end") << u"x:UEME_CTLSESSION"_s << false;
    QTest::newRow("its name before a separator") << u"UEME_CTLSESSION/"_s << false;
    QTest::newRow("its name in other letters") << u"ueme_ctlsession"_s << false;
    QTest::newRow("a relative of it") << u"UEME_CTLCUACount:ctor"_s << false;
    QTest::newRow("no name") << u""_s << false;
}

void tst_extract_user_assist::skips_the_session_entry()
{
    QFETCH(const QString, name);
    QFETCH(const bool, is_skipped);
    worker_fixture fixture;
    add_names(count_key(fixture.volume, u"ann"_s), {name});
    fixture.find_files();
    QCOMPARE(column_of_run(fixture, executed, u"exename"_s),
             is_skipped ? QStringList() : QStringList{name});
    QCOMPARE(fixture.worker.record_count, is_skipped ? 0 : 1);
    QCOMPARE(column_of_run(fixture, uninstalled, u"exename"_s), QStringList());
}

void tst_extract_user_assist::tells_uninstallers_by_their_name_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("is_uninstaller");
    QTest::newRow("as a program") << u"C:\\A\\uninstall.exe"_s << true;
    QTest::newRow("as a part of a word") << u"C:\\A\\fluninstaller.exe"_s << true;
    QTest::newRow("as a folder") << u"C:\\uninstall\\a.exe"_s << true;
    QTest::newRow("as the whole name") << u"uninstall"_s << true;
    QTest::newRow("with a capital") << u"C:\\A\\Uninstall.exe"_s << false;
    QTest::newRow("in capitals") << u"C:\\A\\UNINSTALL.EXE"_s << false;
    QTest::newRow("abbreviated") << u"C:\\A\\unins000.exe"_s << false;
    QTest::newRow("before its letters are rotated") << rotated_name(u"uninstall"_s) << false;
    QTest::newRow("no name") << u""_s << false;
}

void tst_extract_user_assist::tells_uninstallers_by_their_name()
{
    QFETCH(const QString, name);
    QFETCH(const bool, is_uninstaller);
    worker_fixture fixture;
    add_names(count_key(fixture.volume, u"ann"_s), {name});
    fixture.find_files();
    QCOMPARE(column_of_run(fixture, uninstalled, u"exename"_s),
             is_uninstaller ? QStringList{name} : QStringList());
}

void tst_extract_user_assist::counts_the_entries_that_it_skips()
{
    worker_fixture fixture;
    add_names(count_key(fixture.volume, u"ann"_s, programs),
              {u"UEME_CTLSESSION"_s, u"a"_s, u"uninstall b"_s});
    add_names(count_key(fixture.volume, u"ann"_s, shortcuts),
              {u"UEME_CTLSESSION"_s, u"uninstall c"_s});
    add_names(count_key(fixture.volume, u"bob"_s), {u"UEME_CTLSESSION"_s, u"uninstall d"_s});
    fixture.find_files();
    const QString name_and_index = u"exename || '|' || entry_index"_s;
    QCOMPARE(column_of_run(fixture, executed, name_and_index),
             (QStringList{u"a|1"_s, u"uninstall b|2"_s, u"uninstall c|4"_s, u"uninstall d|1"_s}));
    QCOMPARE(column_of_run(fixture, uninstalled, name_and_index),
             (QStringList{u"uninstall b|2"_s, u"uninstall c|4"_s, u"uninstall d|1"_s}));
}

void tst_extract_user_assist::reads_run_count_and_time_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QString>("run_count");
    QTest::addColumn<QString>("last_run");
    const auto row = [](const char *name, const QByteArray &data, const QString &run_count,
                        const QString &last_run) {
        QTest::newRow(name) << data << run_count << last_run;
    };
    const qint64 epoch = filetime_of_unix(0);
    const QByteArray full(4, '\xff');
    row("five runs", user_assist_data(5, filetime_of_unix(1600000000)), u"5"_s, u"1600000000"_s);
    row("no time", user_assist_data(5, 0), u"5"_s, u"0"_s);
    row("a second after the epoch", user_assist_data(1, filetime_of_unix(1)), u"1"_s, u"1"_s);
    row("just below a second after the epoch", user_assist_data(1, epoch + 9999999), u"1"_s,
        u"0"_s);
    row("just below a second before the epoch", user_assist_data(1, epoch - 9999999), u"1"_s,
        u"0"_s);
    row("a second before the epoch", user_assist_data(1, epoch - 10000000), u"1"_s, u"-1"_s);
    row("the first tick", user_assist_data(1, 1), u"1"_s, u"-11644473599"_s);
    row("the end of time", user_assist_data(1, std::numeric_limits<qint64>::max()), u"1"_s,
        u"910692730085"_s);
    row("a time beyond that", user_assist_data(1, std::numeric_limits<qint64>::min()), u"1"_s,
        u"0"_s);
    row("a full time", user_assist_data(1, -1), u"1"_s, u"0"_s);
    row("the largest count", user_assist_data(0x7fffffff, 0), u"2147483647"_s, u"0"_s);
    row("one run more than that", user_assist_data(0x80000000, 0), u"0"_s, u"0"_s);
    row("a full count", user_assist_data(0xffffffff, 0), u"0"_s, u"0"_s);
    row("no data", QByteArray(), u"0"_s, u"0"_s);
    row("four bytes", beginning_of_data(4), u"0"_s, u"0"_s);
    row("five bytes", beginning_of_data(5), u"1"_s, u"0"_s);
    row("seven bytes", beginning_of_data(7), QString::number(0x030201), u"0"_s);
    row("the 16 bytes of old versions", beginning_of_data(16), QString::number(0x04030201), u"0"_s);
    row("60 bytes", beginning_of_data(60), QString::number(0x04030201), u"0"_s);
    // One byte of the time is left, a tiny number.
    row("61 bytes", beginning_of_data(61), QString::number(0x04030201), u"-11644473599"_s);
    row("68 bytes", beginning_of_data(68), QString::number(0x04030201), u"1"_s);
    row("full bytes before and behind",
        user_assist_data(5, filetime_of_unix(1)).replace(0, 4, full).replace(68, 4, full), u"5"_s,
        u"1"_s);
    row("big data", user_assist_data(5, filetime_of_unix(1)) + QByteArray(40000, '\xff'), u"5"_s,
        u"1"_s);
}

void tst_extract_user_assist::reads_run_count_and_time()
{
    QFETCH(const QByteArray, data);
    QFETCH(const QString, run_count);
    QFETCH(const QString, last_run);
    worker_fixture fixture;
    count_key(fixture.volume, u"ann"_s)
        .binary(rotated_name(u"uninstall"_s), data)
        .value(rotated_name(u"uninstall"_s), reg_sz, data);
    fixture.find_files();
    const QString numbers = run_count + u'|' + last_run;
    for (const QString &table : {executed, uninstalled})
        QCOMPARE(column_of_run(fixture, table, u"runcount || '|' || lastruntime"_s),
                 (QStringList{numbers, numbers}));
}

void tst_extract_user_assist::reads_values_below_the_subkeys_of_class_ids_alone()
{
    worker_fixture fixture;
    hive_key &user_assist = fixture.volume.user(u"ann"_s).key(user_assist_key);
    add_names(user_assist, {u"beside the class ids"_s});
    add_names(user_assist.key(programs), {u"beside Count"_s});
    add_names(user_assist.key(programs).key(u"Count"_s), {u"in Count"_s});
    add_names(user_assist.key(programs).key(u"Count\\Deeper\\Still"_s), {u"below Count"_s});
    add_names(user_assist.key(shortcuts), {u"without Count"_s});
    fixture.find_files();
    QCOMPARE(column_of_run(fixture, executed, u"class_id || exename"_s),
             (QStringList{programs + u"in Count"_s, programs + u"below Count"_s}));
}

void tst_extract_user_assist::writes_nothing_without_entries_data()
{
    QTest::addColumn<QString>("key");
    QTest::newRow("an empty hive") << u""_s;
    QTest::newRow("no class ids") << user_assist_key;
    QTest::newRow("no subkey of a class id") << user_assist_key + u'\\' + programs;
    QTest::newRow("the key at another place") << u"Other\\"_s + user_assist_key + u"\\{1}\\Count"_s;
}

void tst_extract_user_assist::writes_nothing_without_entries()
{
    QFETCH(const QString, key);
    worker_fixture fixture;
    add_names(fixture.volume.user(u"ann"_s).key(key), {u"uninstall"_s});
    fixture.find_files();
    QCOMPARE(column_of_run(fixture, executed, u"exename"_s), QStringList());
    QCOMPARE(column_of_run(fixture, uninstalled, u"exename"_s), QStringList());
    QCOMPARE(fixture.log.lines(), whole_run_log(u"extract_previously_executed_programs"_s) +
                                      whole_run_log(u"extract_uninstall_applications"_s));
}

void tst_extract_user_assist::keeps_names_of_every_script()
{
    const QString account = u"Ольга"_s;
    const QStringList names = {u"Größe uninstall"_s, u"日本語 uninstall"_s, u"حذف uninstall"_s,
                               u"\U0001F600 uninstall"_s, u"'); -- uninstall"_s};
    worker_fixture fixture;
    add_names(count_key(fixture.volume, account, u"{кл}"_s), names);
    fixture.find_files();
    QList<QStringList> expected;
    for (const QString &name : names)
        expected.append(row_of({account, u"{кл}"_s, name, QString::number(expected.size())}));
    for (const QString &table : {executed, uninstalled}) {
        fixture.extract(table);
        QCOMPARE(fixture.rows(table), expected);
    }
}

void tst_extract_user_assist::loses_of_a_damaged_value_its_data_alone()
{
    worker_fixture fixture;
    hive_key &key = count_key(fixture.volume, u"ann"_s);
    for (const QString &name : {u"a"_s, u"b"_s, u"c"_s})
        key.binary(rotated_name(name), user_assist_data(5, filetime_of_unix(9)));
    fixture.find_files();
    const QByteArray hive = fixture.volume.user(u"ann"_s).bytes();
    const value_cells &damaged = key.cells_of_value(rotated_name(u"b"_s));
    write_file(fixture.volume.ntuser_path(u"ann"_s),
               hive_damage(hive).data_cell(damaged.value, hive.size() + 4096).bytes());
    QCOMPARE(
        column_of_run(fixture, executed, u"exename || '|' || runcount || '|' || lastruntime"_s),
        (QStringList{u"a|5|9"_s, u"b|0|0"_s, u"c|5|9"_s}));
}

void tst_extract_user_assist::loses_of_damaged_class_ids_their_entries_alone()
{
    worker_fixture fixture;
    for (const QString &class_id : {u"{1}"_s, u"{2}"_s, u"{3}"_s, u"{4}"_s})
        add_names(count_key(fixture.volume, u"ann"_s, class_id), {u"of "_s + class_id});
    fixture.find_files();
    hive_key &user_assist = fixture.volume.user(u"ann"_s).key(user_assist_key);
    const QByteArray hive = fixture.volume.user(u"ann"_s).bytes();
    const qint64 without_subkeys = user_assist.key(u"{2}"_s).cells().key;
    const qint64 without_values = user_assist.key(u"{3}\\Count"_s).cells().key;
    write_file(fixture.volume.ntuser_path(u"ann"_s), hive_damage(hive)
                                                         .subkey_list(without_subkeys, hive.size())
                                                         .value_list(without_values, hive.size())
                                                         .bytes());
    QCOMPARE(column_of_run(fixture, executed, u"exename || '|' || entry_index"_s),
             (QStringList{u"of {1}|0"_s, u"of {4}|1"_s}));
}

TEST_MAIN(tst_extract_user_assist)

#include "tst_extract_user_assist.moc"
