#include "key_check.h"

#include "files.h"
#include "hive_builder.h"
#include "hive_damage.h"
#include "test_main.h"

#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using namespace test_support;

namespace {

const auto lone_surrogate = hive_name::raw(QByteArray("\x00\xd8", 2), false);

} // namespace

class tst_key_check : public QObject
{
    Q_OBJECT

private slots:
    void tells_what_hides_a_key_data();
    void tells_what_hides_a_key();
    void tells_each_reason_once();
    void tells_when_the_hive_does_not_open();
};

void tst_key_check::tells_what_hides_a_key_data()
{
    QTest::addColumn<QString>("sister_of_undecodable");
    QTest::addColumn<QString>("key_path");
    QTest::addColumn<QStringList>("findings");
    const auto in = u"the keys in %1 cannot be listed, so A\\B\\C is not read"_s;
    QTest::newRow("readable key") << QString() << u"A\\B\\C"_s << QStringList();
    QTest::newRow("key of other letter case") << QString() << u"a\\b\\c"_s << QStringList();
    QTest::newRow("absent key") << QString() << u"A\\none\\C"_s << QStringList();
    QTest::newRow("undecodable name in the key")
        << u"A\\B\\C\\D"_s << u"A\\B\\C"_s
        << QStringList{u"the content of A\\B\\C cannot be listed, so it is not read"_s};
    QTest::newRow("undecodable name beside the key's parent")
        << u"A\\B"_s << u"A\\B\\C"_s << QStringList{in.arg("A"_L1)};
    QTest::newRow("undecodable name beside the first key")
        << u"A"_s << u"A\\B\\C"_s << QStringList{in.arg("the root key"_L1)};
    QTest::newRow("undecodable name elsewhere") << u"X\\Y"_s << u"A\\B\\C"_s << QStringList();
}

void tst_key_check::tells_what_hides_a_key()
{
    QFETCH(QString, sister_of_undecodable);
    QFETCH(QString, key_path);
    QFETCH(QStringList, findings);
    hive_builder hive;
    if (!sister_of_undecodable.isEmpty()) {
        const QString parent = sister_of_undecodable.section(u'\\', 0, -2);
        (parent.isEmpty() ? hive.root() : hive.key(parent)).add_key(lone_surrogate);
        hive.key(sister_of_undecodable);
    }
    hive.key(u"A\\B\\C"_s).text(u"value"_s, u"text"_s);
    const QTemporaryDir folder;
    hive.write_to(folder.filePath(u"hive"_s));
    QCOMPARE(key_findings(folder.filePath(u"hive"_s), {key_path}), findings);
}

void tst_key_check::tells_each_reason_once()
{
    hive_builder hive;
    hive_key &key = hive.key(u"A"_s).text(u"value"_s, u"text"_s);
    hive.bytes();
    const QByteArray damaged = hive_damage(hive.bytes()).value_count(key.cells().key, 1000).bytes();
    const QTemporaryDir folder;
    write_file(folder.filePath(u"hive"_s), damaged);
    QCOMPARE(key_findings(folder.filePath(u"hive"_s), {u"A"_s, u"A"_s}),
             QStringList{u"the content of A cannot be listed, so it is not read"_s});
}

void tst_key_check::tells_when_the_hive_does_not_open()
{
    const QTemporaryDir folder;
    write_file(folder.filePath(u"hive"_s), "no hive");
    QVERIFY(!opens_as_hive(folder.filePath(u"hive"_s)));
    QCOMPARE(key_findings(folder.filePath(u"hive"_s), {u"A"_s}),
             QStringList{u"cannot be opened as a registry hive, so it is not read"_s});
}

TEST_MAIN(tst_key_check)

#include "tst_key_check.moc"
