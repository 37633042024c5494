#include "files.h"
#include "hidden_icons.h"
#include "hive_damage.h"
#include "test_main.h"

#include <QRegularExpression>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;
using namespace test_support::hidden_icons;

namespace {

/// A user with one icon of three names and, behind it in the list, one without a name.
struct named_icon_fixture : worker_fixture
{
    named_icon_fixture()
    {
        start_panel(volume, u"ann"_s).dword(recycle_bin, 1).dword(computer, 1);
        name_space(volume, u"ann"_s, recycle_bin)
            .text(u"1"_s, u"one"_s)
            .text(u"2"_s, u"two"_s)
            .text(u"3"_s, u"three"_s);
        find_files();
    }

    void cancel_at_row(qint64 row)
    {
        on_row([this, row](qint64 total) {
            if (total == row)
                worker.winos_cancel_extraction();
        });
    }
};

} // namespace

// Which rows come of the icons that a user has hidden.
class tst_extract_hidden_desktop_icons : public QObject
{
    Q_OBJECT

private slots:
    void init() { QTest::failOnWarning(QRegularExpression(u"."_s)); }
    void writes_each_icon_that_the_hive_names();
    void writes_an_icon_once_for_each_value_of_its_key();
    void writes_an_icon_again_for_each_subkey_that_lists_it();
    void hides_an_icon_by_the_number_1_alone_data();
    void hides_an_icon_by_the_number_1_alone();
    void shows_names_of_any_type_as_text_data();
    void shows_names_of_any_type_as_text();
    void looks_names_up_in_the_same_hive_alone();
    void finds_a_class_id_whatever_its_letters();
    void takes_the_names_of_the_whole_key_for_an_unnamed_icon();
    void reads_the_direct_subkeys_alone();
    void writes_nothing_without_icons_data();
    void writes_nothing_without_icons();
    void keeps_accounts_of_every_script();
    void stops_between_two_names_when_cancelled();
    void stops_before_the_next_icon_when_cancelled();
    void stops_before_the_next_hive_when_cancelled();
    void loses_of_a_damaged_value_its_number_alone();
    void loses_of_a_damaged_icon_its_names_alone();
};

void tst_extract_hidden_desktop_icons::writes_each_icon_that_the_hive_names()
{
    worker_fixture fixture;
    start_panel(fixture.volume, u"eve"_s)
        .dword(recycle_bin, 1)
        .dword(u"{no name in this hive}"_s, 1)
        .dword(computer, 0);
    name_space(fixture.volume, u"eve"_s, recycle_bin).text(u""_s, u"Recycle Bin"_s);
    name_space(fixture.volume, u"eve"_s, computer).text(u""_s, u"Computer"_s);
    start_panel(fixture.volume, u"ann"_s).dword(computer, 1);
    name_space(fixture.volume, u"ann"_s, computer).text(u""_s, u"This PC"_s);
    fixture.find_files();
    fixture.extract(table);
    QCOMPARE(fixture.rows(table), (QList<QStringList>{row_of(u"eve"_s, u"Recycle Bin"_s, u"YES"_s),
                                                      row_of(u"eve"_s, u"Computer"_s, u"NO"_s),
                                                      row_of(u"ann"_s, u"This PC"_s, u"YES"_s)}));
    QCOMPARE(fixture.log.lines(), whole_run_log(operation));
}

void tst_extract_hidden_desktop_icons::writes_an_icon_once_for_each_value_of_its_key()
{
    worker_fixture fixture;
    start_panel(fixture.volume, u"ann"_s).dword(computer, 1);
    name_space(fixture.volume, u"ann"_s, computer)
        .text(u"Removal Message"_s, u"@mydocs.dll,-900"_s)
        .text(u""_s, u"This PC"_s)
        .key(u"Sub"_s)
        .text(u""_s, u"not of interest"_s);
    fixture.find_files();
    QCOMPARE(icons_of_run(fixture), (QStringList{u"@mydocs.dll,-900|YES"_s, u"This PC|YES"_s}));
}

