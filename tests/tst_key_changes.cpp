#include "hive_builder.h"
#include "hive_damage.h"
#include "key_changes.h"
#include "regf_format.h"
#include "test_main.h"

#include <functional>

using namespace Qt::StringLiterals;
using namespace evidence;

// Which keys differ between two states of a hive.
class tst_key_changes : public QObject
{
    Q_OBJECT

private slots:
    void tells_what_differs_data();
    void tells_what_differs();
    void reads_each_kind_of_list_data();
    void reads_each_kind_of_list();
    void takes_names_of_any_script();
    void finds_no_keys_in_other_bytes_data();
    void finds_no_keys_in_other_bytes();
    void reads_loops_and_shared_lists_once();
    void leaves_out_what_is_damaged();
};

namespace {

using change_of_hive = std::function<void(hive_builder &)>;

/// A hive of some keys, with or without a change.
QByteArray hive_with(const change_of_hive &change)
{
    hive_builder hive;
    hive.key(u"Software\\Editor"_s).text(u"Name"_s, u"Editor"_s).dword(u"Runs"_s, 7);
    hive.key(u"Software\\Editor\\Files"_s).binary(u"Long"_s, QByteArray(40'000, 'x'));
    hive.key(u"Software\\Viewer"_s);
    if (change)
        change(hive);
    return hive.bytes();
}

QStringList listed(const QByteArray &before, const QByteArray &after)
{
    QStringList lines;
    compare_keys(key_tree(before), key_tree(after), [&](key_change change, const QString &path) {
        const QString sign = change == key_change::added     ? u"+"_s
                             : change == key_change::removed ? u"-"_s
                                                             : u"*"_s;
        lines.append(sign + path);
    });
    lines.sort();
    return lines;
}

QString counts_of(const key_change_counts &counts)
{
    return u"%1 %2 +%3 *%4 -%5"_s.arg(counts.before)
        .arg(counts.after)
        .arg(counts.added)
        .arg(counts.changed)
        .arg(counts.removed);
}

} // namespace

void tst_key_changes::tells_what_differs_data()
{
    QTest::addColumn<QByteArray>("after");
    QTest::addColumn<QStringList>("listed");
    const auto row = [](const char *name, const change_of_hive &change, const QStringList &list) {
        QTest::newRow(name) << hive_with(change) << list;
    };
    row("nothing", {}, {});
    row("a key is added", [](hive_builder &hive) { hive.key(u"Software\\Player"_s); },
        {u"+Software\\Player"_s});
    row("keys below each other are added",
        [](hive_builder &hive) { hive.key(u"System\\Select"_s); },
        {u"+System"_s, u"+System\\Select"_s});
    row("a time changes",
        [](hive_builder &hive) { hive.key(u"Software\\Viewer"_s).last_write_unix(5); },
        {u"*Software\\Viewer"_s});
    row("the root's time changes", [](hive_builder &hive) { hive.root().last_write_unix(5); },
        {u"*"_s});
    row("a value is added",
        [](hive_builder &hive) { hive.key(u"Software\\Viewer"_s).dword(u"Runs"_s, 1); },
        {u"*Software\\Viewer"_s});
}

void tst_key_changes::tells_what_differs()
{
    QFETCH(const QByteArray, after);
    QFETCH(const QStringList, listed);
    QStringList the_other_way = listed;
    for (QString &line : the_other_way)
        line.replace(u'+', u'-');
    QCOMPARE(::listed(hive_with({}), after), listed);
    QCOMPARE(::listed(after, hive_with({})), the_other_way);
}

void tst_key_changes::reads_each_kind_of_list_data()
{
    QTest::addColumn<subkey_list>("kind");
    QTest::newRow("li") << subkey_list::li;
    QTest::newRow("lf") << subkey_list::lf;
    QTest::newRow("lh") << subkey_list::lh;
    QTest::newRow("ri") << subkey_list::ri;
}

void tst_key_changes::reads_each_kind_of_list()
{
    QFETCH(const subkey_list, kind);
    hive_builder hive;
    for (int i = 0; i < 2'000; ++i)
        hive.key(u"Folder\\%1"_s.arg(i));
    hive.key(u"Folder"_s).list_kind(kind);
    QCOMPARE(key_tree(hive.bytes()).count(), 2'002U);
    QCOMPARE(counts_of(compare_keys(key_tree(hive_with({})), key_tree(hive.bytes()))),
             u"5 2002 +2001 *0 -4"_s);
}

void tst_key_changes::takes_names_of_any_script()
{
    hive_builder before;
    before.key(u"B\u00fcro\\\u042f\u043d\u0434\u0435\u043a\u0441"_s);
    hive_builder after;
    after.key(u"B\u00dcRO\\\u5fae\u4fe1"_s);
    QCOMPARE(listed(before.bytes(), after.bytes()),
             (QStringList{u"+B\u00dcRO\\\u5fae\u4fe1"_s,
                          u"-B\u00fcro\\\u042f\u043d\u0434\u0435\u043a\u0441"_s}));
}

void tst_key_changes::finds_no_keys_in_other_bytes_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("none") << QByteArray();
    QTest::newRow("a base block") << hive_with({}).first(4096);
    QTest::newRow("zeros") << QByteArray(10'000, '\0');
    QTest::newRow("ones") << QByteArray(10'000, '\xff');
}

void tst_key_changes::finds_no_keys_in_other_bytes()
{
    QFETCH(const QByteArray, bytes);
    QCOMPARE(key_tree(bytes).count(), 0U);
    const key_tree hive(hive_with({}));
    QCOMPARE(counts_of(compare_keys(key_tree(bytes), key_tree(bytes))), u"0 0 +0 *0 -0"_s);
    QCOMPARE(counts_of(compare_keys(key_tree(bytes), hive)), u"0 5 +5 *0 -0"_s);
    QCOMPARE(counts_of(compare_keys(hive, key_tree(bytes))), u"5 0 +0 *0 -5"_s);
}

// Each of 3,000 keys lists the same 3,000 keys, and its parent: 9 million entries.
void tst_key_changes::reads_loops_and_shared_lists_once()
{
    hive_builder builder;
    hive_key &folder = builder.key(u"Folder"_s).list_kind(subkey_list::li);
    QList<hive_key *> keys;
    for (int i = 0; i < 3'000; ++i)
        keys.append(&folder.key(QString::number(i)));
    hive_damage damage(builder.bytes());
    for (const hive_key *key : keys)
        damage.share_subkeys(key->cells().key, folder.cells().key);
    damage.list_entry(folder.cells().subkey_list, 0, folder.cells().key);
    QCOMPARE(key_tree(damage.bytes()).count(), 3'001U);
}

void tst_key_changes::leaves_out_what_is_damaged()
{
    hive_builder builder;
    hive_key &lost = builder.key(u"Lost"_s).dword(u"Value"_s, 1);
    lost.key(u"Below"_s);
    builder.key(u"Kept"_s);
    const QByteArray whole = builder.bytes();
    const QByteArray damaged = hive_damage(whole).signature(lost.cells().key, "xx").bytes();
    QCOMPARE(listed(whole, damaged), (QStringList{u"-Lost"_s, u"-Lost\\Below"_s}));
    const QByteArray without_list =
        hive_damage(whole).value_list(lost.cells().key, 0x7fffff00).bytes();
    QCOMPARE(listed(whole, without_list), QStringList{u"*Lost"_s});
}

TEST_MAIN(tst_key_changes)
#include "tst_key_changes.moc"
