#include "hidden_icons.h"
#include "parse_hidden_desktop_icons.h"
#include "test_main.h"

#include <QRegularExpression>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;
using namespace test_support::hidden_icons;

namespace {

/// The line which says that the table has got as much from ann's hive as it takes.
QString full_table_line(const worker_fixture &fixture)
{
    const hive_output::limit &most = fixture.worker.most_output;
    return early_end_line(operation, fixture.volume.ntuser_path(u"ann"_s), hide_desktop_icons_key,
                          u"the table takes %1 rows and %2 bytes of text from a hive; further "
                          "rows are left out"_s.arg(most.rows)
                              .arg(most.text_bytes));
}

} // namespace

// Icons and names in any number, and the limit that only forged hives reach.
class tst_extract_many_hidden_icons : public QObject
{
    Q_OBJECT

private slots:
    void init() { QTest::failOnWarning(QRegularExpression(u"."_s)); }
    void looks_up_any_number_of_icons_and_names();
    void finds_an_icon_behind_any_number_of_others();
    void writes_repeated_names_up_to_the_limit_of_a_hive_data();
    void writes_repeated_names_up_to_the_limit_of_a_hive();
    void writes_the_first_names_of_each_icon_beyond_the_limit();
    void counts_the_limit_anew_for_each_hive();
    void looks_up_names_as_a_walk_of_each_would_data();
    void looks_up_names_as_a_walk_of_each_would();
};

void tst_extract_many_hidden_icons::looks_up_any_number_of_icons_and_names()
{
    constexpr int class_ids = 1000;
    constexpr int names = 1000;
    worker_fixture fixture;
    QStringList expected;
    for (int i = 0; i < class_ids; ++i) {
        const QString class_id = QString::number(i);
        start_panel(fixture.volume, u"ann"_s).dword(class_id, 1);
        name_space(fixture.volume, u"ann"_s, class_id).text(u""_s, u"icon "_s + class_id);
        expected.append(u"icon "_s + class_id + u"|YES"_s);
    }
    start_panel(fixture.volume, u"ann"_s).dword(computer, 0);
    for (int i = 0; i < names; ++i) {
        const QString number = QString::number(i);
        name_space(fixture.volume, u"ann"_s, computer).text(number, u"name "_s + number);
        expected.append(u"name "_s + number + u"|NO"_s);
    }
    fixture.find_files();
    QCOMPARE(icons_of_run(fixture), expected);
}

// Whoever may write into a user's hive may write dummies before the icons that are there.
void tst_extract_many_hidden_icons::finds_an_icon_behind_any_number_of_others()
{
    constexpr int dummies = 5000;
    worker_fixture fixture;
    hive_key &before = fixture.volume.user(u"ann"_s).key(hide_desktop_icons_key).key(u"!"_s);
    for (int i = 0; i < dummies; ++i)
        before.dword(u"{%1}"_s.arg(i), 1);
    start_panel(fixture.volume, u"ann"_s).dword(computer, 1);
    name_space(fixture.volume, u"ann"_s, computer).text(u""_s, u"This PC"_s);
    fixture.find_files();
    QCOMPARE(icons_of_run(fixture), QStringList{u"This PC|YES"_s});
    QCOMPARE(fixture.log.lines(), whole_run_log(operation));
}

void tst_extract_many_hidden_icons::writes_repeated_names_up_to_the_limit_of_a_hive_data()
{
    QTest::addColumn<qint64>("most_rows");
    QTest::addColumn<qint64>("most_text_bytes");
    QTest::addColumn<int>("rows");
    constexpr qint64 any = 1000000;
    // A row has the account, two names, YES, two key names, the path of the hive and so on.
    const qsizetype row_length =
        row_of(u"ann"_s, u"0 name"_s, u"YES"_s).join(QString()).toUtf8().size();
    QTest::newRow("below both") << any << any << 400;
    QTest::newRow("as many rows as there are") << qint64(400) << any << 400;
    QTest::newRow("one row fewer") << qint64(399) << any << 399;
    QTest::newRow("as much text as there is") << any << 400 * row_length << 400;
    QTest::newRow("one byte fewer") << any << 400 * row_length - 1 << 399;
}

void tst_extract_many_hidden_icons::writes_repeated_names_up_to_the_limit_of_a_hive()
{
    QFETCH(const qint64, most_rows);
    QFETCH(const qint64, most_text_bytes);
    QFETCH(const int, rows);
    worker_fixture fixture;
    fixture.worker.most_output = {most_rows, most_text_bytes};
    for (int i = 0; i < 40; ++i)
        fixture.volume.user(u"ann"_s)
            .key(hide_desktop_icons_key)
            .key(QString::number(i))
            .dword(computer, 1);
    for (int i = 0; i < 10; ++i)
        name_space(fixture.volume, u"ann"_s, computer)
            .text(QString::number(i), QString::number(i) + u" name"_s);
    fixture.find_files();
    QCOMPARE(icons_of_run(fixture).size(), rows);
    QStringList log = whole_run_log(operation);
    if (rows < 400)
        log.insert(1, full_table_line(fixture));
    QCOMPARE(fixture.log.lines(), log);
}