void tst_extract_hidden_desktop_icons::writes_an_icon_again_for_each_subkey_that_lists_it()
{
    worker_fixture fixture;
    hive_key &lists = fixture.volume.user(u"ann"_s).key(hide_desktop_icons_key);
    lists.key(u"NewStartPanel"_s).dword(computer, 1);
    lists.key(u"ClassicStartMenu"_s).dword(computer, 0);
    name_space(fixture.volume, u"ann"_s, computer).text(u""_s, u"This PC"_s);
    fixture.find_files();
    QCOMPARE(icons_of_run(fixture), (QStringList{u"This PC|NO"_s, u"This PC|YES"_s}));
}

void tst_extract_hidden_desktop_icons::hides_an_icon_by_the_number_1_alone_data()
{
    QTest::addColumn<quint32>("type");
    QTest::addColumn<QByteArray>("hex");
    QTest::addColumn<QString>("hidden");
    const auto row = [](const char *name, const char *hex, const QString &hidden,
                        quint32 type = reg_dword) {
        QTest::newRow(name) << type << QByteArray(hex) << hidden;
    };
    row("1", "01000000", u"YES"_s);
    row("0", "00000000", u"NO"_s);
    row("2", "02000000", u"NO"_s);
    row("257", "01010000", u"NO"_s);
    row("1 in big-endian", "00000001", u"NO"_s);
    row("the largest number", "ffffffff", u"NO"_s);
    row("no data", "", u"NO"_s);
    row("one byte", "01", u"YES"_s);
    row("two bytes", "0100", u"YES"_s);
    row("eight bytes", "0100000000000000", u"YES"_s, reg_qword);
    row("a 1 above four bytes", "0100000001000000", u"NO"_s, reg_qword);
    row("zeros without end", "010000000000000000000000000000000000000000000000", u"YES"_s);
    row("a 1 as bytes", "01000000", u"YES"_s, reg_binary);
    row("a 1 of no type", "01000000", u"YES"_s, reg_none);
    row("a 1 as text", "31000000", u"NO"_s, reg_sz);
}

void tst_extract_hidden_desktop_icons::hides_an_icon_by_the_number_1_alone()
{
    QFETCH(const quint32, type);
    QFETCH(const QByteArray, hex);
    QFETCH(const QString, hidden);
    worker_fixture fixture;
    start_panel(fixture.volume, u"ann"_s).value(computer, type, QByteArray::fromHex(hex));
    name_space(fixture.volume, u"ann"_s, computer).text(u""_s, u"This PC"_s);
    fixture.find_files();
    QCOMPARE(icons_of_run(fixture), QStringList{u"This PC|"_s + hidden});
}

void tst_extract_hidden_desktop_icons::shows_names_of_any_type_as_text_data()
{
    QTest::addColumn<quint32>("type");
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QString>("shown");
    QTest::newRow("a text") << quint32(reg_sz) << registry_text(u"PC"_s) << u"PC"_s;
    QTest::newRow("a number") << quint32(reg_dword) << registry_dword(0x41) << u"A"_s;
    QTest::newRow("no data") << quint32(reg_sz) << QByteArray() << u""_s;
    QTest::newRow("a text of another script")
        << quint32(reg_sz) << registry_text(u"é!"_s) << u"\ufffd!"_s;
}

void tst_extract_hidden_desktop_icons::shows_names_of_any_type_as_text()
{
    QFETCH(const quint32, type);
    QFETCH(const QByteArray, data);
    QFETCH(const QString, shown);
    worker_fixture fixture;
    start_panel(fixture.volume, u"ann"_s).dword(computer, 1);
    name_space(fixture.volume, u"ann"_s, computer).value(u""_s, type, data);
    fixture.find_files();
    fixture.extract(table);
    QCOMPARE(fixture.rows(table), QList<QStringList>{row_of(u"ann"_s, shown, u"YES"_s)});
}

void tst_extract_hidden_desktop_icons::looks_names_up_in_the_same_hive_alone()
{
    worker_fixture fixture;
    start_panel(fixture.volume, u"ann"_s).dword(computer, 1);
    name_space(fixture.volume, u"bob"_s, computer).text(u""_s, u"of bob"_s);
    fixture.volume.software()
        .key(name_space_key.section(u'\\', 1))
        .key(computer)
        .text(u""_s, u"of the machine"_s);
    fixture.find_files();
    QCOMPARE(icons_of_run(fixture), QStringList());
}

void tst_extract_hidden_desktop_icons::finds_a_class_id_whatever_its_letters()
{
    worker_fixture fixture;
    start_panel(fixture.volume, u"ann"_s).dword(computer.toLower(), 1).dword(u"a\\b"_s, 1);
    name_space(fixture.volume, u"ann"_s, computer).text(u""_s, u"This PC"_s);
    name_space(fixture.volume, u"ann"_s, u"A\\B"_s).text(u""_s, u"a key below"_s);
    fixture.find_files();
    QCOMPARE(icons_of_run(fixture), (QStringList{u"This PC|YES"_s, u"a key below|YES"_s}));
}

void tst_extract_hidden_desktop_icons::takes_the_names_of_the_whole_key_for_an_unnamed_icon()
{
    worker_fixture fixture;
    start_panel(fixture.volume, u"ann"_s).dword(u""_s, 1);
    fixture.volume.user(u"ann"_s).key(name_space_key).text(u"x"_s, u"of the whole key"_s);
    fixture.find_files();
    QCOMPARE(icons_of_run(fixture), QStringList{u"of the whole key|YES"_s});
}

void tst_extract_hidden_desktop_icons::reads_the_direct_subkeys_alone()
{
    worker_fixture fixture;
    hive_key &lists = fixture.volume.user(u"ann"_s).key(hide_desktop_icons_key);
    lists.dword(u"{beside}"_s, 1);
    lists.key(u"NewStartPanel"_s).dword(u"{in}"_s, 1);
    lists.key(u"NewStartPanel\\Deeper"_s).dword(u"{below}"_s, 1);
    for (const QString &class_id : {u"{beside}"_s, u"{in}"_s, u"{below}"_s})
        name_space(fixture.volume, u"ann"_s, class_id).text(u""_s, class_id);
    fixture.find_files();
    QCOMPARE(icons_of_run(fixture), QStringList{u"{in}|YES"_s});
}

void tst_extract_hidden_desktop_icons::writes_nothing_without_icons_data()
{
    QTest::addColumn<QString>("key");
    QTest::newRow("an empty hive") << u""_s;
    QTest::newRow("no list of icons") << hide_desktop_icons_key;
    QTest::newRow("an empty list of icons") << hide_desktop_icons_key + u"\\NewStartPanel\\x"_s;
    QTest::newRow("the key at another place")
        << u"Other\\"_s + hide_desktop_icons_key + u"\\NewStartPanel"_s;
}

void tst_extract_hidden_desktop_icons::writes_nothing_without_icons()
{
    QFETCH(const QString, key);
    worker_fixture fixture;
    fixture.volume.user(u"ann"_s).key(key).dword(computer, 1);
    name_space(fixture.volume, u"ann"_s, computer).text(u""_s, u"This PC"_s);
    fixture.find_files();
    QCOMPARE(icons_of_run(fixture), QStringList());
    QCOMPARE(fixture.log.lines(), whole_run_log(operation));
}