void tst_extract_many_hidden_icons::writes_the_first_names_of_each_icon_beyond_the_limit()
{
    constexpr int names = 100;
    constexpr int certain = 64;
    worker_fixture fixture;
    fixture.worker.most_output.rows = 150;
    hive_key &icons = fixture.volume.user(u"ann"_s).key(hide_desktop_icons_key);
    icons.key(u"1"_s).dword(u"a"_s, 1).dword(u"A"_s, 1).dword(u"b"_s, 1);
    icons.key(u"2"_s).dword(u"a"_s, 1).dword(u"b"_s, 0);
    icons.key(u"3"_s).dword(u"short"_s, 1);
    for (int i = 0; i < names; ++i) {
        for (const QString &class_id : {u"a"_s, u"b"_s})
            name_space(fixture.volume, u"ann"_s, class_id)
                .text(u""_s, class_id + QString::number(i));
    }
    name_space(fixture.volume, u"ann"_s, u"short"_s).text(u""_s, u"short"_s);
    fixture.find_files();
    QStringList expected;
    const auto add_rows = [&expected](const QString &name, int count, const QString &hidden) {
        for (int i = 0; i < count; ++i)
            expected.append(name + QString::number(i) + u'|' + hidden);
    };
    add_rows(u"a"_s, 100, u"YES"_s);
    add_rows(u"a"_s, 50, u"YES"_s); // another spelling of the same key: as far as the limit goes
    add_rows(u"b"_s, certain, u"YES"_s);
    add_rows(u"b"_s, certain, u"NO"_s);
    expected.append(u"short|YES"_s);
    QCOMPARE(icons_of_run(fixture), expected);
    QStringList log = whole_run_log(operation);
    log.insert(1, full_table_line(fixture));
    QCOMPARE(fixture.log.lines(), log);
}

void tst_extract_many_hidden_icons::counts_the_limit_anew_for_each_hive()
{
    worker_fixture fixture;
    fixture.worker.most_output.rows = 2;
    for (const QString &account : {u"ann"_s, u"bob"_s}) {
        start_panel(fixture.volume, account).dword(computer, 1).dword(recycle_bin, 1);
        name_space(fixture.volume, account, computer).text(u""_s, u"This PC"_s);
        name_space(fixture.volume, account, recycle_bin).text(u""_s, u"Recycle Bin"_s);
    }
    fixture.find_files();
    QCOMPARE(icons_of_run(fixture), (QStringList{u"This PC|YES"_s, u"Recycle Bin|YES"_s,
                                                 u"This PC|YES"_s, u"Recycle Bin|YES"_s}));
    QCOMPARE(fixture.log.lines(), whole_run_log(operation));
}

void tst_extract_many_hidden_icons::looks_up_names_as_a_walk_of_each_would_data()
{
    QTest::addColumn<QString>("class_id");
    QTest::addColumn<QStringList>("names");
    QTest::newRow("a key") << u"Key"_s << QStringList{u"of Key"_s};
    QTest::newRow("a key in other letters") << u"kEY"_s << QStringList{u"of Key"_s};
    QTest::newRow("a key that is twice there") << u"twice"_s << QStringList{u"of the first"_s};
    QTest::newRow("no key") << u"none"_s << QStringList();
    QTest::newRow("a key below a key") << u"Key\\below"_s << QStringList{u"of below"_s};
    QTest::newRow("a key below no key") << u"none\\below"_s << QStringList();
    QTest::newRow("empty parts") << u"\\Key\\\\below\\"_s << QStringList{u"of below"_s};
    QTest::newRow("nothing, which is the parent") << u""_s << QStringList{u"of NameSpace"_s};
    QTest::newRow("a letter that is not ASCII in the other case") << u"äpfel"_s << QStringList();
    QTest::newRow("a key of another script") << u"Äpfel"_s << QStringList{u"of apples"_s};
    QTest::newRow("several names") << u"many"_s << QStringList{u"1"_s, u"2"_s};
    QTest::newRow("behind a name that cannot be read") << u"zz"_s << QStringList();
}

void tst_extract_many_hidden_icons::looks_up_names_as_a_walk_of_each_would()
{
    QFETCH(const QString, class_id);
    worker_fixture fixture;
    start_panel(fixture.volume, u"ann"_s).dword(class_id, 1);
    hive_key &names = fixture.volume.user(u"ann"_s).key(name_space_key);
    names.text(u""_s, u"of NameSpace"_s);
    names.key(u"Key"_s).text(u""_s, u"of Key"_s);
    names.key(u"Key\\below"_s).text(u""_s, u"of below"_s);
    names.add_key(u"twice"_s).text(u""_s, u"of the first"_s);
    names.add_key(u"TWICE"_s).text(u""_s, u"of the second"_s);
    names.key(u"Äpfel"_s).text(u""_s, u"of apples"_s);
    names.key(u"many"_s).text(u"x"_s, u"1"_s).text(u"y"_s, u"2"_s);
    names.add_key(hive_name::lone_surrogate());
    names.key(u"zz"_s).text(u""_s, u"hidden"_s);
    fixture.find_files();
    fixture.extract(table);
    QTEST(fixture.database().column(table, u"app_name"_s), "names");

    parse_hidden_desktop_icons walker;
    walker.start_registry_parse(fixture.volume.ntuser_path(u"ann"_s),
                                parse_hidden_desktop_icons::name_space_key + class_id, true);
    QStringList walked;
    for (const registry::struct_hidden_icons &record : walker.hidden_icons_records)
        walked.append(record.value);
    QTEST(walked, "names");
}

TEST_MAIN(tst_extract_many_hidden_icons)
#include "tst_extract_many_hidden_icons.moc"