void tst_extract_hidden_desktop_icons::keeps_accounts_of_every_script()
{
    worker_fixture fixture;
    QList<QStringList> expected;
    for (const QString &account : {u"Zoë"_s, u"山田"_s, u"مريم"_s, u"\U0001F600"_s, u"o'neil"_s}) {
        start_panel(fixture.volume, account).dword(u"{日本}"_s, 1);
        name_space(fixture.volume, account, u"{日本}"_s).text(u""_s, u"icon"_s);
        expected.append(row_of(account, u"icon"_s, u"YES"_s));
    }
    fixture.find_files();
    fixture.extract(table);
    QCOMPARE(fixture.rows(table), expected);
}

void tst_extract_hidden_desktop_icons::stops_between_two_names_when_cancelled()
{
    named_icon_fixture fixture;
    fixture.cancel_at_row(2);
    QCOMPARE(icons_of_run(fixture), (QStringList{u"one|YES"_s, u"two|YES"_s}));
    QCOMPARE(fixture.log.lines(), whole_run_log(operation).mid(0, 1));
}

void tst_extract_hidden_desktop_icons::stops_before_the_next_icon_when_cancelled()
{
    named_icon_fixture fixture;
    fixture.cancel_at_row(3);
    QCOMPARE(icons_of_run(fixture).size(), 3);
    QCOMPARE(fixture.log.lines(), whole_run_log(operation).mid(0, 1));
}

void tst_extract_hidden_desktop_icons::stops_before_the_next_hive_when_cancelled()
{
    worker_fixture fixture;
    for (const QString &account : {u"ann"_s, u"bob"_s}) {
        start_panel(fixture.volume, account).dword(computer, 1);
        name_space(fixture.volume, account, computer).text(u""_s, u"of "_s + account);
    }
    fixture.find_files();
    fixture.on_row([&fixture](qint64) { fixture.worker.winos_cancel_extraction(); });
    QCOMPARE(icons_of_run(fixture), QStringList{u"of ann|YES"_s});
    QCOMPARE(fixture.log.lines(), whole_run_log(operation).mid(0, 1));
}

void tst_extract_hidden_desktop_icons::loses_of_a_damaged_value_its_number_alone()
{
    worker_fixture fixture;
    hive_key &icons = start_panel(fixture.volume, u"ann"_s);
    icons.value(computer, reg_qword, registry_qword(1)).dword(recycle_bin, 1);
    name_space(fixture.volume, u"ann"_s, computer).text(u""_s, u"This PC"_s);
    name_space(fixture.volume, u"ann"_s, recycle_bin).text(u""_s, u"Recycle Bin"_s);
    fixture.find_files();
    const QByteArray hive = fixture.volume.user(u"ann"_s).bytes();
    const value_cells &damaged = icons.cells_of_value(computer);
    write_file(fixture.volume.ntuser_path(u"ann"_s),
               hive_damage(hive).data_cell(damaged.value, hive.size() + 4096).bytes());
    QCOMPARE(icons_of_run(fixture), (QStringList{u"This PC|NO"_s, u"Recycle Bin|YES"_s}));
}

void tst_extract_hidden_desktop_icons::loses_of_a_damaged_icon_its_names_alone()
{
    worker_fixture fixture;
    start_panel(fixture.volume, u"ann"_s).dword(computer, 1).dword(recycle_bin, 1);
    hive_key &damaged = name_space(fixture.volume, u"ann"_s, computer).text(u""_s, u"This PC"_s);
    name_space(fixture.volume, u"ann"_s, recycle_bin).text(u""_s, u"Recycle Bin"_s);
    fixture.find_files();
    const QByteArray hive = fixture.volume.user(u"ann"_s).bytes();
    write_file(fixture.volume.ntuser_path(u"ann"_s),
               hive_damage(hive).value_list(damaged.cells().key, hive.size()).bytes());
    QCOMPARE(icons_of_run(fixture), QStringList{u"Recycle Bin|YES"_s});
}

TEST_MAIN(tst_extract_hidden_desktop_icons)
#include "tst_extract_hidden_desktop_icons.moc"
